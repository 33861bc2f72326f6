#include "benchsupport.h"

#include "app/familydatabase.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QElapsedTimer>
#include <QPainter>
#include <QProcess>
#include <QStandardPaths>

namespace {

// A camera-sized JPEG (12 MP); the same picture serves every file name.
QByteArray cameraJpeg()
{
    QImage image(4000, 3000, QImage::Format_RGB32);
    QPainter p(&image);
    QLinearGradient g(0, 0, 4000, 3000);
    g.setColorAt(0, Qt::darkCyan);
    g.setColorAt(1, Qt::darkYellow);
    p.fillRect(image.rect(), g);
    for (int i = 0; i < 400; ++i)
        p.fillRect((i * 97) % 3900, (i * 53) % 2900, 80, 60, QColor::fromHsv(i % 360, 200, 200));
    p.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPG", 90);
    return bytes;
}

} // namespace

QStringList prepareBenchPhotos(const QString &srcDir, int count)
{
    QStringList names;
    const QString corpus = qEnvironmentVariable("QUILLET_BENCH_CORPUS");
    if (!corpus.isEmpty()) {
        for (const QString &name : QDir(corpus).entryList({"*.jpg", "*.JPG"}, QDir::Files, QDir::Name)) {
            if (names.size() == count)
                break;
            QFile::copy(corpus + "/" + name, srcDir + "/" + name);
            names << name;
        }
        return names;
    }
    const QByteArray jpeg = cameraJpeg();
    for (int i = 0; i < count; ++i) {
        names << QStringLiteral("IMG_%1.jpg").arg(i, 4, 10, QLatin1Char('0'));
        QFile f(srcDir + "/" + names.last());
        f.open(QIODevice::WriteOnly);
        f.write(jpeg);
    }
    return names;
}


BenchHome::BenchHome()
{
    for (const char *var : {"HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"})
        qputenv(var, dir.path().toUtf8() + "/" + var);
    srcDir = dir.path() + "/src";
    tgtDir = dir.path() + "/tgt";
    QDir().mkpath(srcDir);
    QDir().mkpath(tgtDir);
    QDir().mkpath(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/Quillet");
    quillet::FamilyDatabase::Provision(quillet::FamilyDatabase::DbPath());
}

double timedCp(const QString &srcDir, const QStringList &names, const QString &tgtDir, int folders)
{
    QElapsedTimer t;
    t.start();
    for (int f = 0; f < folders; ++f) {
        const QString dir = tgtDir + QStringLiteral("/cp%1").arg(f);
        QDir().mkpath(dir);
        QStringList args;
        for (const QString &n : names)
            args << srcDir + "/" + n;
        args << dir;
        QProcess::execute(QStringLiteral("cp"), args);
    }
    return t.nsecsElapsed() / 1e9;
}

#include "benchsupport.h"
#include "camerajpeg.h"

#include "app/familydatabase.h"

#include <QDir>
#include <QFile>
#include <QElapsedTimer>
#include <QProcess>
#include <QStandardPaths>

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

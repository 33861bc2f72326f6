#include "benchphotos.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QPainter>

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


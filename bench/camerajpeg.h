#pragma once

#include <QBuffer>
#include <QByteArray>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>

// A camera-sized JPEG (12 MP) for the benchmarks that need many such files; the same picture serves
// every file name.
inline QByteArray cameraJpeg()
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

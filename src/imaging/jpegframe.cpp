#include "jpegframe.h"

#include <QFile>

namespace quillet {

namespace {

bool isFrameMarker(quint8 m)
{
    // SOF0..SOF15 except DHT (C4), JPG (C8) and DAC (CC).
    return m >= 0xC0 && m <= 0xCF && m != 0xC4 && m != 0xC8 && m != 0xCC;
}

bool isStandalone(quint8 m)
{
    return m == 0x01 || (m >= 0xD0 && m <= 0xD8);
}

} // namespace

QSize jpegFrameSize(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QByteArray head = file.read(2);
    if (head.size() != 2 || quint8(head[0]) != 0xFF || quint8(head[1]) != 0xD8)
        return {};
    for (int segments = 0; segments < 1000; ++segments) {
        char c = 0;
        // A marker is one or more FF bytes followed by its code.
        if (!file.getChar(&c) || quint8(c) != 0xFF)
            return {};
        do {
            if (!file.getChar(&c))
                return {};
        } while (quint8(c) == 0xFF);
        const quint8 marker = quint8(c);
        if (isStandalone(marker))
            continue;
        if (marker == 0xD9 || marker == 0xDA)
            return {};
        const QByteArray len = file.read(2);
        if (len.size() != 2)
            return {};
        const int length = (quint8(len[0]) << 8) | quint8(len[1]);
        if (isFrameMarker(marker)) {
            const QByteArray sof = file.read(5);
            if (sof.size() != 5)
                return {};
            const int h = (quint8(sof[1]) << 8) | quint8(sof[2]);
            const int w = (quint8(sof[3]) << 8) | quint8(sof[4]);
            return QSize(w, h);
        }
        if (length < 2 || !file.seek(file.pos() + length - 2))
            return {};
    }
    return {};
}

} // namespace quillet

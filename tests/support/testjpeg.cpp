#include "testjpeg.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QRandomGenerator>

#include <turbojpeg.h>

namespace quillet::test {

namespace {

// Bytes of a TIFF structure in one byte order.
class TiffWriter
{
public:
    explicit TiffWriter(bool intel) : m_intel(intel) {}
    void u16(QByteArray &out, quint32 v) const { put(out, v, 2); }
    void u32(QByteArray &out, quint32 v) const { put(out, v, 4); }

private:
    void put(QByteArray &out, quint32 v, int len) const
    {
        for (int i = 0; i < len; ++i)
            out.append(char((v >> (m_intel ? 8 * i : 8 * (len - 1 - i))) & 0xFF));
    }
    bool m_intel;
};

struct Entry
{
    quint16 tag;
    quint16 type;
    quint32 count;
    QByteArray data;     // the value bytes in file order (ASCII with its NUL)
    int pointsTo = -1;   // for pointer entries: the index of the IFD or -2 for the thumbnail
};

using Ifd = QList<Entry>;

Entry ascii(quint16 tag, const QString &text)
{
    QByteArray bytes = text.toLatin1();
    bytes.append('\0');
    return {tag, 2, quint32(bytes.size()), bytes};
}

Entry number(const TiffWriter &w, quint16 tag, quint16 type, quint32 value)
{
    QByteArray bytes;
    if (type == 3) {
        w.u16(bytes, value);
        bytes.append(2, '\0');
    } else {
        w.u32(bytes, value);
    }
    return {tag, type, 1, bytes};
}

qint64 ifdSize(const Ifd &ifd)
{
    qint64 size = 2 + 12 * ifd.size() + 4;
    for (const Entry &e : ifd)
        size += e.data.size() > 4 ? (e.data.size() + 1) & ~1 : 0;
    return size;
}

// Lays out IFD0, the Exif sub-IFD and IFD1 one after the other, then the thumbnail.
QByteArray layoutTiff(const TiffWriter &w, bool intel, QList<Ifd> ifds, const QByteArray &thumbnail,
                      int chainedIfd)
{
    QList<quint32> offsets;
    quint32 pos = 8;
    for (const Ifd &ifd : ifds) {
        offsets.append(pos);
        pos += quint32(ifdSize(ifd));
    }
    const quint32 thumbOffset = pos;
    QByteArray out(intel ? "II" : "MM");
    w.u16(out, 42);
    w.u32(out, 8);
    for (int i = 0; i < ifds.size(); ++i) {
        Ifd &ifd = ifds[i];
        quint32 dataPos = offsets[i] + 2 + 12 * ifd.size() + 4;
        QByteArray data;
        w.u16(out, quint32(ifd.size()));
        for (Entry &e : ifd) {
            if (e.pointsTo != -1) {
                e.data.clear();
                w.u32(e.data, e.pointsTo == -2 ? thumbOffset : offsets[e.pointsTo]);
            }
            w.u16(out, e.tag);
            w.u16(out, e.type);
            w.u32(out, e.count);
            if (e.data.size() > 4) {
                w.u32(out, dataPos + quint32(data.size()));
                data += e.data;
                if (data.size() % 2)
                    data.append('\0');
            } else {
                out += e.data.leftJustified(4, '\0');
            }
        }
        w.u32(out, (i == 0 && chainedIfd > 0) ? offsets[chainedIfd] : 0);
        out += data;
    }
    return out + thumbnail;
}

QByteArray segment(quint8 marker, const QByteArray &payload)
{
    QByteArray seg;
    seg.append(char(0xFF));
    seg.append(char(marker));
    const int len = payload.size() + 2;
    seg.append(char(len >> 8));
    seg.append(char(len & 0xFF));
    return seg + payload;
}

} // namespace

QImage testPicture(QSize size, int seed)
{
    QImage img(size, QImage::Format_RGB32);
    QRandomGenerator rng{quint32(seed)};
    const int w = size.width(), h = size.height();
    for (int y = 0; y < h; ++y) {
        auto *line = reinterpret_cast<QRgb *>(img.scanLine(y));
        for (int x = 0; x < w; ++x) {
            const int noise = int(rng.bounded(24));
            const int r = x * 200 / std::max(1, w - 1) + (seed * 37) % 32;
            const int g = (y * 255 / std::max(1, h - 1)) & 0xFF;
            const int b = (((x / 16) ^ (y / 16)) & 1) ? 200 : 60;
            line[x] = qRgb(std::min(255, r + noise), std::min(255, g + noise), b);
        }
    }
    return img;
}

QByteArray exifSegment(const QString &dateTaken, bool intelOrder, const QByteArray &thumbnailJpeg)
{
    const TiffWriter w(intelOrder);
    Ifd ifd0{ascii(271, QStringLiteral("TestCam")), number(w, 274, 3, 1)};
    if (!dateTaken.isEmpty())
        ifd0.append(ascii(306, dateTaken));
    Entry exifPointer = number(w, 34665, 4, 0);
    exifPointer.pointsTo = 1;
    ifd0.append(exifPointer);

    Ifd sub{{36864, 7, 4, QByteArray("0230")}};
    if (!dateTaken.isEmpty())
        sub.append(ascii(36867, dateTaken));
    sub.append(number(w, 37377, 4, 0));

    QList<Ifd> ifds{ifd0, sub};
    if (!thumbnailJpeg.isEmpty()) {
        Entry offset = number(w, 513, 4, 0);
        offset.pointsTo = -2;
        ifds.append(Ifd{number(w, 259, 3, 6), offset, number(w, 514, 4, quint32(thumbnailJpeg.size()))});
    }
    const QByteArray tiff = layoutTiff(w, intelOrder, ifds, thumbnailJpeg, thumbnailJpeg.isEmpty() ? 0 : 2);
    return segment(0xE1, QByteArray("Exif\0\0", 6) + tiff);
}

QByteArray encodeJpeg(const QImage &image, int quality)
{
    const QImage rgb = image.convertToFormat(QImage::Format_RGB32);
    tjhandle tj = tjInitCompress();
    unsigned char *buf = nullptr;
    unsigned long size = 0;
    QByteArray out;
    if (tjCompress2(tj, rgb.constBits(), rgb.width(), int(rgb.bytesPerLine()), rgb.height(), TJPF_BGRX, &buf,
                    &size, TJSAMP_420, quality, 0) == 0)
        out = QByteArray(reinterpret_cast<const char *>(buf), qsizetype(size));
    tjFree(buf);
    tjDestroy(tj);
    return out;
}

QImage decodeJpeg(const QByteArray &jpeg)
{
    tjhandle tj = tjInitDecompress();
    int w = 0, h = 0, sub = 0, space = 0;
    const auto *src = reinterpret_cast<const unsigned char *>(jpeg.constData());
    QImage img;
    if (tjDecompressHeader3(tj, src, jpeg.size(), &w, &h, &sub, &space) == 0) {
        img = QImage(w, h, QImage::Format_RGB32);
        if (tjDecompress2(tj, src, jpeg.size(), img.bits(), w, int(img.bytesPerLine()), h, TJPF_BGRX, 0) != 0)
            img = QImage();
    }
    tjDestroy(tj);
    return img;
}

QSize jpegSize(const QByteArray &jpeg)
{
    tjhandle tj = tjInitDecompress();
    int w = 0, h = 0, sub = 0, space = 0;
    const int rc = tjDecompressHeader3(tj, reinterpret_cast<const unsigned char *>(jpeg.constData()),
                                       jpeg.size(), &w, &h, &sub, &space);
    tjDestroy(tj);
    return rc == 0 ? QSize(w, h) : QSize();
}

QByteArray insertAfterSoi(const QByteArray &jpeg, const QByteArray &seg)
{
    return jpeg.left(2) + seg + jpeg.mid(2);
}

QByteArray makeTestJpeg(const TestJpeg &want)
{
    const QImage picture = testPicture(want.size, want.seed);
    QByteArray jpeg = encodeJpeg(picture, want.quality);
    if (!want.noExif) {
        QByteArray thumb;
        const QImage &source = want.thumbnailPicture.isNull() ? picture : want.thumbnailPicture;
        if (!want.thumbnailSize.isEmpty())
            thumb = encodeJpeg(source.scaled(want.thumbnailSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation), 80);
        jpeg = insertAfterSoi(jpeg, exifSegment(want.dateTaken, want.intelOrder, thumb));
    }
    if (want.xmpFirst) {
        const QByteArray xmp = QByteArray("http://ns.adobe.com/xap/1.0/\0", 29)
                               + "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"></x:xmpmeta>";
        jpeg = insertAfterSoi(jpeg, segment(0xE1, xmp));
    }
    return jpeg;
}

bool writeTestJpeg(const QString &path, const TestJpeg &want)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    const QByteArray bytes = makeTestJpeg(want);
    return !bytes.isEmpty() && f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

} // namespace quillet::test

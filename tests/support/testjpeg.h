#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

namespace quillet::test {

// What a camera-like test JPEG holds.
struct TestJpeg
{
    QSize size{640, 480};
    // DateTimeOriginal as written by a camera ("2009:03:14 15:09:26"); none when empty.
    QString dateTaken;
    bool intelOrder = true;
    // Size of a thumbnail embedded in the EXIF block (IFD1); none when empty.
    QSize thumbnailSize;
    // The embedded thumbnail's picture, when it should differ from the photo (a stale one).
    QImage thumbnailPicture;
    // An XMP APP1 before the EXIF APP1, as some editors write.
    bool xmpFirst = false;
    // No EXIF block at all (a plain JFIF file).
    bool noExif = false;
    int quality = 90;
    int seed = 1;
};

// A picture with texture and colour, so that it compresses like a photo; the same seed gives
// the same picture.
QImage testPicture(QSize size, int seed);

// The EXIF APP1 segment (marker included) for a date, byte order and optional thumbnail.
QByteArray exifSegment(const QString &dateTaken, bool intelOrder, const QByteArray &thumbnailJpeg);

// Encodes an image as a baseline JPEG (4:2:0) with no metadata.
QByteArray encodeJpeg(const QImage &image, int quality);
// Decodes a JPEG to RGB32; a null image when it cannot.
QImage decodeJpeg(const QByteArray &jpeg);
// The pixel size from a JPEG's frame header; empty when it cannot be read.
QSize jpegSize(const QByteArray &jpeg);

// The whole file: the picture, an EXIF block after SOI (unless noExif), an XMP block first when
// asked. The embedded thumbnail is the same picture scaled to thumbnailSize.
QByteArray makeTestJpeg(const TestJpeg &want);
// Writes makeTestJpeg(want) to a path (folders created); false when it cannot.
bool writeTestJpeg(const QString &path, const TestJpeg &want);
// Inserts a segment right after the SOI marker of a JPEG.
QByteArray insertAfterSoi(const QByteArray &jpeg, const QByteArray &segment);

} // namespace quillet::test

#pragma once

#include <QDateTime>
#include <QImage>
#include <QSize>
#include <functional>

namespace quillet {

// What the photo lists need from the image services, as functions so that they can run on worker
// threads and be measured on their own: a thumbnail fitted into 96 x 96 (null when none can be
// made) and the EXIF date of capture (invalid when the file has none).
struct PhotoServices
{
    std::function<QImage(const QString &path)> thumbnail;
    std::function<QDateTime(const QString &path)> exifDate;

    // The services of this build.
    static PhotoServices Default();
};

// The date a photo is listed under: its EXIF date of capture when asked for and present, else the
// file's modified date.
QDateTime PhotoDate(const PhotoServices &services, const QString &path, bool useExif);

} // namespace quillet

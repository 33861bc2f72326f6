#include "photoservices.h"

#include <QFileInfo>
#include <QImageReader>

namespace quillet {

namespace {

QImage decodeThumbnail(const QString &path)
{
    QImageReader reader(path);
    reader.setAutoTransform(false);
    const QSize full = reader.size();
    if (full.isValid())
        reader.setScaledSize(full.scaled(QSize(96, 96), Qt::KeepAspectRatio));
    QImage image = reader.read();
    if (!image.isNull() && (image.width() > 96 || image.height() > 96))
        image = image.scaled(QSize(96, 96), Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return image;
}

} // namespace

PhotoServices PhotoServices::Default()
{
    PhotoServices s;
    s.thumbnail = decodeThumbnail;
    s.exifDate = [](const QString &) { return QDateTime(); };
    return s;
}

QDateTime PhotoDate(const PhotoServices &services, const QString &path, bool useExif)
{
    if (useExif && services.exifDate) {
        const QDateTime taken = services.exifDate(path);
        if (taken.isValid())
            return taken;
    }
    return QFileInfo(path).lastModified();
}

} // namespace quillet

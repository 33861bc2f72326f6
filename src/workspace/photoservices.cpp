#include "photoservices.h"

#include "imaging/clsexifreader.h"
#include "imaging/cthumbnailgenerator.h"

#include <QFileInfo>

namespace quillet {

PhotoServices PhotoServices::Default()
{
    PhotoServices s;
    s.thumbnail = [](const QString &path) { return cThumbnailGenerator::thumbnailOrNull(path); };
    s.exifDate = [](const QString &path) { return clsEXIFreader::DateTaken(path); };
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

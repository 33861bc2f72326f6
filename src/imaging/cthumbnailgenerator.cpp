#include "cthumbnailgenerator.h"

#include "jpegscaleddecode.h"

#include "clsexifreader.h"
#include "freeimagebitmap.h"
#include "jpegframe.h"
#include "lib/apppaths.h"
#include "lib/error.h"
#include "thumbnailcache.h"

#include <QFile>
#include <QFileInfo>

#include <FreeImage.h>

namespace quillet {

namespace {

QString source()
{
    return QLatin1String(AppPaths::kExeBase) + QStringLiteral(".cThumbnailGenerator");
}

[[noreturn]] void fail(qint32 number, const QString &text)
{
    throw Error(number, source(), text);
}

// Scales down to fit the box; a picture that already fits is returned as it is.
QImage fitted(const QImage &image, QSize box)
{
    if (image.width() <= box.width() && image.height() <= box.height())
        return image;
    return image.scaled(FreeImageBitmap::fitInto(image.size(), box), Qt::IgnoreAspectRatio,
                        Qt::SmoothTransformation);
}

// Two sizes have the same aspect ratio when they differ by less than rounding to whole pixels
// of the smaller one would explain.
bool sameAspect(QSize a, QSize b)
{
    const double ra = double(a.width()) / a.height();
    const double rb = double(b.width()) / b.height();
    return std::abs(ra - rb) <= 0.02 * std::max(ra, rb);
}

// The EXIF thumbnail of a JPEG when it is honest and large enough, else a null image. A square
// photo's thumbnail cannot show whether it was rotated since, so it is not trusted.
QImage embeddedThumbnail(const QString &path, QSize desired)
{
    clsEXIFreader reader;
    try {
        reader.Load(path);
    } catch (const Error &) {
        return {};
    }
    const QByteArray bytes = reader.EmbeddedThumbnail();
    if (bytes.isEmpty())
        return {};
    const QSize photo = jpegFrameSize(path);
    if (photo.isEmpty() || sameAspect(photo, QSize(1, 1)))
        return {};
    // Decoded as a JPEG and nothing else, through libjpeg-turbo: the bytes come from the camera
    // file, and guessing their format would hand them to every decoder FreeImage carries.
    const QImage image = QImage::fromData(bytes, "JPG");
    const QSize thumb = image.size();
    if (thumb.isEmpty() || !sameAspect(photo, thumb))
        return {};
    const QSize wanted = FreeImageBitmap::fitInto(photo, desired);
    if (thumb.width() < std::min(wanted.width(), photo.width()))
        return {};
    return image.convertToFormat(QImage::Format_RGB32);
}

// Decodes the file (a JPEG at the smallest scale that still covers `longSide`) and scales it
// to fit a square of `longSide`.
QImage decoded(const QString &path, int format, int longSide, const QString &file)
{
    if (format == FIF_JPEG) {
        // libjpeg-turbo's own reduced decode with the fast preview options. A JPEG it refuses is
        // damaged: it is not handed on to FreeImage, whose older JPEG decoder reads outside its
        // buffers on such files (found by fuzzing); the photo gets the placeholder.
        const QImage image = DecodeJpegScaled(path, longSide);
        if (image.isNull())
            fail(45007, QStringLiteral("ExtractImage on ") + file + QStringLiteral(" failed."));
        const QSize target = FreeImageBitmap::fitInto(image.size(), QSize(longSide, longSide));
        return target.width() < image.width() ? image.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                                              : image;
    }
    FreeImageBitmap::Ptr bitmap = FreeImageBitmap::load(path, format, longSide);
    if (!bitmap)
        fail(45007, QStringLiteral("ExtractImage on ") + file + QStringLiteral(" failed."));
    const QSize size = FreeImageBitmap::size(bitmap.get());
    if (size.isEmpty())
        fail(45008, QStringLiteral("No Thumbnail was provided."));
    const QSize target = FreeImageBitmap::fitInto(size, QSize(longSide, longSide));
    if (target.width() < size.width()) {
        FreeImageBitmap::Ptr scaled = FreeImageBitmap::rescale(bitmap.get(), target, FILTER_BILINEAR);
        if (scaled)
            bitmap = std::move(scaled);
    }
    QImage image = FreeImageBitmap::toQImage(bitmap.get());
    if (image.isNull())
        throw Error(45001, source() + QStringLiteral(".cThumbnailImage"),
                    QStringLiteral("Unable to make a picture of the bitmap of ") + file);
    return image;
}

// The checks that come before any decoding, in the order the errors are numbered.
void checkLocation(const QFileInfo &info)
{
    const QString folder = info.absolutePath();
    const QFileInfo dir(folder);
    if (!dir.isDir())
        fail(45002, QStringLiteral("Unable to locate the folder '") + folder + QLatin1Char('\''));
    if (!dir.isReadable() || !dir.isExecutable())
        fail(45003, QStringLiteral("Unable to bind to the folder '") + folder + QLatin1Char('\''));
    if (!info.exists() || info.isDir())
        fail(45004, QStringLiteral("Unable to read the contents of the folder '") + folder + QLatin1Char('\''));
    QFile probe(info.absoluteFilePath());
    if (!probe.open(QIODevice::ReadOnly))
        fail(45006, QStringLiteral("ExtractImage on ") + info.fileName() + QStringLiteral(" failed."));
}

} // namespace

QImage cThumbnailGenerator::GetThumbnail() const
{
    return thumbnail(FileName, QSize(DesiredWidth, DesiredHeight), UseCache);
}

QImage cThumbnailGenerator::thumbnail(const QString &fileName, QSize desired, bool useCache)
{
    const QFileInfo info(fileName);
    checkLocation(info);
    const QString path = info.absoluteFilePath();
    desired = desired.expandedTo(QSize(1, 1));
    if (useCache) {
        const QImage cached = ThumbnailCache::read(path);
        if (!cached.isNull())
            return fitted(cached, desired);
    }
    const int format = FreeImageBitmap::formatOf(path);
    if (!FreeImageBitmap::canRead(format))
        fail(45005, QStringLiteral("The object ") + info.fileName() + QStringLiteral(" does not support thumbnails"));
    if (format == FIF_JPEG) {
        const QImage embedded = embeddedThumbnail(path, desired);
        if (!embedded.isNull())
            return fitted(embedded, desired);
    }
    const int longSide = std::max({desired.width(), desired.height(), useCache ? ThumbnailCache::kNormalSize : 0});
    const QImage image = decoded(path, format, longSide, info.fileName());
    if (useCache)
        ThumbnailCache::write(path, image);
    return fitted(image, desired);
}

QImage cThumbnailGenerator::thumbnailOrNull(const QString &fileName, QSize desired, bool useCache) noexcept
{
    try {
        return thumbnail(fileName, desired, useCache);
    } catch (...) {
        return {};
    }
}

} // namespace quillet

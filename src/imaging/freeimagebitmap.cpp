#include "freeimagebitmap.h"

#include <QFile>

#include <FreeImage.h>

#include <cmath>
#include <mutex>

namespace quillet::FreeImageBitmap {

namespace {

thread_local QString t_message;

void DLL_CALLCONV storeMessage(FREE_IMAGE_FORMAT, const char *message)
{
    t_message = QString::fromLocal8Bit(message);
}

// FreeImage reports failures through one process-wide callback; it stores them per thread.
void installMessageHandler()
{
    static std::once_flag once;
    std::call_once(once, [] { FreeImage_SetOutputMessage(storeMessage); });
}

} // namespace

void Unloader::operator()(FIBITMAP *bitmap) const
{
    if (bitmap)
        FreeImage_Unload(bitmap);
}

int formatOf(const QString &path)
{
    installMessageHandler();
    const QByteArray name = QFile::encodeName(path);
    FREE_IMAGE_FORMAT fif = FreeImage_GetFileType(name.constData(), 0);
    if (fif == FIF_UNKNOWN)
        fif = FreeImage_GetFIFFromFilename(name.constData());
    return int(fif);
}

bool canRead(int format)
{
    return format != FIF_UNKNOWN && FreeImage_FIFSupportsReading(FREE_IMAGE_FORMAT(format));
}

Ptr load(const QString &path, int format, int sizeHint, int flags)
{
    installMessageHandler();
    clearMessage();
    if (!canRead(format))
        return {};
    if (format == FIF_JPEG && sizeHint > 0)
        flags |= JPEG_FAST | (std::min(sizeHint, 0xFFFF) << 16);
    return Ptr(FreeImage_Load(FREE_IMAGE_FORMAT(format), QFile::encodeName(path).constData(), flags));
}

QSize size(FIBITMAP *bitmap)
{
    return bitmap ? QSize(int(FreeImage_GetWidth(bitmap)), int(FreeImage_GetHeight(bitmap))) : QSize();
}

Ptr rescale(FIBITMAP *bitmap, QSize size, int filter)
{
    return Ptr(FreeImage_Rescale(bitmap, size.width(), size.height(), FREE_IMAGE_FILTER(filter)));
}

QImage toQImage(FIBITMAP *bitmap)
{
    if (!bitmap || FreeImage_GetImageType(bitmap) != FIT_BITMAP)
        return {};
    const bool alpha = FreeImage_IsTransparent(bitmap);
    Ptr converted(FreeImage_ConvertTo32Bits(bitmap));
    if (!converted)
        return {};
    const int w = int(FreeImage_GetWidth(converted.get()));
    const int h = int(FreeImage_GetHeight(converted.get()));
    QImage image(w, h, alpha ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    if (image.isNull())
        return {};
    // FreeImage keeps rows bottom-up in BGRA order, which is QImage's 32-bit layout on
    // little-endian machines.
    for (int y = 0; y < h; ++y) {
        const BYTE *src = FreeImage_GetScanLine(converted.get(), h - 1 - y);
        auto *dst = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < w; ++x, src += 4)
            dst[x] = qRgba(src[FI_RGBA_RED], src[FI_RGBA_GREEN], src[FI_RGBA_BLUE], alpha ? src[FI_RGBA_ALPHA] : 255);
    }
    return image;
}

void stripMetadata(FIBITMAP *bitmap)
{
    for (int model = FIMD_COMMENTS; model <= FIMD_EXIF_RAW; ++model) {
        QList<QByteArray> keys;
        FITAG *tag = nullptr;
        FIMETADATA *it = FreeImage_FindFirstMetadata(FREE_IMAGE_MDMODEL(model), bitmap, &tag);
        if (!it)
            continue;
        do {
            keys.append(QByteArray(FreeImage_GetTagKey(tag)));
        } while (FreeImage_FindNextMetadata(it, &tag));
        FreeImage_FindCloseMetadata(it);
        for (const QByteArray &key : std::as_const(keys))
            FreeImage_SetMetadata(FREE_IMAGE_MDMODEL(model), bitmap, key.constData(), nullptr);
    }
    FreeImage_SetThumbnail(bitmap, nullptr);
}

QString lastMessage()
{
    return t_message.isEmpty() ? QStringLiteral("The image library could not decode the file") : t_message;
}

void clearMessage()
{
    t_message.clear();
}

QSize fitInto(QSize source, QSize box)
{
    if (source.isEmpty() || box.isEmpty())
        return {};
    const double scale = std::min(double(box.width()) / source.width(), double(box.height()) / source.height());
    return QSize(std::max(1, int(std::lround(source.width() * scale))),
                 std::max(1, int(std::lround(source.height() * scale))));
}

} // namespace quillet::FreeImageBitmap

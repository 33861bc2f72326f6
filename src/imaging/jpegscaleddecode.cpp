#include "jpegscaleddecode.h"

#include <QFile>

#include <turbojpeg.h>

namespace quillet {

namespace {

struct Decompressor
{
    tjhandle handle = tjInitDecompress();
    ~Decompressor()
    {
        if (handle)
            tjDestroy(handle);
    }
};

} // namespace

QImage DecodeJpegScaled(const QString &path, int longSide)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray bytes = file.readAll();
    Decompressor tj;
    if (!tj.handle)
        return {};
    const auto *data = reinterpret_cast<const unsigned char *>(bytes.constData());
    int width = 0, height = 0, subsampling = 0, colourspace = 0;
    if (tjDecompressHeader3(tj.handle, data, static_cast<unsigned long>(bytes.size()), &width, &height, &subsampling,
                            &colourspace) != 0
        || width <= 0 || height <= 0)
        return {};

    // The smallest scale whose longer side still reaches longSide.
    int count = 0;
    const tjscalingfactor *factors = tjGetScalingFactors(&count);
    const int longer = std::max(width, height);
    int bestWidth = width, bestHeight = height;
    for (int i = 0; i < count; ++i) {
        const int w = TJSCALED(width, factors[i]);
        const int h = TJSCALED(height, factors[i]);
        if (std::max(w, h) >= std::min(longSide, longer) && w * h < bestWidth * bestHeight) {
            bestWidth = w;
            bestHeight = h;
        }
    }
    QImage image(bestWidth, bestHeight, QImage::Format_RGB32);
    if (image.isNull())
        return {};
    if (tjDecompress2(tj.handle, data, static_cast<unsigned long>(bytes.size()), image.bits(), bestWidth,
                      int(image.bytesPerLine()), bestHeight, TJPF_BGRX, TJFLAG_FASTDCT | TJFLAG_FASTUPSAMPLE)
        != 0) {
        // A warning (stray bytes after the picture) still leaves a whole picture; an error does not.
        if (tjGetErrorCode(tj.handle) != TJERR_WARNING)
            return {};
    }
    return image;
}

} // namespace quillet

#include "copyresizedimage.h"

#include "freeimagebitmap.h"
#include "lib/appstate.h"
#include "lib/error.h"
#include "lib/errorhandler.h"
#include "lib/fileutils.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

#include <FreeImage.h>
#include <turbojpeg.h>

#include <cmath>

namespace quillet {

namespace {

QString source()
{
    return QStringLiteral("CopyResizedImage");
}

// The failure question; true when the caller should go on with the next file.
bool askToCancel(const QString &firstLine, const QString &errorText)
{
    const QString text = firstLine + QStringLiteral("\r\nErr: ") + errorText + QStringLiteral("\r\nDo you wish to cancel?");
    if (lib_MsgYesNo(text, 5, true)) {
        appState().cancel = true;
        return false;
    }
    return true;
}

// Converts the colour depth when the format cannot store the bitmap's: to 24 bits, and to an
// 8-bit palette for formats that hold nothing deeper (GIF).
FreeImageBitmap::Ptr fitForFormat(FreeImageBitmap::Ptr bitmap, FREE_IMAGE_FORMAT fif)
{
    const int bpp = int(FreeImage_GetBPP(bitmap.get()));
    const FREE_IMAGE_TYPE type = FreeImage_GetImageType(bitmap.get());
    if (FreeImage_FIFSupportsExportBPP(fif, bpp) && FreeImage_FIFSupportsExportType(fif, type))
        return bitmap;
    FreeImageBitmap::Ptr rgb(FreeImage_ConvertTo24Bits(bitmap.get()));
    if (!rgb || FreeImage_FIFSupportsExportBPP(fif, 24))
        return rgb;
    return FreeImageBitmap::Ptr(FreeImage_ColorQuantize(rgb.get(), FIQ_WUQUANT));
}

struct Decompressor
{
    tjhandle handle = tjInitDecompress();
    ~Decompressor()
    {
        if (handle)
            tjDestroy(handle);
    }
};

// A picture this large (a damaged header, mostly) is refused before any memory is set aside.
constexpr qint64 kMaxDecodedPixels = qint64(32768) * 16384;

// Decodes a JPEG with libjpeg-turbo at the smallest of its reduced scales (1/8 ... 7/8, 1) that
// still covers `wanted` (the whole picture when `wanted` is empty), into a FreeImage bitmap of 24
// bits (8 for a greyscale JPEG). `original` receives the full picture's size. A JPEG that
// libjpeg-turbo refuses is an error: it never goes on to another decoder.
FreeImageBitmap::Ptr decodeJpeg(const QString &path, int maxDimension, QSize &original)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Error(kErrPathFileAccess, source(), file.errorString());
    const QByteArray bytes = file.readAll();
    const auto *data = reinterpret_cast<const unsigned char *>(bytes.constData());
    const auto length = static_cast<unsigned long>(bytes.size());
    const auto refused = [](tjhandle handle) {
        throw Error(kLibErrorNumber, source(),
                    QStringLiteral("The JPEG picture is damaged: ") + QString::fromLocal8Bit(tjGetErrorStr2(handle)));
    };
    Decompressor tj;
    if (!tj.handle)
        throw Error(kLibErrorNumber, source(), QStringLiteral("The JPEG decoder could not be started"));
    int width = 0, height = 0, subsampling = 0, colourspace = 0;
    if (tjDecompressHeader3(tj.handle, data, length, &width, &height, &subsampling, &colourspace) != 0)
        refused(tj.handle);
    if (width <= 0 || height <= 0 || qint64(width) * height > kMaxDecodedPixels)
        throw Error(kLibErrorNumber, source(), QStringLiteral("The JPEG picture is damaged: its size is impossible"));
    original = QSize(width, height);

    int decodedWidth = width, decodedHeight = height;
    if (maxDimension > 0) {
        const QSize wanted = ResizedSize(original, maxDimension);
        int count = 0;
        const tjscalingfactor *factors = tjGetScalingFactors(&count);
        for (int i = 0; factors && i < count; ++i) {
            if (factors[i].num > factors[i].denom)
                continue; // enlarging is the exact rescale's work
            const int w = TJSCALED(width, factors[i]);
            const int h = TJSCALED(height, factors[i]);
            if (w >= wanted.width() && h >= wanted.height() && qint64(w) * h < qint64(decodedWidth) * decodedHeight) {
                decodedWidth = w;
                decodedHeight = h;
            }
        }
    }
    const bool grey = colourspace == TJCS_GRAY;
    const bool cmyk = colourspace == TJCS_CMYK || colourspace == TJCS_YCCK;
    FreeImageBitmap::Ptr bitmap(FreeImage_Allocate(decodedWidth, decodedHeight, grey ? 8 : 24));
    if (!bitmap)
        throw Error(kLibErrorNumber, source(), QStringLiteral("There is not enough memory to decode the picture"));
    const int pitch = int(FreeImage_GetPitch(bitmap.get()));
    // FreeImage keeps rows bottom-up and 24-bit pixels in the machine's BGR order.
    const int flags = TJFLAG_BOTTOMUP;
    int rc;
    if (cmyk) {
        // Neither library converts CMYK on the way: decode it as it is, then to BGR.
        QByteArray cmykRows(qsizetype(decodedWidth) * 4 * decodedHeight, Qt::Uninitialized);
        rc = tjDecompress2(tj.handle, data, length, reinterpret_cast<unsigned char *>(cmykRows.data()), decodedWidth,
                           decodedWidth * 4, decodedHeight, TJPF_CMYK, flags);
        if (rc == 0 || tjGetErrorCode(tj.handle) == TJERR_WARNING) {
            for (int y = 0; y < decodedHeight; ++y) {
                const auto *in = reinterpret_cast<const uchar *>(cmykRows.constData()) + qsizetype(y) * decodedWidth * 4;
                BYTE *out = FreeImage_GetScanLine(bitmap.get(), decodedHeight - 1 - y);
                for (int x = 0; x < decodedWidth; ++x, in += 4, out += 3) {
                    // As the office programs write it: inverted, so ink is the smaller value.
                    out[FI_RGBA_RED] = BYTE(in[0] * in[3] / 255);
                    out[FI_RGBA_GREEN] = BYTE(in[1] * in[3] / 255);
                    out[FI_RGBA_BLUE] = BYTE(in[2] * in[3] / 255);
                }
            }
        }
    } else {
        rc = tjDecompress2(tj.handle, data, length, FreeImage_GetBits(bitmap.get()), decodedWidth, pitch, decodedHeight,
                           grey ? TJPF_GRAY : TJPF_BGR, flags);
    }
    // A warning (stray bytes after the picture, a picture cut short) still leaves a whole bitmap.
    if (rc != 0 && tjGetErrorCode(tj.handle) != TJERR_WARNING)
        refused(tj.handle);
    return bitmap;
}

// Decodes the source, reduced to the target size when a size code is set.
FreeImageBitmap::Ptr loadResized(const QString &path, FREE_IMAGE_FORMAT fif, int maxDimension)
{
    QSize original;
    FreeImageBitmap::Ptr bitmap;
    if (fif == FIF_JPEG) {
        bitmap = decodeJpeg(path, maxDimension, original);
    } else {
        bitmap = FreeImageBitmap::load(path, fif);
        if (!bitmap)
            throw Error(kLibErrorNumber, source(), FreeImageBitmap::lastMessage());
        original = FreeImageBitmap::size(bitmap.get());
    }
    if (maxDimension <= 0)
        return bitmap;
    const QSize target = ResizedSize(original, maxDimension);
    if (target == FreeImageBitmap::size(bitmap.get()))
        return bitmap;
    FreeImageBitmap::Ptr scaled = FreeImageBitmap::rescale(bitmap.get(), target, FILTER_BICUBIC);
    if (!scaled)
        throw Error(kLibErrorNumber, source(), QStringLiteral("The picture could not be rescaled"));
    return scaled;
}

// Writes the bitmap in the work file's format.
void save(FreeImageBitmap::Ptr bitmap, const QString &workFile, int qualityCode)
{
    const QByteArray name = QFile::encodeName(workFile);
    const FREE_IMAGE_FORMAT fif = FreeImage_GetFIFFromFilename(name.constData());
    if (fif == FIF_UNKNOWN || !FreeImage_FIFSupportsWriting(fif))
        throw Error(kLibErrorNumber, source(), QStringLiteral("This type of picture cannot be written"));
    bitmap = fitForFormat(std::move(bitmap), fif);
    if (!bitmap)
        throw Error(kLibErrorNumber, source(), QStringLiteral("The colour depth could not be converted"));
    FreeImageBitmap::stripMetadata(bitmap.get());
    FreeImageBitmap::clearMessage();
    const int flags = fif == FIF_JPEG ? ResizeJpegQualityFlag(qualityCode) : 0;
    if (!FreeImage_Save(fif, bitmap.get(), name.constData(), flags))
        throw Error(kLibErrorNumber, source(), FreeImageBitmap::lastMessage());
}

void writeResized(const QString &src, const QString &target, int sizeCode, int qualityCode)
{
    const QDateTime modified = lib_FileDate(src, QLatin1Char('M'));
    const FREE_IMAGE_FORMAT fif = FREE_IMAGE_FORMAT(FreeImage_GetFIFFromFilename(QFile::encodeName(src).constData()));
    if (!QFileInfo(src).isFile())
        throw Error(kErrFileNotFound, source(), QStringLiteral("File not found"));
    if (fif == FIF_UNKNOWN || !FreeImage_FIFSupportsReading(fif))
        throw Error(kLibErrorNumber, source(), QStringLiteral("This type of file cannot be read as a picture"));
    FreeImageBitmap::Ptr bitmap = loadResized(src, fif, ResizeMaxDimension(sizeCode));

    // The work file keeps the source's extension, so the picture keeps its format.
    QTemporaryFile work(QDir::tempPath() + QStringLiteral("/QLtemp.XXXXXX.") + QFileInfo(src).suffix());
    if (!work.open())
        throw Error(kErrPathFileAccess, source(), QStringLiteral("Cannot create the work file ") + work.fileTemplate());
    work.close();
    save(std::move(bitmap), work.fileName(), qualityCode);
    if (!lib_CopyFile(work.fileName(), target, true))
        throw Error(kLibErrorNumber, source(), QStringLiteral("The copy was refused"));
    if (modified.isValid())
        lib_SetFileDate(target, QLatin1Char('M'), modified);
}

} // namespace

int ResizeMaxDimension(int sizeCode)
{
    static const int table[] = {0, 320, 640, 1024, 1536, 2048};
    return sizeCode <= 0 ? 0 : table[std::min(sizeCode, 5)];
}

int ResizeJpegQualityFlag(int qualityCode)
{
    static const int table[] = {0, JPEG_QUALITYBAD, JPEG_QUALITYAVERAGE, JPEG_QUALITYNORMAL, JPEG_QUALITYGOOD,
                                JPEG_QUALITYSUPERB};
    return qualityCode <= 0 ? 0 : table[std::min(qualityCode, 5)];
}

QSize ResizedSize(QSize picture, int maxDimension)
{
    if (picture.isEmpty() || maxDimension <= 0)
        return picture;
    const auto follow = [&](int side, int other) {
        return std::max(1, int(std::lround(double(side) * maxDimension / other)));
    };
    if (picture.height() <= picture.width())
        return QSize(maxDimension, follow(picture.height(), picture.width()));
    return QSize(follow(picture.width(), picture.height()), maxDimension);
}

bool CopyResizedImage(const QString &src, const QString &target, qint16 sizeCode, qint16 qualityCode)
{
    if (sizeCode == 0 && qualityCode == 0) {
        try {
            if (lib_CopyFile(src, target, true))
                return true;
            return askToCancel(QStringLiteral("Failed to copy ") + src + QLatin1Char('.'),
                               QStringLiteral("Source and target are the same file"));
        } catch (const Error &e) {
            return askToCancel(QStringLiteral("Failed to copy ") + src + QLatin1Char('.'), e.description());
        }
    }
    try {
        writeResized(src, target, sizeCode, qualityCode);
        return true;
    } catch (const Error &e) {
        return askToCancel(QStringLiteral("Failed to load/copy ") + src + QLatin1Char('.'), e.description());
    }
}

} // namespace quillet

#include "copyresizedimage.h"

#include "freeimagebitmap.h"
#include "jpegframe.h"
#include "lib/appstate.h"
#include "lib/error.h"
#include "lib/errorhandler.h"
#include "lib/fileutils.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

#include <FreeImage.h>

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

// Decodes the source, reduced to the target size when a size code is set.
FreeImageBitmap::Ptr loadResized(const QString &path, FREE_IMAGE_FORMAT fif, int maxDimension)
{
    QSize original;
    int sizeHint = 0;
    if (maxDimension > 0 && fif == FIF_JPEG) {
        original = jpegFrameSize(path);
        const QSize wanted = ResizedSize(original, maxDimension);
        sizeHint = std::max(wanted.width(), wanted.height());
    }
    FreeImageBitmap::Ptr bitmap = FreeImageBitmap::load(path, fif, sizeHint);
    if (!bitmap)
        throw Error(kLibErrorNumber, source(), FreeImageBitmap::lastMessage());
    if (maxDimension <= 0)
        return bitmap;
    if (original.isEmpty())
        original = FreeImageBitmap::size(bitmap.get());
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

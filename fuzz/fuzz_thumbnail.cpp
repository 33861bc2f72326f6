// A thumbnail of any bytes named as a JPEG: the frame-size reading, the embedded EXIF thumbnail
// (its aspect test and decoding) and the reduced decode. A thumbnail is made or refused; nothing
// crashes and nothing larger than asked comes back. The same bytes then go through the resized
// copy of Save and the replay (libjpeg-turbo's scaled decode, the exact rescale, the JPEG save):
// a copy is made at the asked size or refused.
#include "fuzzsupport.h"

#include "imaging/copyresizedimage.h"
#include "imaging/cthumbnailgenerator.h"
#include "imaging/jpegframe.h"
#include "lib/appstate.h"

#include <QFile>
#include <QImage>

using namespace quillet;

int QuilletFuzzOne(const uint8_t *data, size_t size)
{
    const QString path = fuzz::writeScratch(QStringLiteral("thumb.jpg"), data, size);
    const QImage image = cThumbnailGenerator::thumbnailOrNull(path, QSize(96, 96), false);
    fuzz::check(image.isNull() || (image.width() <= 96 && image.height() <= 96), "the thumbnail fits");

    const QString target = fuzz::scratchDir() + QStringLiteral("/resized.jpg");
    QFile::remove(target);
    const bool copied = CopyResizedImage(path, target, 1, 0); // 320 pixels
    appState().cancel = false;
    if (copied && QFile::exists(target)) {
        const QSize out = jpegFrameSize(target);
        fuzz::check(std::max(out.width(), out.height()) == ResizeMaxDimension(1), "the copy has the asked size");
    }
    return 0;
}

QUILLET_FUZZ_TARGET

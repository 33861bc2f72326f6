// A thumbnail of any bytes named as a JPEG: the frame-size reading, the embedded EXIF thumbnail
// (its aspect test and decoding) and the reduced decode. A thumbnail is made or refused; nothing
// crashes and nothing larger than asked comes back.
#include "fuzzsupport.h"

#include "imaging/cthumbnailgenerator.h"

#include <QImage>

using namespace quillet;

int QuilletFuzzOne(const uint8_t *data, size_t size)
{
    const QString path = fuzz::writeScratch(QStringLiteral("thumb.jpg"), data, size);
    const QImage image = cThumbnailGenerator::thumbnailOrNull(path, QSize(96, 96), false);
    fuzz::check(image.isNull() || (image.width() <= 96 && image.height() <= 96), "the thumbnail fits");
    return 0;
}

QUILLET_FUZZ_TARGET

#pragma once

#include <QImage>
#include <QString>

namespace quillet {

// Decodes a JPEG at the smallest of libjpeg's reduced scales (1/8, 1/4, 3/8, 1/2, ...) whose
// picture still covers a square of `longSide`, with the fast DCT and upsampling meant for
// previews. A 12-megapixel photo decodes at 1/8 for a thumbnail: a fraction of the full work.
// Null when the file cannot be decoded this way (the caller then tries another decoder).
QImage DecodeJpegScaled(const QString &path, int longSide);

} // namespace quillet

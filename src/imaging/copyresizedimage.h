#pragma once

#include <QSize>
#include <QString>

namespace quillet {

// Copies a picture to a target, optionally reduced to a maximum dimension and re-encoded at a
// JPEG quality (the codes of the settings TargetResizeMD/Q and UnallocResizeMD/Q).
//
// Codes 0 and 0 make a plain safe copy (lib_CopyFile). Otherwise the picture is decoded (a JPEG by
// libjpeg-turbo at the smallest reduced scale that still covers the target size, and a JPEG it
// refuses fails the copy; other formats by FreeImage), rescaled bicubically so
// that its longer side is the maximum dimension (smaller pictures are enlarged), saved in the
// source's own format (a JPEG stays a JPEG; the colour depth is converted where the format
// needs it) without any EXIF or other metadata, copied safely over the target and given the
// source's modified time. The target is never left half-written.
//
// On failure the user is asked (5-second countdown, default Yes) whether to cancel: Yes raises
// the application-wide cancel flag and returns false; No returns true so that the caller goes on
// with the next file. Returns true when the target was written.
bool CopyResizedImage(const QString &source, const QString &target, qint16 sizeCode, qint16 qualityCode);

// Maximum dimension of a size code: 0 (no resizing), 320, 640, 1024, 1536, 2048 for 5 or more.
int ResizeMaxDimension(int sizeCode);
// FreeImage's JPEG save flag of a quality code: 0 (the encoder's default), 2048 (lowest), 1024,
// 512, 256, 128 (highest) for 5 or more.
int ResizeJpegQualityFlag(int qualityCode);
// The size of a picture whose longer side becomes `maxDimension` (the width when the picture is
// square or landscape), the other side following the aspect ratio, rounded to the nearest pixel.
QSize ResizedSize(QSize picture, int maxDimension);

} // namespace quillet

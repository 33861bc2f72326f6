#pragma once

#include <QString>

namespace quillet {

// Turns a JPEG photo a quarter turn, clockwise or anticlockwise, without re-encoding it.
//
// Edge blocks that cannot be turned losslessly (a side that is not a whole number of JPEG blocks)
// are trimmed, never refused; every other marker (the EXIF block with its date) is kept. The
// photo keeps its modified time, so it keeps its place in date order, and its desktop thumbnail
// cache entry is dropped (the cache would otherwise still match the unchanged time).
//
// Normally the photo is replaced atomically by the turned one. On a portable copy the result is
// written to a temporary file ("Qlt" prefix) and then copied over the photo with lib_CopyFile.
// Returns true when the transform succeeded; a file that is not a JPEG, or cannot be read or
// written, stays as it was and gives false.
bool RotateJpeg(const QString &path, bool clockwise);

} // namespace quillet

#pragma once

#include <QSize>
#include <QString>

namespace quillet {

// The pixel size a JPEG file declares in its frame header (the first SOFn marker), found by
// walking the marker segments from the start of the file; reads only the segment headers.
// Empty when the file is not a JPEG or the header cannot be found.
QSize jpegFrameSize(const QString &path);

} // namespace quillet

#pragma once

#include <QImage>
#include <QSize>
#include <QString>

#include <memory>

// FreeImage's bitmap handle; its header stays out of shared headers (it defines BOOL and BYTE).
struct FIBITMAP;

namespace quillet {

// The few FreeImage calls the image services share, with ownership and error text handled.
// Every function is safe to call from several threads at once (each works on its own bitmap).
namespace FreeImageBitmap {

struct Unloader
{
    void operator()(FIBITMAP *bitmap) const;
};
using Ptr = std::unique_ptr<FIBITMAP, Unloader>;

// The file's format from its content, else from its name; -1 (FIF_UNKNOWN) when neither tells.
int formatOf(const QString &path);
// True when FreeImage can read that format.
bool canRead(int format);

// Loads a file. For a JPEG a `sizeHint` above 0 lets the decoder scale by 1/2, 1/4 or 1/8 while
// the longer side stays at least `sizeHint` pixels. Null when the file cannot be decoded; then
// lastMessage() tells why.
Ptr load(const QString &path, int format, int sizeHint = 0, int flags = 0);

QSize size(FIBITMAP *bitmap);
// Rescales with FreeImage's filter number (1 is bicubic). Null on failure.
Ptr rescale(FIBITMAP *bitmap, QSize size, int filter);
// Converts to a QImage (RGB32, or ARGB32 when the bitmap has transparency). Null on failure.
QImage toQImage(FIBITMAP *bitmap);
// Removes every metadata model and the embedded thumbnail, so a save writes none of them.
void stripMetadata(FIBITMAP *bitmap);

// The last message FreeImage gave on this thread, or a generic text when it gave none.
QString lastMessage();
void clearMessage();

// The size that fits `source` into `box` keeping its aspect ratio, each side rounded to the
// nearest pixel and at least 1.
QSize fitInto(QSize source, QSize box);

} // namespace FreeImageBitmap
} // namespace quillet

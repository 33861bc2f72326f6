#pragma once

#include <QImage>
#include <QString>

namespace quillet {

// The desktop's shared thumbnail cache ($XDG_CACHE_HOME/thumbnails/normal, else
// ~/.cache/thumbnails/normal): 128-pixel PNGs named after the MD5 of the file's URI, carrying
// the URI and the file's modified time, so that other desktop programs and the next start of
// this one reuse them. Every function is safe to call from several threads at once.
class ThumbnailCache
{
public:
    // Longest side of a thumbnail in the "normal" size class.
    static constexpr int kNormalSize = 128;

    // The file URI the cache keys on (file:// plus the absolute, percent-encoded path).
    static QString uriOf(const QString &path);
    // Where the thumbnail of a file lives in the cache.
    static QString entryPath(const QString &path);

    // The cached thumbnail when it is valid: its URI is the file's, its modified time equals the
    // file's, and its recorded size (when present) equals the file's. A null image otherwise.
    static QImage read(const QString &path);
    // Stores a thumbnail (its longest side at most kNormalSize) for a file, atomically and
    // readable by the owner only. False when it could not be written; the cache is optional.
    static bool write(const QString &path, const QImage &thumbnail);
    // Removes a file's entries, for a change that keeps the modified time (a rotation).
    static void forget(const QString &path);
};

} // namespace quillet

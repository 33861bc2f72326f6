#pragma once

#include <QImage>
#include <QSize>
#include <QString>

namespace quillet {

// Makes the small pictures of the photo lists.
//
// The picture comes from the fastest honest source: the desktop thumbnail cache when its entry
// is valid; else, for a JPEG, the thumbnail embedded in the EXIF block when its aspect ratio
// matches the photo's (a rotated or edited photo often keeps a stale one); else the file
// decoded by FreeImage, a JPEG at reduced scale. A picture decoded from the file is stored in
// the cache for the next time. The result fits DesiredWidth x DesiredHeight with the aspect
// ratio kept and is never larger than the picture itself.
//
// Failures throw Error with the numbers below and the source "quillet.cThumbnailGenerator"; the
// caller shows its placeholder instead:
//   45001 the decoded bitmap could not become a picture (source ".cThumbnailImage")
//   45002 "Unable to locate the folder '<folder>'"
//   45003 "Unable to bind to the folder '<folder>'" (the folder cannot be read)
//   45004 "Unable to read the contents of the folder '<folder>'" (no such file in it)
//   45005 "The object <file> does not support thumbnails" (no decoder, e.g. a movie)
//   45006 "ExtractImage on <file> failed." (the file cannot be opened)
//   45007 "ExtractImage on <file> failed." (the decoder failed)
//   45008 "No Thumbnail was provided." (the decoder gave an empty picture)
class cThumbnailGenerator
{
public:
    QString FileName;
    qint32 DesiredWidth = 96;
    qint32 DesiredHeight = 96;
    // Kept for the callers that set it; the result always keeps the aspect ratio.
    qint32 Options = 36;
    // Whether the desktop thumbnail cache is read and written.
    bool UseCache = true;

    // The thumbnail of FileName at the desired size.
    QImage GetThumbnail() const;

    // The same as a function of its arguments alone: reentrant, for worker threads.
    static QImage thumbnail(const QString &fileName, QSize desired = QSize(96, 96), bool useCache = true);
    // The same, returning a null image instead of throwing.
    static QImage thumbnailOrNull(const QString &fileName, QSize desired = QSize(96, 96),
                                  bool useCache = true) noexcept;
};

} // namespace quillet

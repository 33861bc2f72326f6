#include "rotatejpeg.h"
#include "lib/atomicwrite.h"

#include "lib/appstate.h"
#include "lib/error.h"
#include "lib/fileutils.h"
#include "thumbnailcache.h"

#include <QDir>
#include <QFile>
#include <QTemporaryFile>

#include <turbojpeg.h>

#include <memory>

namespace quillet {

namespace {

// The losslessly turned JPEG, or empty when the transform fails.
QByteArray transformed(const QByteArray &jpeg, bool clockwise)
{
    std::unique_ptr<void, int (*)(tjhandle)> tj(tjInitTransform(), tjDestroy);
    if (!tj || jpeg.isEmpty())
        return {};
    tjtransform xform{};
    xform.op = clockwise ? TJXOP_ROT90 : TJXOP_ROT270;
    xform.options = TJXOPT_TRIM;
    unsigned char *out = nullptr;
    unsigned long outSize = 0;
    const int rc = tjTransform(tj.get(), reinterpret_cast<const unsigned char *>(jpeg.constData()),
                               static_cast<unsigned long>(jpeg.size()), 1, &out, &outSize, &xform, 0);
    QByteArray result;
    if (rc == 0 && out && outSize > 0)
        result = QByteArray(reinterpret_cast<const char *>(out), qsizetype(outSize));
    tjFree(out);
    return result;
}

bool replaceInPlace(const QString &path, const QByteArray &bytes)
{
    return WriteFileAtomically(path, bytes).isEmpty();
}

// A portable copy writes the result beside the system's temporary files and copies it over.
bool replaceThroughTemporary(const QString &path, const QByteArray &bytes)
{
    QTemporaryFile temp(QDir::tempPath() + QStringLiteral("/QltXXXXXX.tmp"));
    if (!temp.open() || temp.write(bytes) != bytes.size() || !temp.flush())
        return false;
    temp.close();
    try {
        return lib_CopyFile(temp.fileName(), path, true);
    } catch (const Error &) {
        return false;
    }
}

} // namespace

bool RotateJpeg(const QString &path, bool clockwise)
{
    const QDateTime modified = lib_FileDate(path, QLatin1Char('M'));
    QFile file(path);
    if (!modified.isValid() || !file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray turned = transformed(file.readAll(), clockwise);
    file.close();
    if (turned.isEmpty())
        return false;
    const bool written = appState().isPortableCopy ? replaceThroughTemporary(path, turned)
                                                   : replaceInPlace(path, turned);
    if (!written)
        return false;
    try {
        lib_SetFileDate(path, QLatin1Char('M'), modified);
    } catch (const Error &) {
        // The turn itself succeeded; a time that cannot be restored does not undo it.
    }
    ThumbnailCache::forget(path);
    return true;
}

} // namespace quillet

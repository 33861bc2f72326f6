#include "copytargets.h"

#include "allocationtag.h"
#include "clsundos.h"

#include "lib/error.h"
#include "lib/fileutils.h"

#include <QFile>
#include <QFileInfo>

namespace quillet::CopyTargets {

namespace {

constexpr int kMaxSuffix = 9999;

QString untagged(const QString &path)
{
    return lib_JoinPath(lib_DirPart(path), StripFamIDs(lib_FilePart(path)));
}

bool sameBytes(const QString &a, const QString &b)
{
    QFile fa(a), fb(b);
    if (fa.size() != fb.size() || !fa.open(QIODevice::ReadOnly) || !fb.open(QIODevice::ReadOnly))
        return false;
    while (!fa.atEnd()) {
        if (fa.read(1 << 20) != fb.read(1 << 20))
            return false;
    }
    return true;
}

} // namespace

QString DistinctName(const QString &target)
{
    if (!QFileInfo::exists(target))
        return target;
    const QFileInfo info(target);
    const QString suffix = info.completeSuffix().isEmpty() ? QString() : QLatin1Char('.') + info.completeSuffix();
    const QString stem = lib_JoinPath(lib_DirPart(target), info.completeBaseName());
    for (int n = 2; n <= kMaxSuffix; ++n) {
        const QString candidate = stem + QLatin1Char('_') + QString::number(n) + suffix;
        if (!QFileInfo::exists(candidate))
            return candidate;
    }
    throw Error(kLibErrorNumber, QStringLiteral("CopyTargets.DistinctName"),
                QStringLiteral("No free name is left for a copy of ") + target);
}

bool IsCopyOf(const QString &target, const QString &untaggedSource, const QString &currentSource, bool plainCopy,
              const clsUndos *undos)
{
    bool recorded = false;
    for (int i = 1; undos && i <= undos->UndoTop(); ++i) {
        if (undos->ItemTgtPathfile(i) != target)
            continue;
        if (untagged(undos->ItemSrcPathfile(i)) == untaggedSource)
            return true;
        recorded = true;
    }
    // A file no level accounts for is this photo's only when it holds the same picture.
    return !recorded && plainCopy && sameBytes(target, currentSource);
}

QString ForPhoto(const QString &target, const QString &untaggedSource, const QString &currentSource, bool plainCopy,
                 const clsUndos *undos)
{
    if (!QFileInfo::exists(target) || IsCopyOf(target, untaggedSource, currentSource, plainCopy, undos))
        return target;
    return DistinctName(target);
}

} // namespace quillet::CopyTargets

#include "sync/foreignpath.h"

#include <QDir>
#include <QFileInfo>

namespace quillet {

namespace {

// The canonical form of the longest existing prefix of `path`, with the missing rest appended.
// Empty when an existing element is a dangling symbolic link (its target cannot be known to stay
// inside, and writing through it would create a file wherever it points).
QString resolvedForm(const QString &path)
{
    QString existing = path;
    QStringList missing;
    for (;;) {
        QFileInfo info(existing);
        if (info.isSymLink() && !info.exists())
            return QString(); // dangling link
        if (info.exists())
            break;
        const int slash = existing.lastIndexOf(QLatin1Char('/'));
        if (slash <= 0)
            return QString();
        missing.prepend(existing.mid(slash + 1));
        existing.truncate(slash);
    }
    QString canonical = QFileInfo(existing).canonicalFilePath();
    if (canonical.isEmpty())
        return QString();
    for (const QString &m : std::as_const(missing))
        canonical += QLatin1Char('/') + m;
    return canonical;
}

bool within(const QString &canonicalBase, const QString &resolved)
{
    if (resolved == canonicalBase)
        return true;
    const QString prefix = canonicalBase.endsWith(QLatin1Char('/')) ? canonicalBase : canonicalBase + QLatin1Char('/');
    return resolved.startsWith(prefix);
}

} // namespace

bool ForeignPath::isInside(const QString &baseDir, const QString &path)
{
    const QString base = QFileInfo(baseDir).canonicalFilePath();
    if (base.isEmpty())
        return false;
    const QString resolved = resolvedForm(QDir::cleanPath(path));
    return !resolved.isEmpty() && within(base, resolved);
}

ForeignPath ForeignPath::resolve(const QString &baseDir, const QString &relative)
{
    ForeignPath result;
    auto refuse = [&result](const QString &why) {
        result.m_path.clear();
        result.m_refusal = why;
        return result;
    };
    if (baseDir.isEmpty())
        return refuse(QStringLiteral("no base folder"));
    const QString base = QFileInfo(baseDir).canonicalFilePath();
    if (base.isEmpty())
        return refuse(QStringLiteral("base folder %1 does not exist").arg(baseDir));
    if (relative.isEmpty())
        return refuse(QStringLiteral("empty path"));
    for (const QChar c : relative) {
        if (c.unicode() < 0x20 || c.unicode() == 0x7f)
            return refuse(QStringLiteral("control character in path"));
    }
    if (relative.startsWith(QLatin1Char('\\')) || relative.startsWith(QLatin1Char('/')))
        return refuse(QStringLiteral("absolute path"));
    if (relative.size() >= 2 && relative.at(1) == QLatin1Char(':'))
        return refuse(QStringLiteral("drive letter in path"));
    if (relative.contains(QLatin1Char(':')))
        return refuse(QStringLiteral("':' in path"));

    QString rel = relative;
    rel.replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (rel.endsWith(QLatin1Char('/')))
        rel.chop(1);
    const QStringList segments = rel.split(QLatin1Char('/'));
    for (const QString &s : segments) {
        if (s.isEmpty())
            return refuse(QStringLiteral("empty path segment"));
        if (s == QLatin1String(".") || s == QLatin1String(".."))
            return refuse(QStringLiteral("'%1' segment").arg(s));
    }

    QString native = QDir::cleanPath(baseDir);
    for (const QString &s : segments)
        native += QLatin1Char('/') + s;

    // Symbolic links: every existing element on the way must stay inside the base.
    QString walk = QDir::cleanPath(baseDir);
    for (const QString &s : segments) {
        walk += QLatin1Char('/') + s;
        QFileInfo info(walk);
        if (!info.isSymLink())
            continue;
        if (!info.exists())
            return refuse(QStringLiteral("dangling symbolic link %1").arg(walk));
        if (!within(base, info.canonicalFilePath()))
            return refuse(QStringLiteral("symbolic link %1 leads outside %2").arg(walk, baseDir));
    }
    const QString resolved = resolvedForm(native);
    if (resolved.isEmpty() || !within(base, resolved))
        return refuse(QStringLiteral("resolves outside %1").arg(baseDir));

    result.m_path = native;
    return result;
}

} // namespace quillet

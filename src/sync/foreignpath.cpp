#include "sync/foreignpath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

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

ForeignBase::ForeignBase(const QString &baseDir)
    : m_dir(baseDir)
    , m_clean(baseDir.isEmpty() ? QString() : QDir::cleanPath(baseDir))
{
}

const QString &ForeignBase::canonical()
{
    struct stat st {};
    if (m_dir.isEmpty() || ::stat(QFile::encodeName(m_dir).constData(), &st) != 0) {
        m_canonical.clear();
        return m_canonical;
    }
    if (m_canonical.isEmpty() || quint64(st.st_dev) != m_device || quint64(st.st_ino) != m_inode) {
        m_canonical = QFileInfo(m_dir).canonicalFilePath();
        // Kept only when the name still led to the folder that was looked at.
        struct stat again {};
        if (m_canonical.isEmpty() || ::stat(QFile::encodeName(m_canonical).constData(), &again) != 0
            || again.st_dev != st.st_dev || again.st_ino != st.st_ino) {
            m_canonical.clear();
            return m_canonical;
        }
        m_device = quint64(st.st_dev);
        m_inode = quint64(st.st_ino);
    }
    return m_canonical;
}

bool ForeignPath::isInside(const QString &baseDir, const QString &path)
{
    return ForeignBase(baseDir).isInside(path);
}

bool ForeignBase::isInside(const QString &path)
{
    const QString &base = canonical();
    if (base.isEmpty())
        return false;
    const QString resolved = resolvedForm(QDir::cleanPath(path));
    return !resolved.isEmpty() && within(base, resolved);
}

ForeignPath ForeignPath::resolve(const QString &baseDir, const QString &relative)
{
    return ForeignBase(baseDir).resolve(relative);
}

ForeignPath ForeignBase::resolve(const QString &relative)
{
    ForeignPath result;
    auto refuse = [&result](const QString &why) {
        result.m_path.clear();
        result.m_refusal = why;
        return result;
    };
    if (m_dir.isEmpty())
        return refuse(QStringLiteral("no base folder"));
    const QString &base = canonical();
    if (base.isEmpty())
        return refuse(QStringLiteral("base folder %1 does not exist").arg(m_dir));
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

    QString native = m_clean;
    for (const QString &s : segments)
        native += QLatin1Char('/') + s;

    // Symbolic links: every existing element on the way must stay inside the base.
    QString walk = m_clean;
    bool linked = false;
    for (const QString &s : segments) {
        walk += QLatin1Char('/') + s;
        QFileInfo info(walk);
        if (!info.isSymLink())
            continue;
        if (!info.exists())
            return refuse(QStringLiteral("dangling symbolic link %1").arg(walk));
        if (!within(base, info.canonicalFilePath()))
            return refuse(QStringLiteral("symbolic link %1 leads outside %2").arg(walk, m_dir));
        linked = true;
    }
    // Without a link on the way (and no "." or ".." segments), the path is the base's folder and
    // the segments as written: only a link needs the path resolved as a whole.
    if (linked) {
        const QString resolved = resolvedForm(native);
        if (resolved.isEmpty() || !within(base, resolved))
            return refuse(QStringLiteral("resolves outside %1").arg(m_dir));
    }

    result.m_path = native;
    return result;
}

} // namespace quillet

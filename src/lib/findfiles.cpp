#include "findfiles.h"

#include "error.h"

#include <QDir>

namespace quillet {

bool lib_clsFindFiles::FindFirstFile(const QString &path, const QString &pattern, bool recurse)
{
    QString folder = path;
    QString pat = pattern;
    if (pat.isEmpty()) {
        const int slash = path.lastIndexOf(QLatin1Char('/'));
        folder = slash < 0 ? QStringLiteral(".") : path.left(slash);
        pat = path.mid(slash + 1);
    }
    if (pat.isEmpty() || pat == QLatin1String("*.*"))
        pat = QStringLiteral("*");
    m_pattern = QRegularExpression(QRegularExpression::wildcardToRegularExpression(pat),
                                   QRegularExpression::CaseInsensitiveOption);
    m_recurse = recurse;
    m_levels.clear();
    m_fullDir.clear();
    m_start = QDir::cleanPath(QFileInfo(folder).absoluteFilePath());
    if (!QFileInfo(m_start).isDir())
        return false;
    pushLevel(m_start);
    return FindNextFile();
}

void lib_clsFindFiles::pushLevel(const QString &path)
{
    if (m_levels.size() >= kMaxLevels)
        throw Error(kLibErrorNumber, QStringLiteral("Lib09.lib_clsFindFiles"),
                    QStringLiteral("Too many dir levels (") + QString::number(m_levels.size() + 1)
                        + QLatin1Char(')'));
    Level level;
    level.path = path;
    level.entries = QDir(path).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System,
                                             QDir::Name | QDir::IgnoreCase);
    m_levels.append(std::move(level));
}

bool lib_clsFindFiles::FindNextFile()
{
    while (!m_levels.isEmpty()) {
        Level &top = m_levels.last();
        if (top.next >= top.entries.size()) {
            m_levels.removeLast();
            continue;
        }
        const QFileInfo entry = top.entries.at(top.next++);
        const int level = int(m_levels.size());
        if (entry.isDir()) {
            const bool wanted = (m_searchType & Dirs) && matches(entry.fileName());
            if (wanted)
                setCurrent(entry, level);
            if (m_recurse && !entry.isSymLink())
                pushLevel(entry.absoluteFilePath());
            if (wanted)
                return true;
        } else if ((m_searchType & Files) && matches(entry.fileName())) {
            setCurrent(entry, level);
            return true;
        }
    }
    return false;
}

void lib_clsFindFiles::CloseCurrentFindLevel()
{
    if (!m_levels.isEmpty())
        m_levels.removeLast();
}

void lib_clsFindFiles::setCurrent(const QFileInfo &entry, int level)
{
    const QString fullDir = entry.absolutePath();
    m_dirChanged = fullDir != m_fullDir;
    m_fullDir = fullDir;
    m_file = entry.fileName();
    m_fullFile = entry.absoluteFilePath();
    m_dir = fullDir.size() > m_start.size() ? fullDir.mid(m_start.size() + 1) : QString();
    m_isDir = entry.isDir();
    m_level = level;
}

} // namespace quillet

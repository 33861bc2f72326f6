#include "findfiles.h"

#include "error.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace quillet {

namespace {

QString fullPath(const QString &folder, const QString &name)
{
    if (folder.endsWith(QLatin1Char('/')))
        return folder + name;
    return folder + QLatin1Char('/') + name;
}

} // namespace

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
    m_matchAll = pat == QLatin1String("*");
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

// The folder's entries read straight from the system, without the stat of every entry (and the
// objects) a QFileInfo list costs: a Source Dir of 20,000 files is walked on every load. Hidden
// entries (a name starting with ".") are left out; links and special files are kept. Name order
// ignoring case, as the file managers show a folder: names compared in lower case, and names that
// differ only in case in their own order. A folder that cannot be read lists nothing.
void lib_clsFindFiles::pushLevel(const QString &path)
{
    if (m_levels.size() >= kMaxLevels)
        throw Error(kLibErrorNumber, QStringLiteral("Lib09.lib_clsFindFiles"),
                    QStringLiteral("Too many dir levels (") + QString::number(m_levels.size() + 1)
                        + QLatin1Char(')'));
    Level level;
    level.path = path;
    struct Keyed
    {
        QString key;
        Entry entry;
    };
    QList<Keyed> found;
    if (DIR *const dir = ::opendir(QFile::encodeName(path).constData())) {
        const int handle = ::dirfd(dir);
        while (const dirent *e = ::readdir(dir)) {
            const char *const name = e->d_name;
            if (name[0] == '.')
                continue;
            Entry entry;
            entry.name = QFile::decodeName(name);
            unsigned char type = e->d_type;
            struct stat st {};
            if (type == DT_UNKNOWN && ::fstatat(handle, name, &st, AT_SYMLINK_NOFOLLOW) == 0)
                type = S_ISLNK(st.st_mode) ? DT_LNK : S_ISDIR(st.st_mode) ? DT_DIR : DT_REG;
            entry.isLink = type == DT_LNK;
            entry.isDir = entry.isLink ? ::fstatat(handle, name, &st, 0) == 0 && S_ISDIR(st.st_mode) : type == DT_DIR;
            found.append({entry.name.toLower(), std::move(entry)});
        }
        ::closedir(dir);
    }
    std::sort(found.begin(), found.end(), [](const Keyed &a, const Keyed &b) {
        const int order = a.key.compare(b.key);
        return order != 0 ? order < 0 : a.entry.name < b.entry.name;
    });
    level.entries.reserve(found.size());
    for (Keyed &k : found)
        level.entries.append(std::move(k.entry));
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
        const Entry &entry = top.entries.at(top.next++);
        const int level = int(m_levels.size());
        if (entry.isDir) {
            const bool wanted = (m_searchType & Dirs) && matches(entry.name);
            if (wanted)
                setCurrent(entry, top.path, level);
            if (m_recurse && !entry.isLink)
                pushLevel(fullPath(top.path, entry.name)); // `top` and `entry` go stale here
            if (wanted)
                return true;
        } else if ((m_searchType & Files) && matches(entry.name)) {
            setCurrent(entry, top.path, level);
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

// `folder` is the walked folder the entry was listed from.
void lib_clsFindFiles::setCurrent(const Entry &entry, const QString &folder, int level)
{
    m_dirChanged = folder != m_fullDir;
    m_fullDir = folder;
    m_file = entry.name;
    m_fullFile = fullPath(folder, entry.name);
    m_dir = folder.size() > m_start.size() ? folder.mid(m_start.size() + 1) : QString();
    m_isDir = entry.isDir;
    m_level = level;
}

} // namespace quillet

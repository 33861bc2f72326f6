#pragma once

#include <QList>
#include <QRegularExpression>
#include <QString>

namespace quillet {

// Walks a folder, optionally through all its subfolders, handing back one matching entry at a
// time. Entries of a folder come in name order; a subfolder's entries follow the subfolder itself
// (depth first). "." and "..", and hidden entries, are never returned; linked folders are not
// walked into.
class lib_clsFindFiles
{
public:
    enum SearchTypes { Files = 1, Dirs = 2, FilesAndDirs = 3 };

    // Starts a walk; with an empty pattern, `path` is split into its folder and its pattern.
    // "*.*" matches every name, with or without an extension. False when nothing matched or the
    // folder does not exist.
    bool FindFirstFile(const QString &path, const QString &pattern = QString(), bool recurse = false);
    bool FindNextFile();
    // Abandons the folder being walked and continues in its parent.
    void CloseCurrentFindLevel();

    int SearchType() const { return m_searchType; }
    void setSearchType(int type) { m_searchType = type; }

    const QString &File() const { return m_file; }
    // Folder of the current entry relative to the start folder ("" for the start folder itself).
    const QString &Dir() const { return m_dir; }
    const QString &FullDir() const { return m_fullDir; }
    const QString &FullFile() const { return m_fullFile; }
    bool IsDir() const { return m_isDir; }
    // True when the current entry is the first one returned from its folder.
    bool DirChanged() const { return m_dirChanged; }
    bool RecursedDir() const { return m_recurse; }
    // Depth of the current entry: 1 for the start folder.
    int CurrentFindLevel() const { return m_level; }
    QString CurrentFindLevelFullPath() const { return m_levels.isEmpty() ? QString() : m_levels.last().path; }

    static constexpr int kMaxLevels = 9999;

private:
    struct Entry
    {
        QString name;
        bool isDir = false;  // a folder, or a link to one
        bool isLink = false; // a symbolic link
    };
    struct Level
    {
        QString path; // absolute and clean
        QList<Entry> entries;
        int next = 0;
    };

    void pushLevel(const QString &path);
    bool matches(const QString &name) const { return m_matchAll || m_pattern.match(name).hasMatch(); }
    void setCurrent(const Entry &entry, const QString &folder, int level);

    QList<Level> m_levels;
    QString m_start;
    QRegularExpression m_pattern;
    bool m_matchAll = false; // "*": no name needs the expression
    bool m_recurse = false;
    int m_searchType = Files;

    QString m_file, m_dir, m_fullDir, m_fullFile;
    bool m_isDir = false;
    bool m_dirChanged = false;
    int m_level = 0;
};

} // namespace quillet

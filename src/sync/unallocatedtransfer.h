#pragma once

#include <QString>
#include <QStringList>
#include <functional>

namespace quillet {

class FamilyDatabase;
class Workspace;

// Carries the unallocated photos (and the family database with them) between PCs through
// join(BatchXfrDir, "Unallocated"). The export copies, the import moves: the photos end up in the
// other PC's Source Dir below the same sub-folders, and the transfer folder is empty again.
class UnallocatedTransfer
{
public:
    // `refresh` is the main window's Refresh: reload the lists and replay waiting batchfiles.
    UnallocatedTransfer(FamilyDatabase &db, std::function<void()> refresh);

    // The full paths of the photos the source list shows as unallocated ("BLACK"), in list order.
    static QStringList UnallocatedPhotos(Workspace &ws);

    // External > Export unallocated files. Returns the summary shown to the user, empty when
    // nothing was done (no Batch Transfer Dir, a declined question, a cancel).
    QString ExportUnalloc(const QStringList &photos);
    // External > Import unallocated files. Returns the summary shown, empty when nothing was done.
    QString ImportUnalloc();

    static QString FolderName() { return QStringLiteral("Unallocated"); }
    static QString FlagFileName() { return QStringLiteral("_Flag_SrcDirChg.log"); }
    // One import takes at most this many files; the rest wait for the next run.
    static constexpr int kMaxImportFiles = 10000;

private:
    struct Item
    {
        QString full;   // in the import folder
        QString target; // in the Source Dir
        bool duplicate = false;
    };

    bool exportPhotos(const QStringList &photos, const QString &srcDir, const QString &folder);
    QList<Item> listImport(const QString &folder, const QString &srcDir, int &waiting);
    bool moveItems(const QList<Item> &items, bool deleteDuplicates, const QString &folder);

    FamilyDatabase &m_db;
    std::function<void()> m_refresh;
};

} // namespace quillet

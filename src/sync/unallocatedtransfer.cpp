#include "unallocatedtransfer.h"

#include "batchfiletransfer.h"
#include "databasetransfer.h"
#include "foreignpath.h"
#include "transferfolders.h"
#include "transfermove.h"
#include "transferrefusals.h"

#include "app/settingsstore.h"
#include "imaging/copyresizedimage.h"
#include "lib/apppaths.h"
#include "lib/appstate.h"
#include "lib/deferredsync.h"
#include "lib/errorhandler.h"
#include "lib/fileutils.h"
#include "lib/texthelpers.h"
#include "lib/userprompt.h"
#include "workspace/workspace.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QSet>

namespace quillet {

namespace {

// A file name without its extension ("IMG_0001" of "IMG_0001.JPG").
QString bareName(const QString &fileName)
{
    const int dot = fileName.lastIndexOf(QLatin1Char('.'));
    return dot > 0 ? fileName.left(dot) : fileName;
}

// Every text that stands before an "(#" in a name directly in the Source Dir, in lower case: an
// imported photo whose bare name is one of them was imported and allocated here already.
QSet<QString> allocatedStems(const QString &srcDir)
{
    QSet<QString> stems;
    for (const QString &name : QDir(srcDir).entryList(QDir::Files | QDir::Hidden)) {
        for (int at = name.indexOf(QLatin1String("(#")); at >= 0; at = name.indexOf(QLatin1String("(#"), at + 1))
            stems.insert(name.left(at).toLower());
    }
    return stems;
}

// A copy cut off by a crash leaves its temporary (".~NN"); it is never a photo to import.
bool isCopyTemporary(const QString &name)
{
    static const QRegularExpression temp(QStringLiteral("\\.~\\d\\d$"));
    return temp.match(name).hasMatch();
}

// The folder of the export that receives the photos of one folder of the Source Dir, made with
// its parents; each folder is checked and made once per export. The transfer folder is shared
// with other machines: a sub-folder there that is a link leading elsewhere must not receive the
// copies. Empty, with the reason in `why`, when it is refused.
QString exportFolderFor(const QString &folder, const QString &relativeDir, QHash<QString, QString> &made, QString &why)
{
    const auto known = made.constFind(relativeDir);
    if (known != made.constEnd())
        return known.value();
    QString dir = folder;
    if (!relativeDir.isEmpty() && relativeDir != QLatin1String(".")) {
        const ForeignPath resolved = ForeignPath::resolve(folder, relativeDir + QLatin1Char('/'));
        if (!resolved.ok()) {
            why = resolved.refusal();
            return QString();
        }
        dir = resolved.path();
    }
    lib_MakePath(dir);
    made.insert(relativeDir, dir);
    return dir;
}

QString summary(int count, bool database, const QString &done, const QString &dbDone)
{
    QString text = lib_FormatCount(count, QStringLiteral("file")) + done;
    if (database)
        text += QStringLiteral("\r\n") + dbDone;
    lib_MsgInfo(text);
    return text;
}

} // namespace

UnallocatedTransfer::UnallocatedTransfer(FamilyDatabase &db, std::function<void()> refresh)
    : m_db(db)
    , m_refresh(std::move(refresh))
{
}

QStringList UnallocatedTransfer::UnallocatedPhotos(Workspace &ws)
{
    QStringList photos;
    const SourceListModel &list = ws.sourceList();
    for (int p = 0; p < list.rowCount(); ++p) {
        if (list.at(p).tag.compare(QLatin1String("BLACK"), Qt::CaseInsensitive) == 0)
            photos << ws.srcFiles().row(list.at(p).row).PathFile;
    }
    return photos;
}

QString UnallocatedTransfer::ExportUnalloc(const QStringList &photos)
{
    const QString srcDir = ReadSetting(QStringLiteral("SrcDir"));
    const QString xfr = ReadSetting(QStringLiteral("BatchXfrDir"));
    if (xfr.isEmpty())
        return QString();
    const QString folder = lib_JoinPath(xfr, FolderName());
    if (!lib_DirExists(folder)) {
        if (!TransferFolders::DriveExists(folder))
            return QString();
        if (!lib_MsgYesNo(QStringLiteral("Batch Transfer Dir (") + folder
                          + QStringLiteral(") not found. Do you want to create it?")))
            return QString();
        lib_MakePath(folder);
    }
    BusyPointer busy;
    {
        // The originals stay on this PC: the copies can be flushed to the disk once at the end.
        DeferredSync sync;
        if (!exportPhotos(photos, srcDir, folder))
            return QString(); // cancelled through the progress window: no summary, no database
    }
    const bool database = ExportFamilyDatabase(m_db);
    const QString flag = AppPaths::dataFile(FlagFileName());
    if (QFileInfo::exists(flag))
        TransferMoveFile(flag, lib_JoinPath(folder, FlagFileName()));
    return summary(int(photos.size()), database, QStringLiteral(" exported"), QStringLiteral("Database exported"));
}

bool UnallocatedTransfer::exportPhotos(const QStringList &photos, const QString &srcDir, const QString &folder)
{
    const bool resize = ReadSettingBool(QStringLiteral("UnallocResize"));
    const qint16 sizeCode = resize ? qint16(ReadSettingInt(QStringLiteral("UnallocResizeMD"))) : 0;
    const qint16 qualityCode = resize ? qint16(ReadSettingInt(QStringLiteral("UnallocResizeQ"))) : 0;
    UserPrompt &port = prompt();
    appState().cancel = false;
    port.progressShow(QStringLiteral("Exporting unallocated..."));
    port.progressInit(int(photos.size()));
    TransferRefusals refused;
    QHash<QString, QString> madeDirs; // relative folder -> its folder in the export, made
    for (int i = 0; i < photos.size(); ++i) {
        if (appState().cancel) {
            port.progressHide();
            return false;
        }
        const QString &photo = photos.at(i);
        QString why;
        const QString dir = exportFolderFor(folder, QDir(srcDir).relativeFilePath(lib_DirPart(photo)), madeDirs, why);
        const QString target = dir.isEmpty() ? QString() : lib_JoinPath(dir, lib_FilePart(photo));
        if (dir.isEmpty()) {
            refused.add(photo, why);
        } else if (!QFileInfo::exists(target) && !CopyResizedImage(photo, target, sizeCode, qualityCode)) {
            // The user chose to cancel after a failed copy: the photos end here, the database
            // export and the summary still follow.
            appState().cancel = false;
            break;
        }
        port.progressUpdate(i + 1, i + 1);
    }
    port.progressHide();
    refused.report(srcDir);
    return true;
}

QString UnallocatedTransfer::ImportUnalloc()
{
    const QString xfr = ReadSetting(QStringLiteral("BatchXfrDir"));
    const QString srcDir = ReadSetting(QStringLiteral("SrcDir"));
    if (xfr.isEmpty())
        return QString();
    const QString folder = lib_JoinPath(xfr, FolderName());
    const QString warning = BatchfileTransfer::TakeSrcDirChangeWarning(folder);
    if (!warning.isEmpty())
        lib_MsgWarning(warning);
    if (!TransferFolders::AskImportFiles(folder, srcDir))
        return QString();
    if (!lib_DirExists(folder)) {
        if (TransferFolders::DriveExists(folder))
            lib_MsgWarning(QStringLiteral("Batch Transfer Dir (") + folder + QStringLiteral(") does not exist"));
        return QString();
    }
    if (!TransferFolders::SourceDirExists(srcDir))
        return QString();
    BusyPointer busy;
    int waiting = 0;
    const QList<Item> items = listImport(folder, srcDir, waiting);
    bool deleteDuplicates = false;
    if (std::any_of(items.begin(), items.end(), [](const Item &i) { return i.duplicate; })) {
        deleteDuplicates = lib_MsgYesNo(QStringLiteral("Some of the files appear to have been imported and allocated "
                                                       "already. Do you wish to import new files only and delete the "
                                                       "duplicates?"));
        if (!deleteDuplicates && !lib_MsgYesNo(QStringLiteral("Do you wish to import all the files again?")))
            return QString();
    }
    if (!moveItems(items, deleteDuplicates, folder))
        return QString();
    const bool database = ImportFamilyDatabase(m_db);
    if (m_refresh)
        m_refresh();
    QString text = summary(int(items.size()), database, QStringLiteral(" imported"), QStringLiteral("Database imported"));
    if (waiting > 0)
        lib_MsgInfo(lib_FormatCount(waiting, QStringLiteral("more file")) + QStringLiteral(" wait in ") + folder
                    + QStringLiteral(": please run the import again."));
    return text;
}

QList<UnallocatedTransfer::Item> UnallocatedTransfer::listImport(const QString &folder, const QString &srcDir,
                                                                 int &waiting)
{
    const QSet<QString> stems = allocatedStems(srcDir);
    // Links are listed, not followed: each one is refused by name, so that a link in the transfer
    // folder can neither bring in a file from elsewhere nor lead the walk out of the folder.
    QStringList entries;
    QDirIterator it(folder, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        entries << it.next();
    entries.sort(); // one listing order on every machine: by path
    QList<Item> items;
    TransferRefusals refused;
    for (const QString &full : entries) {
        const QFileInfo info(full);
        const QString name = info.fileName();
        if (info.isSymLink() || !ForeignPath::isInside(folder, lib_DirPart(full))) {
            refused.add(full, QStringLiteral("it is a link to another place"));
            continue;
        }
        if (info.isDir() || isCopyTemporary(name) || (info.path() == QDir::cleanPath(folder) && name == FlagFileName()))
            continue;
        const ForeignPath target = ForeignPath::resolve(srcDir, QDir(folder).relativeFilePath(full));
        const QString problem = target.ok() ? TransferNameProblem(target.path()) : target.refusal();
        if (!problem.isEmpty()) {
            refused.add(full, problem);
            continue;
        }
        if (items.size() == kMaxImportFiles) {
            ++waiting;
            continue;
        }
        items.append({full, target.path(), stems.contains(bareName(name).toLower())});
    }
    refused.report(folder);
    return items;
}

bool UnallocatedTransfer::moveItems(const QList<Item> &items, bool deleteDuplicates, const QString &folder)
{
    UserPrompt &port = prompt();
    appState().cancel = false;
    port.progressShow(QStringLiteral("Importing unallocated..."));
    port.progressInit(int(items.size()));
    TransferRefusals failed;
    QSet<QString> emptied;
    for (int i = 0; i < items.size(); ++i) {
        if (appState().cancel) {
            port.progressHide();
            failed.report(folder);
            return false;
        }
        const Item &item = items.at(i);
        try {
            if (item.duplicate && deleteDuplicates) {
                lib_KillFile(item.full);
            } else {
                lib_MakePath(lib_DirPart(item.target));
                TransferMoveFile(item.full, item.target);
            }
            emptied.insert(lib_DirPart(item.full));
        } catch (const Error &e) {
            failed.add(item.full, e.description().section(QStringLiteral("\r\n"), 1, 1));
        }
        port.progressUpdate(i + 1, i + 1);
    }
    port.progressHide();
    // The sub-folders the photos came from go too once empty (rmdir leaves any other alone).
    QStringList dirs(emptied.begin(), emptied.end());
    std::sort(dirs.begin(), dirs.end(), [](const QString &a, const QString &b) { return a.size() > b.size(); });
    const QString root = QDir::cleanPath(folder);
    for (QString dir : dirs) {
        while (QDir::cleanPath(dir) != root && dir.startsWith(root) && QDir().rmdir(dir))
            dir = lib_DirPart(dir);
    }
    failed.report(folder);
    return true;
}

} // namespace quillet

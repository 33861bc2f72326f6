#include "batchfiletransfer.h"

#include "batchfilejournal.h"
#include "batchfilename.h"
#include "foreignpath.h"

#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/debuglog.h"
#include "lib/error.h"
#include "lib/errorhandler.h"
#include "lib/fileutils.h"
#include "lib/texthelpers.h"
#include "lib/userprompt.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

namespace quillet {

namespace {

const QString kFlagFile = QStringLiteral("_Flag_SrcDirChg.log");

QFileInfoList batchfilesIn(const QString &folder)
{
    QFileInfoList found;
    const QFileInfoList entries = QDir(folder).entryInfoList(QDir::Files | QDir::System, QDir::Name);
    for (const QFileInfo &entry : entries) {
        if (BatchfileName::isConflictCopy(entry.fileName())) {
            DebugLog(QStringLiteral("   ") + entry.absoluteFilePath()
                     + QStringLiteral(" is a conflict copy made by a folder-sync tool; left alone"));
            continue;
        }
        if (BatchfileName::isBatchfile(entry.fileName()))
            found << entry;
    }
    return found;
}

// Moves a file without overwriting: a copy through a temporary, then the source is deleted.
// False when a file of that name is at the destination already or the copy failed (reported).
bool moveNoOverwrite(const QString &source, const QString &target, const QString &procName)
{
    try {
        return lib_CopyFile(source, target, false) && lib_KillFile(source, true);
    } catch (const Error &e) {
        lib_ErrorHandler(procName, e);
        return false;
    }
}

// A batchfile another program is still writing (a folder-sync tool fetching it): empty, or not
// ending with a line end as every complete batchfile does.
bool stillArriving(const QFileInfo &file)
{
    QFile f(file.absoluteFilePath());
    if (file.size() == 0 || !f.open(QIODevice::ReadOnly) || !f.seek(file.size() - 1))
        return true;
    return f.read(1) != "\n";
}

bool ensureTransferFolder(const QString &folder, bool offerToCreate)
{
    if (QFileInfo(folder).isDir())
        return true;
    const QString drive = lib_DrivePart(folder);
    if (!QFileInfo(drive).isDir()) {
        lib_MsgWarning(QStringLiteral("Batch Transfer Dir drive (") + drive + QStringLiteral(") does not exist"));
        return false;
    }
    if (!offerToCreate) {
        lib_MsgWarning(QStringLiteral("Batch Transfer Dir (") + folder + QStringLiteral(") not found."));
        return false;
    }
    if (!lib_MsgYesNo(QStringLiteral("Batch Transfer Dir (") + folder
                      + QStringLiteral(") not found. Do you want to create it?")))
        return false;
    if (lib_MakePath(folder))
        return true;
    lib_MsgWarning(QStringLiteral("Could not create the folder ") + folder
                   + QStringLiteral(". Check the Batch Transfer Dir in the settings and that the disk is writable."));
    return false;
}

} // namespace

QString BatchfileTransfer::transferFolder()
{
    const QString xfr = ReadSetting(QStringLiteral("BatchXfrDir"));
    return xfr.isEmpty() ? QString() : lib_JoinPath(xfr, QStringLiteral("Batchfiles"));
}

void BatchfileTransfer::summarise(const QString &summary)
{
    if (status)
        status(summary);
    lib_MsgInfo(summary);
}

QString BatchfileTransfer::ExportBatchfiles()
{
    const QString folder = transferFolder();
    if (folder.isEmpty() || !ensureTransferFolder(folder, true))
        return QString();
    BusyPointer busy;
    const QString pcName = ReadSetting(QStringLiteral("PCname"));
    if (QFileInfo::exists(Batchfile::CurrentName(pcName)))
        Batchfile::SetBatchfileName(true);
    const QString doneFolder = BatchfileName::doneFolder();
    lib_MakePath(doneFolder);
    const QDateTime now = QDateTime::currentDateTime();
    int count = 0;
    int leftBehind = 0;
    for (const QFileInfo &file : batchfilesIn(AppPaths::dataDir())) {
        if (!BatchfileName::belongsTo(file.fileName(), pcName, Qt::CaseInsensitive))
            continue; // another PC's, waiting to be replayed here
        ++count;
        try {
            lib_CopyFile(file.absoluteFilePath(),
                         BatchfileName::uniqueDonePath(doneFolder, file.fileName(), now), false);
        } catch (const Error &e) {
            lib_ErrorHandler(QStringLiteral("mnuExportBatchfiles"), e);
        }
        if (!moveNoOverwrite(file.absoluteFilePath(), lib_JoinPath(folder, file.fileName()),
                             QStringLiteral("mnuExportBatchfiles"))) {
            ++leftBehind;
            DebugLog(QStringLiteral("   Not exported ") + file.absoluteFilePath()
                     + QStringLiteral(": a file of that name waits in ") + folder);
        }
    }
    // Family database: ExportFamilyDatabase runs here (wired where the database transfer lives).
    const bool databaseExported = exportDatabase && exportDatabase();
    const QString flag = AppPaths::dataFile(kFlagFile);
    if (QFileInfo::exists(flag))
        moveNoOverwrite(flag, lib_JoinPath(folder, kFlagFile), QStringLiteral("mnuExportBatchfiles"));

    QString summary = lib_FormatCount(count, QStringLiteral("file")) + QStringLiteral(" exported");
    if (databaseExported)
        summary += QStringLiteral("\r\nDatabase exported");
    if (leftBehind > 0)
        summary += QStringLiteral("\r\n") + lib_FormatCount(leftBehind, QStringLiteral("file"))
            + QStringLiteral(" left in ") + AppPaths::dataDir()
            + QStringLiteral(": a file of the same name is still waiting in the transfer folder.");
    summarise(summary);
    return summary;
}

QString BatchfileTransfer::TakeSrcDirChangeWarning(const QString &folder)
{
    const QString flag = lib_JoinPath(folder, kFlagFile);
    if (!QFileInfo(flag).isFile())
        return QString();
    QStringList lines;
    QFile f(flag);
    if (f.open(QIODevice::ReadOnly)) {
        // Another machine wrote it: two short lines are all that is read.
        for (int i = 0; i < 2; ++i)
            lines << QString::fromUtf8(f.readLine(4096)).trimmed();
        f.close();
    }
    lib_KillFile(flag, true);
    return QStringLiteral("** WARNING **\r\nIt appears the Source Dir was changed on the other computer.\r\n")
        + lines.value(0) + QStringLiteral(" --> ") + lines.value(1)
        + QStringLiteral("\r\nPlease check the following dialogs carefully in case you need to change your "
                         "Source Dir before continuing.");
}

QString BatchfileTransfer::ImportBatchfiles()
{
    const QString folder = transferFolder();
    if (folder.isEmpty() || !ensureTransferFolder(folder, false))
        return QString();
    const QString warning = TakeSrcDirChangeWarning(folder);
    if (!warning.isEmpty())
        lib_MsgWarning(warning);
    BusyPointer busy;
    const QString pcName = ReadSetting(QStringLiteral("PCname"));
    int count = 0;
    for (const QFileInfo &file : batchfilesIn(folder)) {
        if (BatchfileName::belongsTo(file.fileName(), pcName, Qt::CaseInsensitive))
            continue; // this PC's own export, not collected yet by the other PC
        if (file.isSymLink() || stillArriving(file)) {
            DebugLog(QStringLiteral("   Not imported ") + file.absoluteFilePath()
                     + QStringLiteral(": a link, or still being written; left for the next import"));
            continue;
        }
        const ForeignPath target = ForeignPath::resolve(AppPaths::dataDir(), file.fileName());
        if (!target.ok()) {
            DebugLog(QStringLiteral("   Not imported ") + file.absoluteFilePath() + QStringLiteral(": ")
                     + target.refusal());
            continue;
        }
        ++count;
        const qint64 size = file.size();
        const QDateTime modified = file.lastModified();
        try {
            if (!lib_CopyFile(file.absoluteFilePath(), target.path(), false))
                continue; // a file of that name waits here already
            const QFileInfo after(file.absoluteFilePath());
            if (after.size() != size || after.lastModified() != modified) {
                // It grew while it was copied: the copy is incomplete, the original stays.
                QFile::remove(target.path());
                --count;
                continue;
            }
            lib_KillFile(file.absoluteFilePath(), true);
        } catch (const Error &e) {
            lib_ErrorHandler(QStringLiteral("mnuImportBatchfiles"), e);
        }
    }
    // Family database: ImportFamilyDatabase runs here (wired where the database transfer lives).
    const bool databaseImported = importDatabase && importDatabase();
    if (refresh)
        refresh();
    QString summary = lib_FormatCount(count, QStringLiteral("file")) + QStringLiteral(" imported");
    if (databaseImported)
        summary += QStringLiteral("\r\nDatabase imported");
    summarise(summary);
    return summary;
}

} // namespace quillet

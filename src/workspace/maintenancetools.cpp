#include "maintenancetools.h"

#include "srcfiles.h"

#include "app/settingsstore.h"
#include "imaging/clsexifreader.h"
#include "lib/appstate.h"
#include "lib/errorhandler.h"
#include "lib/fileutils.h"
#include "lib/findfiles.h"
#include "lib/texthelpers.h"
#include "lib/userprompt.h"

namespace quillet::MaintenanceTools {

namespace {

const QString kCrLf = QStringLiteral("\r\n");

// A date cut to whole minutes: the file systems and cameras disagree about seconds.
QDateTime toMinute(const QDateTime &d)
{
    return QDateTime(d.date(), QTime(d.time().hour(), d.time().minute()));
}

int countFiles(const QString &folder, bool subfolders)
{
    lib_clsFindFiles finder;
    finder.setSearchType(lib_clsFindFiles::Files);
    int count = 0;
    for (bool found = finder.FindFirstFile(folder, QStringLiteral("*.*"), subfolders); found;
         found = finder.FindNextFile())
        ++count;
    return count;
}

// Sets one file's date when it differs; true when it was changed.
bool syncOne(const QString &path)
{
    const QDateTime taken = clsEXIFreader::DateTaken(path);
    if (!taken.isValid())
        return false;
    if (toMinute(taken) == toMinute(lib_FileDate(path)))
        return false;
    lib_SetFileDate(path, QLatin1Char('M'), taken);
    return true;
}

} // namespace

bool ResetForms()
{
    if (!lib_MsgYesNo(QStringLiteral("This will reset the forms then end the program. Changes take effect when you "
                                     "restart the program.")
                      + kCrLf + QStringLiteral("Continue?")))
        return false;
    ClearFormRects();
    return true;
}

void ClearFormRects()
{
    for (const char *key : {"FormRectMn", "FormRectEP1", "FormRectEP2"})
        WriteSetting(QLatin1String(key), QString());
}

QString SrcFilesText(const SrcFiles &table)
{
    QString text = kCrLf + QStringLiteral("Path\\File,File No FamIDs,Allocated");
    for (int i = 1; i <= table.SrcFilesCount(); ++i) {
        const SrcFiles::Row &row = table.row(i);
        text += kCrLf + row.PathFile + QLatin1Char(',') + row.FileNoFamIDs + QLatin1Char(',')
            + (row.isAllocated() ? QStringLiteral("true") : QStringLiteral("false"));
    }
    return text;
}

bool ConfirmTableComplete(bool systemLoaded)
{
    if (systemLoaded)
        return true;
    return lib_MsgYesNo(QStringLiteral("System has not fully loaded yet so results may not be complete.") + kCrLf
                            + QStringLiteral("Continue anyway?"),
                        0, false);
}

QString SyncResult::text() const
{
    return lib_FormatCount(updated, QStringLiteral("file")) + QStringLiteral(" updated (out of ")
        + QString::number(analysed) + QStringLiteral(" analysed)");
}

SyncResult SyncDatesMfromE(const QString &startDir)
{
    SyncResult result;
    UserPrompt &port = prompt();
    const QString folder = port.browseForFolder(
        startDir, QStringLiteral("This will sync the mod date to the EXIF date for all picture files.") + kCrLf
            + QStringLiteral("Continue?"));
    if (folder.isEmpty())
        return result;
    const bool subfolders = lib_MsgYesNo(QStringLiteral("Include subdirectories?"));
    result.ran = true;

    appState().cancel = false;
    port.progressShow(QStringLiteral("Syncing dates..."));
    port.progressInit(countFiles(folder, subfolders));
    lib_clsFindFiles finder;
    finder.setSearchType(lib_clsFindFiles::Files);
    int position = 0;
    try {
        for (bool found = finder.FindFirstFile(folder, QStringLiteral("*.*"), subfolders);
             found && !appState().cancel; found = finder.FindNextFile()) {
            port.progressUpdate(++position, result.analysed);
            if (!SrcFiles::IsAcceptedName(finder.File()))
                continue;
            ++result.analysed;
            if (syncOne(finder.FullFile()))
                ++result.updated;
        }
    } catch (...) {
        port.progressHide();
        throw;
    }
    port.progressHide();
    return result;
}

} // namespace quillet::MaintenanceTools

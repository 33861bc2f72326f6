#include "transferfolders.h"

#include "lib/errorhandler.h"
#include "lib/fileutils.h"

namespace quillet::TransferFolders {

bool DriveExists(const QString &folder)
{
    if (lib_DirExists(folder))
        return true;
    const QString drive = lib_DrivePart(folder);
    if (!drive.isEmpty() && !lib_DirExists(drive)) {
        lib_MsgWarning(QStringLiteral("Batch Transfer Dir drive (") + drive + QStringLiteral(") does not exist"));
        return false;
    }
    return true;
}

bool AskImportFiles(const QString &folder, const QString &srcDir)
{
    return lib_MsgYesNo(QStringLiteral("Import files from ") + folder + QStringLiteral("  to  ") + srcDir
                        + QStringLiteral("?"));
}

bool SourceDirExists(const QString &srcDir)
{
    if (lib_DirExists(srcDir))
        return true;
    lib_MsgWarning(QStringLiteral("The Source Dir (") + srcDir
                   + QStringLiteral(") does not exist. Please check the Source Dir in Settings > Options."));
    return false;
}

} // namespace quillet::TransferFolders

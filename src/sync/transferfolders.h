#pragma once

#include <QString>

namespace quillet {

// The folder tests and the question every transfer into the Source Dir shares.
namespace TransferFolders {

// The drive test of a transfer folder: when `folder` is missing, shows "Batch Transfer Dir drive
// (...) does not exist" for a volume that is not there (an unplugged disk) and returns false.
// True when the folder exists or only the folder itself is missing.
bool DriveExists(const QString &folder);

// "Import files from <folder>  to  <Source Dir>?"; true for Yes.
bool AskImportFiles(const QString &folder, const QString &srcDir);

// False, after telling the user where to fix it, when the Source Dir is missing: an import would
// have nowhere to put the files.
bool SourceDirExists(const QString &srcDir);

} // namespace TransferFolders
} // namespace quillet

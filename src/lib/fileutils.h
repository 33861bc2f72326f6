#pragma once

#include <QDateTime>
#include <QString>
#include <functional>

namespace quillet {

// The routines through which the program touches the file system. Paths are native ("/").
// Failures report silently and throw Error under the source "Lib09." + the routine's name.

// Deletes a file, to the desktop trash unless `permanently`; a read-only file is made writable and
// deleted. True when the file no longer exists (also when it never did).
bool lib_KillFile(const QString &path, bool permanently = false);
// Creates a folder and every missing parent. True when the folder exists afterwards; when not,
// appState().lastSystemError holds the system's reason.
bool lib_MakePath(const QString &path);

// Called during a copy with the bytes copied so far and the total; returning false cancels it.
using CopyProgress = std::function<bool(qint64 done, qint64 total)>;
// Copies a file safely: through a ".~NN" temporary in the target folder and a rename, so the
// target is the old file or the complete new one. A target ending in "/" is a folder; a source
// holding "*" or "?" copies every matching file into the target folder. Returns false when
// source and target are the same, or the target exists and `overwrite` is false. An existing target
// goes to the trash; the new target keeps the source's dates. Throws Error(kLibErrorNumber) with
// "Failed to copy file" and the details when the copy fails.
bool lib_CopyFile(const QString &source, const QString &target, bool overwrite,
                  const CopyProgress &progress = {});
// Sees each block of a copy on its way, before it is written.
class CopySink
{
public:
    virtual ~CopySink() = default;
    virtual void take(const char *data, qint64 size) = 0;
};
// lib_CopyFile of one file (no "*" or "?"), reading the source once and handing every block
// written to `sink`, so a caller that needs a digest of the copy need not read it again.
// Returns the size of the copy (every byte of which went through `sink`), or -1 where
// lib_CopyFile returns false. Throws as lib_CopyFile does.
qint64 lib_CopyFileThrough(const QString &source, const QString &target, bool overwrite, CopySink &sink);
// The temporary name lib_CopyFile would use for a target: path without extension + ".~NN".
QString lib_TempCopyName(const QString &target, const QString &source);

// Deletes a folder, or only its contents. A relative path, a network path or a volume root is
// refused with its error message (shown with lib_MsgError and `timeout`) and false.
bool lib_DeleteDir(const QString &dir, bool contentsOnly, int timeout = 0, bool permanently = false);

// Which date of a file: 'C' created (birth time where the file system keeps it), 'A' accessed,
// anything else modified. Reading a missing file gives an invalid QDateTime.
QDateTime lib_FileDate(const QString &path, QChar which = QLatin1Char('M'));
// Sets one date of a file. Throws Error when it cannot.
void lib_SetFileDate(const QString &path, QChar which, const QDateTime &date);

bool lib_FileExists(const QString &path);
bool lib_DirExists(const QString &path);
// True when the file cannot be renamed to its own name (it is held open exclusively or the
// folder is not writable).
bool lib_IsFileLocked(const QString &path);

// Joins two path pieces with exactly one separator at the seam.
QString lib_JoinPath(const QString &left, const QString &right);
// The volume a path lives on: "X:" for drive paths; on POSIX /media/<user>/<label>,
// /run/media/<user>/<label>, /mnt/<label>, else "/".
QString lib_DrivePart(const QString &path);
// Everything before the last separator.
QString lib_DirPart(const QString &path);
// The last element.
QString lib_FilePart(const QString &path);
// The path without the file's extension.
QString lib_PathWithoutExt(const QString &path);
// A path relative to `baseDir` (or the current folder) made absolute; "..\" and "../" climb.
QString lib_AbsolutePath(const QString &path, const QString &baseDir = QString());

// Special folders by their shell code: 5 documents, 39 pictures, 35 shared application data.
enum SpecialFolder : int { kFolderDocuments = 5, kFolderAppData = 35, kFolderPictures = 39 };
QString lib_SpecialFolder(int code);
// Expands a leading "<My Pictures>" / "<My Documents>" (any letter case), or with toPlaceholder
// replaces a leading pictures (tested first) or documents folder by its placeholder.
QString ExpandSpecialDir(const QString &path, bool toPlaceholder);

// Choosers through the user-prompt port; empty when cancelled.
QString lib_BrowseForFolder(const QString &startDir, const QString &prompt);
QString lib_OpenFileDialog(const QString &description, const QString &extension, const QString &startDir,
                           const QString &title = QString());
QString lib_SaveFileDialog(const QString &description, const QString &extension, const QString &startDir,
                           const QString &title = QString());

// Starts a program (quotes in the command line honoured). A document instead of a program is
// opened with its default program. With `wait`, waits up to `timeoutSeconds` while letting events
// run and returns the exit code in `exitCode`.
bool lib_RunApplication(const QString &commandLine, bool wait, int timeoutSeconds, int *exitCode = nullptr);

} // namespace quillet

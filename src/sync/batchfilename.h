#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace quillet {

// The naming rules of batchfiles on disk: which files are batchfiles, which PC wrote one, and the
// names of done batchfiles and archive copies in "Batchfiles Done".
namespace BatchfileName {

// The sub-folder of the data folder that keeps done batchfiles and archive copies.
QString doneFolder();

// "_Batchfile_" + anything + ".log", letter case ignored, and not a file that a folder-sync tool
// made (a conflict copy or a temporary). Only such files are ever replayed, imported or exported.
bool isBatchfile(const QString &fileName);
// A conflict copy left by a folder-sync tool (".sync-conflict-", "(conflicted copy", "(Conflict").
bool isConflictCopy(const QString &fileName);

// True when the name is "_Batchfile_" + twelve characters + "_" + pcName + ".log". The replay
// compares with letter case, the export and import without.
bool belongsTo(const QString &fileName, const QString &pcName, Qt::CaseSensitivity cs);
// The sending PC: the name without its extension, from the character after the last "_".
QString sendingPc(const QString &fileName);

// The ten-digit stamp of done batchfiles and archive copies: yymmddhhnn.
QString doneStamp(const QDateTime &when);
// join(folder, stamp + fileName), or, when a file of that name exists already (a second replay
// or export within the same minute), stamp + "b" + fileName, "c" ..., so no record replaces
// another and the records sort in the order they were made.
QString uniqueDonePath(const QString &folder, const QString &fileName, const QDateTime &when);
// The done copies of a batchfile in `folder`: the files named stamp [+ letter] + fileName, oldest
// first.
QStringList doneCopiesOf(const QString &folder, const QString &fileName);

} // namespace BatchfileName
} // namespace quillet

#pragma once

#include <QString>

namespace quillet {

// Moves a file that came from another machine (a transfer folder, a portable copy's device) into
// one of this PC's folders, replacing a file of the same name. On the same file system it is one
// rename, so the file is at every moment in exactly one of the two places. Across file systems it
// is copied first (through a temporary beside the target, flushed to the disk, renamed into place)
// and the original is deleted only after the copy is complete and of the original's size: a move
// cut off at any moment leaves the file whole in at least one of the two places.
// Throws Error when the file could not be moved; the original is then where it was.
void TransferMoveFile(const QString &source, const QString &target);

// Why a file could not be given this name on this PC (a name element or the whole path too long
// for the file system), or an empty text when it can.
QString TransferNameProblem(const QString &target);

} // namespace quillet

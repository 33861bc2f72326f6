#pragma once

#include <QByteArray>
#include <QString>

namespace quillet {

// Replaces a whole file: the bytes go to a temporary beside it, which is flushed to the disk and
// renamed over the file, so a crash or a full disk leaves the old file or the complete new one.
// Returns an empty text on success, else the system's reason ("No space left on device"); on failure
// the file is untouched and no temporary is left.
//
// Written unbuffered on purpose: a buffered QSaveFile whose final flush fails on a full disk still
// commits, replacing the file with an empty one.
QString WriteFileAtomically(const QString &path, const QByteArray &bytes);

} // namespace quillet

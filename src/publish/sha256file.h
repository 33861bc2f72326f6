#pragma once

#include <QString>

namespace quillet {

// The SHA-256 of a file's contents in lower-case hexadecimal, or an empty text when the file
// cannot be read. Uses libcrypto where the build found it (several times faster than
// QCryptographicHash of Qt 6.4, which matters when a run hashes every photo it copies).
QString Sha256OfFile(const QString &path);

} // namespace quillet

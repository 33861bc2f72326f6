#pragma once

#include <QString>
#include <QVariant>

namespace quillet {

// A family database file that came from elsewhere (the copy in the transfer folder) is untrusted:
// it may be damaged, cut short by an unplugged disk, not a database at all, or a database of
// another program. These routines look at such a file without changing it.
namespace DatabaseCopyCheck {

// Opens the file read-only and runs the integrity check and the schema check: both tables with
// every field the program reads, and exactly one parameter row. Returns an empty text when the
// file is usable as this PC's family database, else the reason in words for the user. The file
// is closed again (and never locked) when this returns.
QString Problem(const QString &path);

// The value of one field of the parameter row, read through a read-only connection that is
// closed again before this returns. Null when the file is missing, unreadable or lacks the field.
QVariant ReadParamOf(const QString &path, const QString &field);

} // namespace DatabaseCopyCheck
} // namespace quillet

#pragma once

#include <QString>
#include <QStringList>

class QSqlDatabase;

namespace quillet {

// The tables of the family database and the one change of their layout so far.
//
// Version 2 is a plain SQLite file: no column names a collation that only this program registers,
// so support staff can read, insert, update, order and back up families with any SQLite tool. The
// program's statements name the case-insensitive comparison themselves (translateJetSql).
// Version 1 files (text columns declared "COLLATE QNOCASE") are rebuilt once when opened.
namespace FamilySchema {

inline constexpr int kVersion = 2;

// The statements that create both tables and the one parameter row of a new database.
QStringList CreateStatements();
// True when the open database still has a column or index tied to the program-only collation.
bool NeedsMigration(QSqlDatabase &db);
// Rebuilds the database file at `path` in the present layout: a fresh file beside it receives every
// row (FamilyIDs and the key counter kept), and replaces the original in one rename only when it
// holds all of them. The file must not be open elsewhere. False, with the original untouched and
// the reason in `error`, when it could not be done.
bool Migrate(const QString &path, QString *error);

} // namespace FamilySchema

} // namespace quillet

#pragma once

class QSqlDatabase;

namespace quillet {

// Registers on an open SQLite connection what the family database's text rules need:
//   - the collation QNOCASE: compares as people read names, ignoring letter case for every
//     alphabet (SQLite's own NOCASE knows only A-Z);
//   - LIKE with the same case folding for every letter.
// False when the connection is not SQLite.
bool RegisterTextCollation(QSqlDatabase &db);

} // namespace quillet

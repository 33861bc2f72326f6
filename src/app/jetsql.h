#pragma once

#include <QString>

namespace quillet {

// The family database's statements are written in the desktop database dialect the program has
// always used. This turns one into SQLite with the same meaning:
//   - "a & b" concatenation becomes "(IFNULL(a,'') || IFNULL(b,''))", since "&" treats Null as ""
//     (and in SQLite "&" would be a silent bitwise AND);
//   - #mm/dd/yyyy hh:nn:ss# date literals become ISO text 'yyyy-MM-dd HH:mm:ss';
//   - True and False become -1 and 0;
//   - "*" and "?" wildcards in a LIKE pattern become "%" and "_";
//   - each ORDER BY term compares text without regard to case or accents (COLLATE QNOCASE).
// IIf, LIKE, Is Null, bracketed names and the rest are understood by SQLite as they stand.
QString translateJetSql(const QString &jetSql);

} // namespace quillet

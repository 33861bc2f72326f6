#pragma once

#include <QString>
#include <QVariant>

namespace quillet {

// The family database's statements are written in the desktop database dialect the program has
// always used. This turns one into SQLite with the same meaning:
//   - "a & b" concatenation becomes "((IFNULL(a,'') || IFNULL(b,'')) COLLATE QNOCASE)", since "&"
//     treats Null as "" and its result compares without regard to case like any text (in SQLite
//     "&" would be a silent bitwise AND);
//   - #mm/dd/yyyy hh:nn:ss# date literals become the stored text of that moment (storedDateText);
//   - True and False become -1 and 0, but "= True" becomes "<> 0" and "<> True" "= 0", so that a
//     yes/no field written as 1 by another tool counts as yes;
//   - a comparison (=, <>, <, >, <=, >=) with a text or a "?" value compares without regard to
//     case, for every letter (COLLATE QNOCASE on the value: the columns carry no collation);
//   - "*" and "?" wildcards in a LIKE pattern become "%" and "_";
//   - "double-quoted" texts become 'single-quoted' ones;
//   - each ORDER BY term compares text without regard to case or accents (COLLATE QNOCASE).
// IIf, LIKE, Is Null, bracketed and qualified names ("[tbl].[field]") and the rest are understood
// by SQLite as they stand. An operand of "&" is one name, literal, call or parenthesised group, so
// write "(a + b) & c" where arithmetic feeds a concatenation.
QString translateJetSql(const QString &jetSql);

// The text the family database stores a date or time as: "yyyy-MM-dd HH:mm:ss" for a date (a date
// without a time is midnight, as in the desktop engine) and "HH:mm:ss" for a time of day alone.
// One text per moment, so "=" finds it and text order is time order. Other values: Null text.
QString storedDateText(const QVariant &value);

} // namespace quillet

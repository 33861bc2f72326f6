#pragma once

#include <QDateTime>
#include <QStringList>
#include <QVariant>

namespace quillet {

// ---- SQL text for the family database -------------------------------------------------------
// Brackets a field name ("[name]", "[table].[field]") unless it already begins with "[".
QString lib_SqlFieldName(const QString &name, bool bracket = true);
// Month-first date literal text ("mm/dd/yyyy", "hh:nn:ss" or both), without the "#" delimiters.
// A QDate gives the date part only, a QTime the time part only, a QDateTime both.
QString lib_DateToSql(const QVariant &value);
// Doubles every "'".
QString lib_SqlQuote(const QString &text);

enum class SqlValueKind : int { Auto = 0, Text = 1, Number = 2 };
// Extends a WHERE text by one condition (see the helpers' tests for the exact forms).
QString lib_AddWhere(const QString &field, const QString &op, const QVariant &value, const QString &where,
                     SqlValueKind kind = SqlValueKind::Auto, bool first = true, bool useOr = false,
                     bool orNull = false);

// ---- loose values ---------------------------------------------------------------------------
// A number from a loose value: Null 0, "true" -1, "false" 0, blank 0, otherwise the digits,
// thousands commas, one decimal point, currency signs and blanks it is written with.
double lib_ParseNumber(const QVariant &value);
// A time of day as people and the database write it: "9:30", "09:30:00", "9:30 am". Invalid
// when the text is no time.
QTime lib_ParseTimeOfDay(const QString &text);
// The common text-to-value conversion of settings: "1"/"true" true, "0"/"false"/"" false, other
// numbers true when not 0.
bool lib_ToBool(const QString &value);
int lib_ToInt(const QString &value);

// ---- presentation ---------------------------------------------------------------------------
QString lib_HtmlEncode(const QString &text);
// Style 9: [hh:]nn:ss.cc from milliseconds (hours only when present).
QString lib_FormatElapsed(int style, qint64 milliseconds);
// "1 file", "2 files"; "1 batch", "2 batches" (plural ending "es" after s, x, z, ch, sh).
QString lib_FormatCount(qint64 count, const QString &singular);
// Ordinal suffix: "st", "nd", "rd", "th".
QString lib_OrdinalSuffix(qint64 number);
// Plural ending of a word for a count: "", "s" or "es".
QString lib_PluralEnding(qint64 count, const QString &singular);

// Splits a line at a delimiter, keeping text between quotes together (quotes removed); at most
// 100 parts. Throws Error under "Lib09.lib_GetLineParts3" beyond that.
QStringList lib_GetLineParts3(const QString &line, QChar delimiter, QChar quote = QLatin1Char('"'));

} // namespace quillet

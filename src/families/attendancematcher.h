#pragma once

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <array>
#include <optional>

namespace quillet {

class Workbook;

// The ten day flags in the workbook's column order B..K.
using AttendanceDays = std::array<bool, 10>;

// Matches the office's attendance sheet to the current families, without touching the database
// or the file: the sheet's column A holds a child's full name, columns B..K the sessions the child
// attends, and column M receives "y" on every row that was matched to a family.
//
// A family is looked for by its full name first (the name before any "("), and only when that
// fails by each child's full name (each word of the first name, apart from "and" and "&", with the
// last name). The first row found gives the family its ten flags; each further row (another
// child) adds its sessions.
class AttendanceMatcher
{
public:
    static constexpr int kFirstRow = 1;
    static constexpr int kLastRow = 100;
    static constexpr int kNameColumn = 1;
    static constexpr int kMarkColumn = 13;
    // The family columns that columns B..K set, in that order.
    static const std::array<const char *, 10> kDayFields;

    explicit AttendanceMatcher(Workbook &sheet);

    // Empties column M of rows 2..100.
    void clearMarks();
    // Matches one family: marks its rows and returns its new flags, or nothing when no row of the
    // sheet names it (then it is listed under familiesNotFound()). Pseudo-families are skipped.
    // Throws Error when a matched row holds a day cell that is neither true nor false.
    std::optional<AttendanceDays> match(const QString &firstName, const QVariant &lastName);

    // One line per family not found, with the names tried: "Jack & Jill Smith or Jack Smith or Jill Smith".
    const QString &familiesNotFound() const { return m_familiesNotFound; }
    // The names of column A on rows 2..100 that no family matched, from the last row up.
    QString childrenNotFound() const;
    // The rows marked, in ascending order.
    QList<int> matchedRows() const;

    // FirstName, a blank and LastName (when not Null), cut before the first "(" and trimmed.
    static QString fullName(const QString &firstName, const QVariant &lastName);
    // Each child's full name: the words of the first name (blanks and commas separate them; at most
    // 20, leaving out "and" and "&"), each with a blank and the last name.
    static QStringList childNames(const QString &firstName, const QString &lastName);
    // A day cell as a flag: empty is false; TRUE/FALSE, numbers (not 0 is true), and the texts
    // true/false, yes/no, y/n, x, 1/0, -1 in any letter case. Anything else throws Error naming
    // the cell.
    static bool flag(const QVariant &cell, int row, int column);

private:
    int findRow(const QString &name) const;
    void applyRow(int row, AttendanceDays &days, bool first);

    Workbook &m_sheet;
    QString m_familiesNotFound;
    QSet<int> m_marked;
};

} // namespace quillet

#include "attendancematcher.h"

#include "workbook.h"

#include "lib/error.h"

#include <QRegularExpression>
#include <QSet>

#include <algorithm>

namespace quillet {

namespace {

constexpr int kMaxChildren = 20;
constexpr qint32 kErrTypeMismatch = 13;
const QString kMark = QStringLiteral("y");

QStringList words(const QString &firstName)
{
    static const QRegularExpression separators(QStringLiteral("[ ,]+"));
    return firstName.split(separators, Qt::SkipEmptyParts);
}

} // namespace

const std::array<const char *, 10> AttendanceMatcher::kDayFields = {
    "FamDaysMam", "FamDaysMpm", "FamDaysTam",  "FamDaysTpm",  "FamDaysWam",
    "FamDaysWpm", "FamDaysTHam", "FamDaysTHpm", "FamDaysFam", "FamDaysFpm"};

AttendanceMatcher::AttendanceMatcher(Workbook &sheet)
    : m_sheet(sheet)
{
}

void AttendanceMatcher::clearMarks()
{
    for (int row = kFirstRow + 1; row <= kLastRow; ++row)
        m_sheet.setText(row, kMarkColumn, QString());
}

QString AttendanceMatcher::fullName(const QString &firstName, const QVariant &lastName)
{
    QString name = firstName;
    if (!lastName.isNull())
        name += QLatin1Char(' ') + lastName.toString();
    const qsizetype bracket = name.indexOf(QLatin1Char('('));
    return bracket < 0 ? name : name.left(bracket).trimmed();
}

QStringList AttendanceMatcher::childNames(const QString &firstName, const QString &lastName)
{
    QStringList names;
    for (const QString &word : words(firstName).mid(0, kMaxChildren)) {
        if (word.compare(QLatin1String("and"), Qt::CaseInsensitive) != 0 && word != QLatin1String("&"))
            names << word + QLatin1Char(' ') + lastName;
    }
    return names;
}

bool AttendanceMatcher::flag(const QVariant &cell, int row, int column)
{
    switch (cell.typeId()) {
    case QMetaType::UnknownType:
        return false;
    case QMetaType::Bool:
        return cell.toBool();
    case QMetaType::Double:
        return cell.toDouble() != 0.0;
    default:
        break;
    }
    const QString text = cell.toString().trimmed().toLower();
    static const QSet<QString> no{QString(), QStringLiteral("false"), QStringLiteral("no"), QStringLiteral("n"),
                                  QStringLiteral("0")};
    static const QSet<QString> yes{QStringLiteral("true"), QStringLiteral("yes"), QStringLiteral("y"),
                                   QStringLiteral("x"), QStringLiteral("1"), QStringLiteral("-1")};
    if (no.contains(text))
        return false;
    if (yes.contains(text))
        return true;
    throw Error(kErrTypeMismatch, QStringLiteral("AttendanceImport"),
                QStringLiteral("Cell ") + Workbook::columnName(column) + QString::number(row) + QStringLiteral(" holds \"")
                    + cell.toString() + QStringLiteral("\", which is neither true nor false (TRUE/FALSE, 1/0 or empty)"));
}

int AttendanceMatcher::findRow(const QString &name) const
{
    for (int row = kFirstRow; row <= kLastRow; ++row)
        if (m_sheet.text(row, kNameColumn).trimmed() == name)
            return row;
    return 0;
}

void AttendanceMatcher::applyRow(int row, AttendanceDays &days, bool first)
{
    for (int i = 0; i < int(days.size()); ++i) {
        const bool on = flag(m_sheet.cell(row, kNameColumn + 1 + i), row, kNameColumn + 1 + i);
        days[i] = first ? on : (days[i] || on);
    }
    m_sheet.setText(row, kMarkColumn, kMark);
    m_marked.insert(row);
}

std::optional<AttendanceDays> AttendanceMatcher::match(const QString &firstName, const QVariant &lastName)
{
    const QString name = fullName(firstName, lastName);
    const QChar initial = name.isEmpty() ? QChar() : name.at(0).toLower();
    if (initial < u'a' || initial > u'z')
        return std::nullopt; // pseudo-families ("(Staff)") are not children
    AttendanceDays days{};
    if (const int row = findRow(name)) {
        applyRow(row, days, true);
        return days;
    }
    int found = 0;
    QString tried;
    if (!lastName.isNull() && words(firstName).size() > 1) {
        for (const QString &child : childNames(firstName, lastName.toString())) {
            if (const int row = findRow(child))
                applyRow(row, days, found++ == 0);
            else
                tried += QStringLiteral(" or ") + child;
        }
    }
    // Every line names the family first, also when some of its children were found.
    if (!tried.isEmpty() || found == 0)
        m_familiesNotFound += name + tried + QStringLiteral("\r\n");
    return found > 0 ? std::optional<AttendanceDays>(days) : std::nullopt;
}

QString AttendanceMatcher::childrenNotFound() const
{
    QString list;
    for (int row = kLastRow; row > kFirstRow; --row) {
        const QString name = m_sheet.text(row, kNameColumn).trimmed();
        if (!name.isEmpty() && m_sheet.text(row, kMarkColumn) != kMark)
            list += name + QStringLiteral("\r\n");
    }
    return list;
}

QList<int> AttendanceMatcher::matchedRows() const
{
    QList<int> rows(m_marked.cbegin(), m_marked.cend());
    std::sort(rows.begin(), rows.end());
    return rows;
}

} // namespace quillet

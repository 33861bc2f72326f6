#include "clsfamily.h"

#include <QSqlRecord>

namespace quillet {

namespace {

const char *const kWeekdayCodes[clsFamily::kDays] = {"M", "T", "W", "TH", "F"};

bool flag(const QSqlRecord &row, const QString &name)
{
    return row.value(name).toInt() != 0;
}

} // namespace

clsFamily clsFamily::FromRecord(const QSqlRecord &row)
{
    clsFamily f;
    f.FamilyID = row.value(QStringLiteral("FamilyID")).toInt();
    f.FirstName = row.value(QStringLiteral("FirstName")).toString();
    const QVariant last = row.value(QStringLiteral("LastName"));
    f.LastName = last.isNull() ? QVariant() : QVariant(last.toString());
    const QVariant parent = row.value(QStringLiteral("Parent"));
    f.Parent = parent.isNull() ? QVariant() : QVariant(parent.toString());
    f.Current = flag(row, QStringLiteral("Current"));
    f.NoUploadToWeb = flag(row, QStringLiteral("NoUploadToWeb"));
    f.NoCopyToCd = flag(row, QStringLiteral("NoCopyToCd"));
    const bool override = flag(row, QStringLiteral("FamDaysOverride"));
    for (int s = 0; s < 2; ++s) {
        for (int d = 0; d < kDays; ++d) {
            const QString column = QStringLiteral("FamDays") + QLatin1String(kWeekdayCodes[d])
                + (s == 0 ? QStringLiteral("am") : QStringLiteral("pm"));
            f.m_days[s][d] = flag(row, column) || override;
        }
    }
    return f;
}

bool clsFamily::FamDaysByName(const QString &name) const
{
    for (int s = 0; s < 2; ++s) {
        for (int d = 0; d < kDays; ++d) {
            const QString column = QStringLiteral("FamDays") + QLatin1String(kWeekdayCodes[d])
                + (s == 0 ? QStringLiteral("am") : QStringLiteral("pm"));
            if (column == name)
                return m_days[s][d];
        }
    }
    return false;
}

QString clsFamily::DisplayName() const
{
    return LastName.isNull() ? FirstName : FirstName + QLatin1Char(' ') + LastName.toString();
}

} // namespace quillet

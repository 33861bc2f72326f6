#pragma once

#include <QString>
#include <QVariant>

class QSqlRecord;

namespace quillet {

// One family as the family list uses it: a copy of its database row with the attendance override
// folded into the ten day flags. LastName and Parent keep Null as Null.
class clsFamily
{
public:
    // Day flags indexed [session 0 = am, 1 = pm][weekday 0 = Monday ... 4 = Friday].
    static constexpr int kDays = 5;

    clsFamily() = default;
    // Fills every property from a tblFamilies row.
    static clsFamily FromRecord(const QSqlRecord &row);

    qint32 FamilyID = 0;
    QString FirstName;
    QVariant LastName;  // text or Null
    QVariant Parent;    // text or Null
    bool Current = false;
    bool NoUploadToWeb = false;
    bool NoCopyToCd = false;

    bool FamDays(int session, int weekday) const { return m_days[session][weekday]; }
    void setFamDays(int session, int weekday, bool on) { m_days[session][weekday] = on; }
    // A flag by its column name ("FamDaysTHpm"); false for an unknown name.
    bool FamDaysByName(const QString &flag) const;

    // First name, then a blank and the last name when there is one.
    QString DisplayName() const;
    // Group entries (a first name beginning with "(") are not children.
    bool isGroupEntry() const { return FirstName.startsWith(QLatin1Char('(')); }

private:
    bool m_days[2][kDays] = {};
};

} // namespace quillet

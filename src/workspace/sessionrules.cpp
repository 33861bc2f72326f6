#include "sessionrules.h"

#include <QLocale>

namespace quillet::SessionRules {

int SessionCode(const QTime &time, const QTime &morningEnd, const QTime &afternoonEnd)
{
    if (time <= morningEnd)
        return 1;
    if (time <= afternoonEnd)
        return 2;
    return 0;
}

int Weekday(const QDate &date)
{
    return date.dayOfWeek(); // ISO: Monday 1 ... Sunday 7
}

QString WeekdayCode(const QDate &date)
{
    static const char *const codes[] = {"M", "T", "W", "TH", "F"};
    const int day = Weekday(date);
    return day >= 1 && day <= 5 ? QLatin1String(codes[day - 1]) : QString();
}

QString AttendanceFlag(const QDate &date, int session)
{
    const QString code = WeekdayCode(date);
    if (code.isEmpty() || (session != 1 && session != 2))
        return QString();
    return QStringLiteral("FamDays") + code + (session == 1 ? QStringLiteral("am") : QStringLiteral("pm"));
}

QString Grouping::next(const QDateTime &taken)
{
    const int session = SessionCode(taken.time(), m_morningEnd, m_afternoonEnd);
    if (taken.date() != m_lastDay || session != m_lastSession)
        m_black = !m_black;
    m_lastDay = taken.date();
    m_lastSession = session;
    return m_black ? QStringLiteral("BLACK") : QStringLiteral("BLKWHT");
}

QString DateCaption(const QDateTime &taken)
{
    return QLocale::system().toString(taken, QStringLiteral("ddd dd-MMM-yy - HH:mm"));
}

} // namespace quillet::SessionRules

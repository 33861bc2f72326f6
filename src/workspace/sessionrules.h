#pragma once

#include <QDateTime>
#include <QString>
#include <QTime>

namespace quillet {

// The day/session rules shared by the source list, the family list and the viewer.
namespace SessionRules {

// 1 (morning) at or before the morning end, else 2 (afternoon) at or before the afternoon end,
// else 0 (out of session).
int SessionCode(const QTime &time, const QTime &morningEnd, const QTime &afternoonEnd);

// Weekday with Monday as 1; Saturday 6, Sunday 7.
int Weekday(const QDate &date);
// The weekday code used in attendance flag names: "M", "T", "W", "TH", "F"; empty at weekends.
QString WeekdayCode(const QDate &date);
// The attendance flag of a weekday and session, e.g. "FamDaysTHam"; empty at weekends or
// outside the sessions.
QString AttendanceFlag(const QDate &date, int session);

// Alternating colour groups of unallocated photos: a new group starts when the calendar day or the
// session differs from the previous unallocated photo's. The first group is "BLACK".
class Grouping
{
public:
    Grouping(const QTime &morningEnd, const QTime &afternoonEnd)
        : m_morningEnd(morningEnd), m_afternoonEnd(afternoonEnd) {}
    // The group colour ("BLACK" or "BLKWHT") of the next unallocated photo.
    QString next(const QDateTime &taken);

private:
    QTime m_morningEnd;
    QTime m_afternoonEnd;
    QDate m_lastDay;
    int m_lastSession = -1;
    bool m_black = false;
};

// The date caption of the viewer: "ddd dd-MMM-yy - hh:mm" in the system language.
QString DateCaption(const QDateTime &taken);

} // namespace SessionRules
} // namespace quillet

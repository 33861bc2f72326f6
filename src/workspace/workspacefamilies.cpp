// The family list of the workspace: building it, filtering it by the photo's day and session.
#include "workspace.h"

#include "sessionrules.h"

#include "app/familydatabase.h"
#include "lib/debuglog.h"
#include "lib/errorhandler.h"

#include <QLocale>
#include <QSqlRecord>

namespace quillet {

namespace {

const QString kByParent = QStringLiteral(
    "SELECT * FROM tblFamilies ORDER BY IIf([FirstName] LIKE '(%','zzz'&[FirstName],[Parent]) & [LastName]");
const QString kByName = QStringLiteral(
    "SELECT * FROM tblFamilies ORDER BY IIf([FirstName] LIKE '(%','zzz'&[FirstName],[FirstName]) & [LastName]");

QString entryText(const clsFamily &f, bool showParent)
{
    if (showParent && !f.isGroupEntry())
        return f.Parent.toString() + QStringLiteral(" - ") + f.DisplayName();
    return f.DisplayName();
}

} // namespace

void Workspace::loadCollections()
{
    m_byParent.Clear();
    m_byName.Clear();
    for (const QSqlRecord &r : m_db.select(kByParent))
        m_byParent.append(clsFamily::FromRecord(r));
    for (const QSqlRecord &r : m_db.select(kByName))
        m_byName.append(clsFamily::FromRecord(r));
    m_collectionsLoaded = true;
}

QList<FamilyListModel::Entry> Workspace::familyEntries(const colFamilies &families, bool currentOnly, bool showParent,
                                                       const QString &dayFlag) const
{
    QList<FamilyListModel::Entry> entries;
    for (const clsFamily &f : families) {
        if (currentOnly && !f.Current)
            continue;
        if (!dayFlag.isEmpty() && !f.FamDaysByName(dayFlag))
            continue;
        entries.append({entryText(f, showParent), f.FamilyID, false});
    }
    return entries;
}

void Workspace::LoadFamilies(std::optional<bool> currentOnlyArg, std::optional<bool> showParentArg,
                             bool keepSelection, bool warnLost, std::optional<bool> filterByDayArg)
{
    lib_Stopwatch(1);
    Q_EMIT statusText(QStringLiteral("Loading families..."));
    if (!m_collectionsLoaded || m_familyList.count() == 0)
        loadCollections();
    const bool currentOnly = currentOnlyArg.value_or(m_options.currentOnly);
    const bool showParent = showParentArg.value_or(m_options.showParent);
    const bool filterByDay = filterByDayArg.value_or(m_options.filterByDay);

    QList<QPair<QString, int>> remembered;
    if (keepSelection) {
        for (int p : m_familyList.selectedPositions()) {
            if (remembered.size() >= 200)
                break;
            remembered.append({m_familyList.at(p).text, m_familyList.at(p).familyId});
        }
    }

    for (auto &session : m_indicators)
        std::fill(std::begin(session), std::end(session), false);
    QString dayFlag;
    if (filterByDay) {
        const QDateTime taken = SelectedPhotoDate();
        if (taken.isValid()) {
            const int session = SessionRules::SessionCode(taken.time(), m_options.morningEnd, m_options.afternoonEnd);
            dayFlag = SessionRules::AttendanceFlag(taken.date(), session);
            if (!dayFlag.isEmpty())
                m_indicators[session - 1][SessionRules::Weekday(taken.date()) - 1] = true;
        }
    }
    const colFamilies &families = showParent ? m_byParent : m_byName;
    QList<FamilyListModel::Entry> entries = familyEntries(families, currentOnly, showParent, dayFlag);
    if (!dayFlag.isEmpty()) {
        // No child expected at that time: list everyone rather than nobody.
        bool anyChild = false;
        for (const clsFamily &f : families)
            anyChild = anyChild || (f.FamDaysByName(dayFlag) && !f.isGroupEntry() && (!currentOnly || f.Current));
        if (!anyChild)
            entries = familyEntries(families, currentOnly, showParent, QString());
    }
    const QString allowWeb = m_db.ReadParam(QStringLiteral("WebAllowPriv")).toString();
    const QString allowCd = m_db.ReadParam(QStringLiteral("CdAllowPriv")).toString();
    if (allowWeb == QLatin1String("1") || allowCd == QLatin1String("1"))
        entries.append({QStringLiteral(" (") + m_db.ReadPrivacyText() + QLatin1Char(')'),
                        FamilyListModel::kPrivacyMarkerId, false});

    QStringList lost;
    for (const auto &[text, id] : remembered) {
        bool found = false;
        for (auto &e : entries) {
            if (e.familyId == id) {
                e.selected = true;
                found = true;
            }
        }
        if (!found)
            lost << text;
    }
    m_familyList.setEntries(entries);
    Q_EMIT indicatorsChanged();
    Q_EMIT familyCountChanged(m_familyList.count());
    Q_EMIT statusText(QString());
    if (!lost.isEmpty() && warnLost)
        lib_MsgInfo(QStringLiteral("Some of your family selections were lost when the family list was rebuilt using "
                                   "selected filtering\r\n\r\n")
                    + lost.join(QStringLiteral("\r\n")));
    DebugLogTiming(QStringLiteral("LoadFamilies"));
}

QString Workspace::FamiliesForBothDays(const QDate &today) const
{
    const QDateTime taken = SelectedPhotoDate();
    if (!taken.isValid())
        return QString();
    const QString d1 = SessionRules::WeekdayCode(taken.date());
    const QString d2 = SessionRules::WeekdayCode(today);
    if (d1.isEmpty() || d2.isEmpty())
        return QString();
    const QString sql = QStringLiteral("SELECT * FROM tblFamilies WHERE ([Current]=True And [FirstName] Not Like '(%') And (")
        + QStringLiteral("(FamDays") + d1 + QStringLiteral("am=True Or FamDays") + d1 + QStringLiteral("pm=True) And ")
        + QStringLiteral("(FamDays") + d2 + QStringLiteral("am=True Or FamDays") + d2 + QStringLiteral("pm=True)")
        + QStringLiteral(") ORDER BY [FirstName],[LastName]");
    const QLocale locale = QLocale::system();
    QString text = QStringLiteral("Families that attend both today (") + locale.toString(today, QStringLiteral("dddd"))
        + QStringLiteral(") and the day the photo was taken (") + locale.toString(taken.date(), QStringLiteral("dddd"))
        + QStringLiteral("):\r\n");
    for (const QSqlRecord &r : m_db.select(sql)) {
        const clsFamily f = clsFamily::FromRecord(r);
        text += QStringLiteral("\r\n");
        if (m_options.showParent)
            text += f.Parent.toString() + QStringLiteral(" - ");
        text += f.DisplayName();
    }
    return text;
}

} // namespace quillet

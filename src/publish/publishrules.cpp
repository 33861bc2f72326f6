#include "publishrules.h"

#include "publishnames.h"

#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "lib/fileutils.h"
#include "lib/texthelpers.h"
#include "workspace/allocationtag.h"
#include "workspace/srcfiles.h"

#include <QFile>

#include <sys/stat.h>

#include <algorithm>

namespace quillet {

namespace {

bool paramBool(FamilyDatabase &db, const QString &name)
{
    return lib_ParseNumber(db.ReadParam(name)) != 0;
}

// Digits at character positions (1-based) `from`..`from + count - 1`, or -1 when they are not all digits.
int digitsAt(const QString &text, int from, int count)
{
    const QString part = text.mid(from - 1, count);
    if (part.size() != count)
        return -1;
    for (const QChar c : part) {
        if (!c.isDigit())
            return -1;
    }
    return part.toInt();
}

} // namespace

PublishSettings PublishSettings::read(const PublishNames &names, FamilyDatabase &db)
{
    PublishSettings s;
    s.srcDir = ReadSetting(QStringLiteral("SrcDir"));
    s.tgtDir = ReadSetting(names.tgtDirKey);
    s.inclFam = ReadSettingBool(names.inclFamKey);
    s.minText = ReadSetting(names.minDateKey);
    s.maxText = ReadSetting(names.maxDateKey);
    s.minDate = parseDate(s.minText);
    s.maxDate = parseDate(s.maxText);
    if (s.tgtDir.isEmpty())
        return s; // the command does nothing; the database is not needed
    s.allowPriv = paramBool(db, names.allowPrivParam);
    s.copyPriv = paramBool(db, names.copyPrivParam);
    s.privacyText = db.ReadPrivacyText();
    return s;
}

QDateTime PublishSettings::parseDate(const QString &text)
{
    if (text.size() < 15 || text.at(8) != QLatin1Char(' '))
        return {};
    const QDate date(digitsAt(text, 1, 4), digitsAt(text, 5, 2), digitsAt(text, 7, 2));
    const QTime time(digitsAt(text, 10, 2), digitsAt(text, 12, 2), digitsAt(text, 14, 2));
    if (!date.isValid() || !time.isValid())
        return {};
    return QDateTime(date, time);
}

QString PublishSettings::formatDate(const QDateTime &date)
{
    // The settings' "yyyymmdd HhNnSs" written in Qt's format letters.
    return date.toString(QStringLiteral("yyyyMMdd HHmmss"));
}

QDateTime PublishSettings::zeroDate()
{
    return QDateTime(QDate(1899, 12, 30), QTime(0, 0));
}

PublishRules::PublishRules(const PublishSettings &settings, PublishFamilies &families)
    : m_settings(settings)
    , m_families(families)
    , m_minDate(settings.minDate.toUTC())
    , m_maxDate(settings.maxDate.toUTC())
{
}

Decision PublishRules::decide(const QString &path)
{
    Decision d;
    d.path = path;
    // One stat, read now rather than at the scan: a file may go while the run is under way.
    struct stat st {};
    const bool exists = ::stat(QFile::encodeName(path).constData(), &st) == 0;
    if (exists) // for the report also where the tests stop early; the window compares whole seconds
        d.modified = QDateTime::fromSecsSinceEpoch(st.st_mtim.tv_sec, Qt::UTC);
    const QString fileName = lib_FilePart(path);
    if (!SrcFiles::IsAcceptedName(fileName)) {
        d.verdict = Verdict::NotPhoto;
        return d;
    }
    if (!exists || !d.modified.isValid()) {
        d.verdict = Verdict::Vanished;
        return d;
    }
    if (d.modified < m_minDate || d.modified > m_maxDate) {
        d.verdict = Verdict::OutsideWindow;
        return d;
    }
    decideTag(fileName, d);
    return d;
}

// The tag test and the privacy tests. A tag that cannot be read, or that names no family, keeps
// the photo in: publishing it could go against a wish nobody can check.
void PublishRules::decideTag(const QString &fileName, Decision &d)
{
    if (!fileName.contains(QStringLiteral("(#"))) {
        d.verdict = Verdict::NotAllocated;
        return;
    }
    const ParsedTag tag = ParseAllocationTag(fileName);
    const bool namesFamily = std::any_of(tag.entries.begin(), tag.entries.end(), [](const QString &e) {
        return e.compare(QLatin1String("P"), Qt::CaseInsensitive) != 0;
    });
    if (!tag.found || !namesFamily) {
        d.verdict = Verdict::MalformedTag;
        d.detail = tag.found ? QStringLiteral("names no family") : QStringLiteral("not closed by #)");
        return;
    }
    d.verdict = Verdict::Copy;
    for (const QString &element : tag.entries) {
        if (element.compare(QLatin1String("P"), Qt::CaseInsensitive) == 0) {
            if (m_settings.allowPriv && !m_settings.copyPriv) {
                d.verdict = Verdict::KeepPrivate;
                return;
            }
            continue;
        }
        const PublishFamily *family = m_families.find(element);
        if (!family) {
            d.verdict = Verdict::FamilyUnknown;
            d.detail = element;
            return;
        }
        d.families << family;
        if (family->excluded && d.verdict == Verdict::Copy) {
            d.verdict = Verdict::FamilyExcluded;
            d.detail = QString::number(family->id);
        }
    }
}

QString PublishRules::reason(const Decision &d, const PublishNames &names)
{
    switch (d.verdict) {
    case Verdict::Copy:
        return QString();
    case Verdict::NotPhoto:
        return QStringLiteral("not a photo or movie");
    case Verdict::Vanished:
        return QStringLiteral("no longer there");
    case Verdict::OutsideWindow:
        return QStringLiteral("outside the date window");
    case Verdict::NotAllocated:
        return QStringLiteral("not allocated");
    case Verdict::MalformedTag:
        return QStringLiteral("allocation tag ") + d.detail;
    case Verdict::KeepPrivate:
        return QStringLiteral("marked Keep Private");
    case Verdict::FamilyUnknown:
        return QStringLiteral("family ") + d.detail + QStringLiteral(" unknown");
    case Verdict::FamilyExcluded:
        return QStringLiteral("family ") + d.detail + QLatin1Char(' ') + names.exclusionReason;
    }
    return QString();
}

} // namespace quillet

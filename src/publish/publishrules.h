#pragma once

#include "publishfamilies.h"

#include <QDateTime>
#include <QList>
#include <QString>

namespace quillet {

class FamilyDatabase;
struct PublishNames;

// The inputs of one preparation run, read once at its start.
struct PublishSettings
{
    QString srcDir;
    QString tgtDir;
    bool inclFam = false;
    QString minText;
    QString maxText;
    QDateTime minDate; // invalid when minText is no date
    QDateTime maxDate;
    bool allowPriv = false;
    bool copyPriv = false;
    QString privacyText;

    static PublishSettings read(const PublishNames &names, FamilyDatabase &db);

    // A date text "yyyymmdd hhnnss" read by character position (1-4, 5-6, 7-8, 10-11, 12-13,
    // 14-15), never by a locale's date parser. Invalid when the text is no such date.
    static QDateTime parseDate(const QString &text);
    static QString formatDate(const QDateTime &date);
    // The date from which the latest modified time of a run starts: 30 December 1899, 00:00:00.
    static QDateTime zeroDate();
};

// Why a file goes out or stays in, in the order the tests are made.
enum class Verdict {
    Copy,
    NotPhoto,
    Vanished,
    OutsideWindow,
    NotAllocated,
    MalformedTag,
    KeepPrivate,
    FamilyUnknown,
    FamilyExcluded,
};

struct Decision
{
    QString path;
    // Whole seconds, as the date window compares them; in UTC, which costs no look-up of the
    // time zone for each of many thousand files (toLocalTime() for its local time).
    QDateTime modified;
    Verdict verdict = Verdict::NotPhoto;
    // The tag element behind FamilyUnknown or the family behind FamilyExcluded, or what is wrong
    // with a malformed tag.
    QString detail;
    // The families of the tag, in tag order (for the per-family copies).
    QList<const PublishFamily *> families;
};

// The tests of the preparation for one file: extension, date window, tag, privacy and the
// families' wishes, in that order. Deciding copies nothing and shows nothing, so the preview
// and the run decide alike.
class PublishRules
{
public:
    PublishRules(const PublishSettings &settings, PublishFamilies &families);

    Decision decide(const QString &path);

    // The reason shown for a decision that keeps a file back ("outside the date window").
    static QString reason(const Decision &decision, const PublishNames &names);

private:
    void decideTag(const QString &fileName, Decision &decision);

    const PublishSettings &m_settings;
    PublishFamilies &m_families;
    // The date window's ends in UTC, as the files' times are taken.
    QDateTime m_minDate, m_maxDate;
};

} // namespace quillet

#pragma once

#include "batchfilereader.h"
#include "foreignpath.h"

#include <QFile>
#include <QSet>
#include <QString>
#include <QStringList>

namespace quillet {

class FamilyDatabase;

// The settings a replay reads at its start.
struct ReplaySettings
{
    QString srcDir;
    QString tgtDir;
    QString pcName;
    QString excludedFolder;  // the folder of the family ResizeExclFam, empty when none
    bool batchOnly = false;
    bool targetResize = false;
    qint16 resizeMD = 0;
    qint16 resizeQ = 0;

    // Reads them; the excluded family's folder comes from the database when it is open.
    static ReplaySettings read(FamilyDatabase *db);
};

// What a run of replays collects for its end: the done batchfiles to open for failures and for
// missing sources (one path per entry, at most 50 each) and whether any entry failed.
struct ReplayOutcome
{
    static constexpr int kMaxListed = 50;
    QStringList failures;
    QStringList notFound;
    bool noErrors = true;
};

// Replays the entries of one batchfile on this PC's Source Dir and Target Dir and writes the done
// batchfile: each entry's opcode and operand lines as they stand, then "Results: " and the
// outcome. Every operand goes through ForeignPath: an operand that would lead outside the Source
// Dir or Target Dir is refused with a result beginning "failed" and a debug log line naming it.
class BatchfileReplay
{
public:
    BatchfileReplay(const ReplaySettings &settings, ReplayOutcome &outcome);

    // Marks this replay as the continuation of an earlier one that was cancelled or killed (its
    // done copy exists): the rotation entries listed (by index) turned the photo already, and
    // copies clear the temporaries an interrupted copy may have left.
    void resumeAfter(const QSet<int> &rotationsDone)
    {
        m_rotationsDone = rotationsDone;
        m_resumed = true;
    }

    // Writes the header and replays every entry into `done` (open for writing); advances the
    // progress report after every entry. False when the cancel flag stopped it early.
    bool run(const BatchfileContent &content, QFile &done);

    // The outcome of one entry (no done batchfile involved).
    QString apply(const BatchfileEntry &entry, bool rotationDone);

    // True when a rotation's look-ahead line is an old result of a rotation that took place
    // ("Results: ok") or was skipped ("Results: sk...").
    static bool isRotationDoneResult(const QString &line);

private:
    // One opcode each, on operands resolved already.
    QString copySource(const BatchfileEntry &entry, const QString &src, const QString &target);
    QString renameSource(const BatchfileEntry &entry, const QString &src);
    QString deleteSource(const QString &src);
    QString moveSource(const QString &src);
    QString rotateSource(const QString &src, bool clockwise, bool rotationDone);
    QString deleteTargetFile(const QString &file);
    QString renameTargetDir(const QString &from, const QString &to);

    // Resolves operand `index` against `base`; on refusal logs it and sets `refusal`.
    QString resolve(const BatchfileEntry &entry, int index, ForeignBase &base, QString &refusal);
    void record(const QString &result, const QString &donePath);

    ReplaySettings m_settings;
    ReplayOutcome &m_outcome;
    // The Source Dir and Target Dir under which the operands are resolved.
    ForeignBase m_srcBase;
    ForeignBase m_tgtBase;
    QSet<int> m_rotationsDone;
    bool m_resumed = false;
};

} // namespace quillet

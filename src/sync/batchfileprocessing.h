#pragma once

#include <QElapsedTimer>
#include <QSet>
#include <QString>
#include <QStringList>

namespace quillet {

class FamilyDatabase;
struct BatchfileContent;
struct ReplayOutcome;
struct ReplaySettings;

// Replays the batchfiles that other PCs left in the data folder (ProcessBatchfiles) and recycles
// old done batchfiles (CleanupOldBatchfiles).
//
// A batchfile is deleted only after every entry was replayed; one that is declined, cancelled,
// malformed or interrupted by a crash stays where it is and is offered again. When a done copy of
// it exists already (an earlier replay that did not finish, or a replay on this PC before), the
// reprocess question is asked and the rotations that copy records as done are skipped.
class BatchfileProcessing
{
public:
    // `db` is the open family database (for the excluded family's folder), or nullptr.
    explicit BatchfileProcessing(FamilyDatabase *db);

    void ProcessBatchfiles();
    static void CleanupOldBatchfiles();

    // The other PCs' batchfiles in the data folder, sorted without regard to case, at most 50.
    static QStringList FindBatchfiles(const QString &pcName);

    // Carries out here, once and without the questions, batchfiles that this PC takes over from
    // its portable copy: they are journalled under this PC's name, so they are never replayed
    // here otherwise, yet this PC's Target Dir must get the copies and its Source Dir the tags.
    // The rotations of the photos named in `turnedAlready` (file names) are skipped: those files
    // come back from the device turned. Each batchfile leaves a done copy, so an import that is cut
    // off and run again skips the rotations already made. Ends with the usual reports of failures
    // and missing sources. Returns the paths that the cancel flag or an error kept from being
    // carried out to their end (a malformed batchfile is not carried out; the user is told why).
    QStringList ReplayAdopted(const QStringList &paths, const QSet<QString> &turnedAlready);

private:
    // False when the whole run must stop (cancelled).
    bool processOne(const QString &path, const ReplaySettings &settings, ReplayOutcome &outcome);
    bool ask(const QString &text, bool defaultYes = true);
    // Replays `content` into a new done copy of `fileName`; false when cancelled.
    bool replayInto(const QString &fileName, const BatchfileContent &content, const ReplaySettings &settings,
                    ReplayOutcome &outcome, const QSet<int> &rotationsDone, bool resumed);
    void finish(const ReplayOutcome &outcome);

    FamilyDatabase *m_db;
    QElapsedTimer m_clock;
    qint64 m_questionMs = 0;          // time spent on questions, not the procedure's
    QSet<QString> m_blockedPcs;       // PCs whose older batchfile could not be read
};

} // namespace quillet

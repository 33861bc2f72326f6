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

private:
    // False when the whole run must stop (cancelled).
    bool processOne(const QString &path, const ReplaySettings &settings, ReplayOutcome &outcome);
    bool ask(const QString &text, bool defaultYes = true);
    void finish(const ReplayOutcome &outcome);

    FamilyDatabase *m_db;
    QElapsedTimer m_clock;
    qint64 m_questionMs = 0;          // time spent on questions, not the procedure's
    QSet<QString> m_blockedPcs;       // PCs whose older batchfile could not be read
};

} // namespace quillet

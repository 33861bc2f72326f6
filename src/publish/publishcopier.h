#pragma once

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace quillet {

// Makes the copies of a preparation on worker threads while the run goes on deciding the files
// that follow: one photo's copies overlap the next photo's, and a SHA-256 is taken of each
// photo's first copy from the bytes as they are written. Jobs on the same target name are never
// under way together, so a later photo still replaces an earlier one as it would one after
// another. The workers touch nothing but files: questions, the report and the database stay
// with the caller, on its own thread.
class PublishCopier
{
public:
    struct Job
    {
        qint64 ticket = 0;
        QString source;
        // Relative to the preparation folder; the first is hashed.
        QStringList targets;
    };
    struct Outcome
    {
        qint64 ticket = 0;
        QString source;
        // False for a job dropped before it began: nothing of it was copied.
        bool begun = false;
        // Each target attempted, in the order of the job, and those written.
        int attempted = 0;
        QStringList copiedTo;
        // "target: reason" of each copy that failed.
        QStringList failures;
        qint64 size = -1;
        QString sha256;
        // The description of a failure that may be the first of many (a full or failing disk), for
        // the question whether to stop; empty when none.
        QString askAbout;
    };

    PublishCopier(const QString &preparationDir, int workers);
    ~PublishCopier();
    PublishCopier(const PublishCopier &) = delete;
    PublishCopier &operator=(const PublishCopier &) = delete;

    // The workers a run uses on this machine.
    static int workersForThisMachine();

    // True when a job on one of these targets is queued or under way (compared ignoring case,
    // as a memory card or a FAT disk would).
    bool busyWith(const QStringList &targets) const;
    // Queued and unfinished jobs.
    int unfinished() const;
    void submit(Job job);
    // The outcomes finished since the last call, waiting up to `waitMs` until there are
    // `atLeast` of them (or every job has finished).
    QList<Outcome> takeFinished(int waitMs, int atLeast = 1);

    // After a failure with `askAbout`, the workers begin no new job until the caller has asked
    // and calls resume(); a second such failure is not waited for.
    void resume();
    // Forgets the jobs not yet begun: they come back as outcomes with `begun` false.
    void dropQueued();

private:
    void work();
    Outcome copy(const Job &job, class ForeignBase &base) const;
    static QString key(const QString &target);

    QString m_dir;
    mutable std::mutex m_lock;
    std::condition_variable m_workChanged; // a job queued, the workers resumed or stopped
    std::condition_variable m_jobsFinished;
    // How many finished outcomes the caller is waiting for; 0 when it is not waiting.
    qsizetype m_wanted = 0;
    std::deque<Job> m_queue;
    QList<Outcome> m_finished;
    QSet<QString> m_busyTargets;
    int m_unfinished = 0;
    bool m_paused = false;
    bool m_pauseOnFailure = true;
    bool m_stop = false;
    std::vector<std::thread> m_workers;
};

} // namespace quillet

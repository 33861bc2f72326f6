#include "publishcopier.h"

#include "sha256file.h"

#include "lib/deferredsync.h"
#include "lib/error.h"
#include "lib/errorhandler.h"
#include "lib/fileutils.h"
#include "lib/texthelpers.h"
#include "sync/foreignpath.h"

#include <QDir>
#include <QFileInfo>
#include <QThread>

#include <cerrno>
#include <cstring>
#include <exception>

namespace quillet {

namespace {

struct HashingSink : CopySink
{
    Sha256 sha;
    void take(const char *data, qint64 size) override { sha.add(data, size); }
};

// One copy into the preparation folder; its size, or -1 with `failure` saying why. With `sink`,
// every byte written also goes into it. A target the family's folder name would lead outside the
// folder is refused; a source that has gone is no reason to stop; any other failure gives
// `askAbout`, since a full or failing disk fails every copy that follows.
qint64 copyOnce(ForeignBase &base, const QString &source, const QString &relative, CopySink *sink, QString &failure,
                QString &askAbout)
{
    const ForeignPath target = base.resolve(relative);
    if (!target.ok()) {
        failure = QStringLiteral("not written, the name leads outside the preparation folder (") + target.refusal()
            + QLatin1Char(')');
        return -1;
    }
    try {
        // A family's folder is made when it is missing; the preparation folder itself was found
        // a moment ago, when the name was resolved.
        const QString folder = lib_DirPart(target.path());
        const bool inSubfolder = relative.contains(QLatin1Char('/')) || relative.contains(QLatin1Char('\\'));
        if (inSubfolder && !QDir().mkpath(folder))
            throw Error(kLibErrorNumber, QStringLiteral("PublishRun"),
                        QStringLiteral("The folder ") + folder + QStringLiteral(" could not be created (")
                            + QString::fromLocal8Bit(std::strerror(errno)) + QLatin1Char(')'));
        const qint64 size = sink ? lib_CopyFileThrough(source, target.path(), true, *sink)
                                 : (lib_CopyFile(source, target.path(), true) ? QFileInfo(target.path()).size() : -1);
        if (size < 0)
            failure = QStringLiteral("not written, the copy would be the file itself");
        return size;
    } catch (const Error &e) {
        if (!QFileInfo::exists(source)) {
            failure = QStringLiteral("the file vanished during the run");
            return -1;
        }
        failure = QString(e.description()).replace(QStringLiteral("\r\n"), QStringLiteral(" "));
        askAbout = e.description();
    } catch (const std::exception &e) {
        failure = QString::fromLocal8Bit(e.what());
        askAbout = failure;
    }
    return -1;
}

} // namespace

PublishCopier::PublishCopier(const QString &preparationDir, int workers)
    : m_dir(preparationDir)
{
    for (int i = 0; i < std::max(1, workers); ++i)
        m_workers.emplace_back([this] { work(); });
}

PublishCopier::~PublishCopier()
{
    {
        const std::lock_guard<std::mutex> lock(m_lock);
        m_stop = true;
    }
    m_workChanged.notify_all();
    for (std::thread &worker : m_workers)
        worker.join();
}

int PublishCopier::workersForThisMachine()
{
    // Writing into the page cache scales with a second writer even on two cores (the hashing and
    // the run's own tests fill the gaps); more than four only queue behind the disk.
    return std::clamp(QThread::idealThreadCount(), 2, 4);
}

QString PublishCopier::key(const QString &target)
{
    return target.toCaseFolded();
}

bool PublishCopier::busyWith(const QStringList &targets) const
{
    const std::lock_guard<std::mutex> lock(m_lock);
    return std::any_of(targets.begin(), targets.end(), [this](const QString &t) { return m_busyTargets.contains(key(t)); });
}

int PublishCopier::unfinished() const
{
    const std::lock_guard<std::mutex> lock(m_lock);
    return m_unfinished;
}

void PublishCopier::submit(Job job)
{
    {
        const std::lock_guard<std::mutex> lock(m_lock);
        for (const QString &t : job.targets)
            m_busyTargets.insert(key(t));
        ++m_unfinished;
        m_queue.push_back(std::move(job));
    }
    m_workChanged.notify_one();
}

QList<PublishCopier::Outcome> PublishCopier::takeFinished(int waitMs, int atLeast)
{
    std::unique_lock<std::mutex> lock(m_lock);
    if (m_finished.size() < atLeast && m_unfinished > 0 && waitMs > 0) {
        // Woken once for the lot rather than once per copy.
        m_wanted = atLeast;
        m_jobsFinished.wait_for(lock, std::chrono::milliseconds(waitMs),
                                [this, atLeast] { return m_finished.size() >= atLeast || m_unfinished == 0; });
        m_wanted = 0;
    }
    return std::exchange(m_finished, {});
}

void PublishCopier::resume()
{
    {
        const std::lock_guard<std::mutex> lock(m_lock);
        m_paused = false;
    }
    m_workChanged.notify_all();
}

void PublishCopier::dropQueued()
{
    {
        const std::lock_guard<std::mutex> lock(m_lock);
        for (const Job &job : m_queue) {
            for (const QString &t : job.targets)
                m_busyTargets.remove(key(t));
            Outcome dropped;
            dropped.ticket = job.ticket;
            dropped.source = job.source;
            m_finished << dropped;
            --m_unfinished;
        }
        m_queue.clear();
    }
    m_jobsFinished.notify_all();
}

void PublishCopier::work()
{
    // The copies skip their own flush to the disk: the file systems written to are flushed once,
    // in the background, when the worker ends.
    DeferredSync deferred;
    ForeignBase base(m_dir);
    std::unique_lock<std::mutex> lock(m_lock);
    for (;;) {
        m_workChanged.wait(lock, [this] { return m_stop || (!m_paused && !m_queue.empty()); });
        if (m_stop)
            return;
        const Job job = std::move(m_queue.front());
        m_queue.pop_front();
        lock.unlock();
        Outcome outcome = copy(job, base);
        lock.lock();
        for (const QString &t : job.targets)
            m_busyTargets.remove(key(t));
        if (!outcome.askAbout.isEmpty() && std::exchange(m_pauseOnFailure, false))
            m_paused = true;
        --m_unfinished;
        m_finished << std::move(outcome);
        // A pause waits for the caller's question: wake it at once.
        if (m_paused || (m_wanted > 0 && (m_finished.size() >= m_wanted || m_unfinished == 0)))
            m_jobsFinished.notify_one();
    }
}

// The size and SHA-256 are those of the first copy made, taken from the bytes as they were
// written to it.
PublishCopier::Outcome PublishCopier::copy(const Job &job, ForeignBase &base) const
{
    Outcome outcome;
    outcome.ticket = job.ticket;
    outcome.source = job.source;
    outcome.begun = true;
    for (const QString &relative : job.targets) {
        ++outcome.attempted;
        const bool first = outcome.copiedTo.isEmpty();
        HashingSink sink;
        QString failure, askAbout;
        const qint64 size = copyOnce(base, job.source, relative, first ? &sink : nullptr, failure, askAbout);
        if (size < 0) {
            outcome.failures << relative + QStringLiteral(": ") + failure;
            if (outcome.askAbout.isEmpty())
                outcome.askAbout = askAbout;
            continue;
        }
        if (first) {
            outcome.size = size;
            outcome.sha256 = sink.sha.hex();
        }
        outcome.copiedTo << relative;
    }
    return outcome;
}

} // namespace quillet

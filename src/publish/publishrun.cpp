#include "publishrun.h"

#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "lib/appstate.h"
#include "lib/debuglog.h"
#include "lib/errorhandler.h"
#include "lib/fileutils.h"
#include "lib/findfiles.h"
#include "lib/texthelpers.h"
#include "lib/userprompt.h"
#include "workspace/allocationtag.h"

#include <QDir>
#include <QFileInfo>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace quillet {

namespace {

// How often the progress report is brought up to date (a repaint per file would cost more than
// the tests of most files).
constexpr int kProgressStep = 64;
// Copy jobs given to the workers ahead of the oldest whose line is not yet written, and how
// long the run waits for one to finish before it looks at the window again.
constexpr int kJobsAhead = 8;
constexpr int kWaitMs = 50;

// A message with the extra button of the port; a question's answer is returned.
bool showWithAction(const QString &style, const QString &text, bool answer, const QString &caption,
                    const std::function<void()> &action)
{
    UserPrompt &port = prompt();
    port.restoreActiveWindow();
    return port.showMessageWithAction(lib_PackMessageRequest(style, 0, text), answer, {caption, action});
}

QString copiesText(int copies)
{
    return QString::number(copies) + (copies == 1 ? QStringLiteral(" copy") : QStringLiteral(" copies"));
}

// The Source Dir listed on a thread of its own, so that the run decides and copies the first
// files while the rest are still being found (20,000 files take a noticeable part of a run, a
// network share much more).
class SourceListing
{
public:
    using Lister = std::function<void(const std::function<void(const QString &)> &)>;

    explicit SourceListing(const Lister &list)
        : m_thread([this, list] {
            list([this](const QString &path) {
                const std::lock_guard<std::mutex> lock(m_lock);
                m_found << path;
                if (m_found.size() % kListingBatch == 0)
                    m_changed.notify_all();
            });
            {
                const std::lock_guard<std::mutex> lock(m_lock);
                m_done = true;
            }
            m_changed.notify_all();
        })
    {
    }
    ~SourceListing() { wait(); }

    // Waits for the listing to end, also when the run stopped early: its count is the run's.
    void wait()
    {
        if (m_thread.joinable())
            m_thread.join();
    }

    // The files found since the last call, waiting up to `waitMs` for a batch of them (or the
    // end). `complete` tells that the listing has ended: count() is then final.
    QStringList take(int waitMs, bool &complete)
    {
        std::unique_lock<std::mutex> lock(m_lock);
        m_changed.wait_for(lock, std::chrono::milliseconds(waitMs),
                           [this] { return m_done || m_found.size() >= m_taken + kListingBatch; });
        complete = m_done;
        const QStringList batch = m_found.mid(m_taken);
        m_taken = m_found.size();
        return batch;
    }
    qsizetype count() const
    {
        const std::lock_guard<std::mutex> lock(m_lock);
        return m_found.size();
    }

private:
    static constexpr qsizetype kListingBatch = 256;

    mutable std::mutex m_lock;
    std::condition_variable m_changed;
    QStringList m_found;
    qsizetype m_taken = 0;
    bool m_done = false;
    std::thread m_thread; // last: it starts at once and uses the members above
};

void openReport(const QString &path)
{
    if (!prompt().openWithDefaultProgram(path))
        lib_MsgWarning(QStringLiteral("Could not open the report ") + path
                       + QStringLiteral(". It is a CSV file: open it in your spreadsheet program."));
}

} // namespace

PublishRun::PublishRun(const PublishNames &names, FamilyDatabase &db, StatusSink status)
    : m_names(names)
    , m_db(db)
    , m_status(std::move(status))
{
}

PublishRun::~PublishRun() = default;

QString PublishRun::confirmationText(const PublishNames &names, const PublishSettings &settings)
{
    QString text = QStringLiteral("This will copy files between the dates specified (in Settings) into the directory specified ready for ")
        + names.confirmEnd;
    if (settings.allowPriv) {
        text += QStringLiteral("  In accordance with your Settings, it will exclude families who requested privacy");
        text += settings.copyPriv
            ? QStringLiteral(" but WILL still include files marked as ") + settings.privacyText + QLatin1Char('.')
            : QStringLiteral(" AND files marked as ") + settings.privacyText + QLatin1Char('.');
    }
    return text + QStringLiteral("  Continue?");
}

void PublishRun::run()
{
    readSettings();
    if (m_settings.tgtDir.isEmpty())
        return;
    if (!m_settings.minDate.isValid() || !m_settings.maxDate.isValid()) {
        lib_MsgWarning(QStringLiteral("The date window in Settings (") + m_settings.minText + QStringLiteral(" to ")
                       + m_settings.maxText
                       + QStringLiteral(") is not of the form yyyymmdd hhnnss. Correct it in Settings > Options."));
        return;
    }
    if (!showWithAction(QStringLiteral("4"), confirmationText(m_names, m_settings), true, QStringLiteral("Pre&view..."),
                        [this] { preview(); }))
        return;
    if (!prepareTargetDir())
        return;
    if (m_status)
        m_status(m_names.progressText);
    copyAll();
    if (m_status)
        m_status(lib_FormatCount(m_copied, QStringLiteral("file")) + QStringLiteral(" copied to ") + m_settings.tgtDir);
    summarise();
    if (!m_cancelled)
        moveWindowOn();
}

void PublishRun::readSettings()
{
    m_settings = PublishSettings::read(m_names, m_db);
    m_sourcePrefix = QDir::cleanPath(m_settings.srcDir) + QLatin1Char('/');
}

bool PublishRun::prepareTargetDir()
{
    const QString dir = m_settings.tgtDir;
    if (!lib_DirExists(dir)) {
        const QString drive = lib_DrivePart(dir);
        if (!lib_DirExists(drive)) {
            lib_MsgWarning(m_names.driveMissing + drive + QStringLiteral(") does not exist"));
            return false;
        }
        if (!lib_MsgYesNo(m_names.createQuestion))
            return false;
        lib_MakePath(dir);
    }
    if (!QFileInfo(dir).isWritable()) {
        lib_MsgWarning(QStringLiteral("The preparation folder ") + dir
                       + QStringLiteral(" cannot be written to (it is read-only). Nothing was copied. Make it writable "
                                        "or choose another folder in Settings > Options."));
        return false;
    }
    if (!lib_DirExists(m_settings.srcDir)) {
        lib_MsgWarning(QStringLiteral("The Source Dir ") + m_settings.srcDir
                       + QStringLiteral(" was not found, so there is nothing to prepare. Is its disk connected?"));
        return false;
    }
    return true;
}

void PublishRun::listSource(const std::function<void(const QString &)> &take) const
{
    // The preparation folder may lie inside the Source Dir: its copies are not sources.
    const QString prepared = QDir::cleanPath(m_settings.tgtDir) + QLatin1Char('/');
    lib_clsFindFiles finder;
    for (bool found = finder.FindFirstFile(m_settings.srcDir, QStringLiteral("*.*"), true); found;
         found = finder.FindNextFile()) {
        if (!finder.IsDir() && !finder.FullFile().startsWith(prepared))
            take(finder.FullFile());
    }
}

QStringList PublishRun::sourceFiles() const
{
    QStringList files;
    listSource([&files](const QString &path) { files << path; });
    return files;
}

QString PublishRun::relativeToSource(const QString &path) const
{
    if (path.startsWith(m_sourcePrefix))
        return path.mid(m_sourcePrefix.size());
    return QDir(m_settings.srcDir).relativeFilePath(path);
}

QStringList PublishRun::targetsOf(const Decision &decision) const
{
    const QString untagged = StripFamIDs(QFileInfo(decision.path).fileName());
    if (!m_settings.inclFam)
        return {untagged};
    QStringList targets;
    for (const PublishFamily *family : decision.families)
        targets << family->folderName + QLatin1Char('/') + untagged;
    return targets;
}

void PublishRun::preview()
{
    readSettings();
    PublishFamilies families(m_db, m_names.exclusionField);
    PublishRules rules(m_settings, families);
    PublishReport report(m_names, m_settings, true, QDateTime::currentDateTime());
    int files = 0;
    {
        BusyPointer busy;
        for (const QString &path : sourceFiles()) {
            const Decision d = rules.decide(path);
            PublishReport::Line line{relativeToSource(path), d.modified, QStringLiteral("left out"),
                                     PublishRules::reason(d, m_names), {}, -1, {}};
            if (d.verdict == Verdict::Copy) {
                line.outcome = QStringLiteral("would be copied");
                line.copiedTo = targetsOf(d);
                ++files;
            }
            report.add(line);
        }
        report.finish();
    }
    m_reportPath = report.path();
    const QString path = m_reportPath;
    const QString text = QStringLiteral("Preview: nothing has been copied yet.\r\n\r\n")
        + lib_FormatCount(files, QStringLiteral("file")) + QStringLiteral(" would go out (") + copiesText(report.copies())
        + QStringLiteral(") to ") + m_settings.tgtDir + QStringLiteral(".\r\n\r\n") + report.totalsText()
        + QStringLiteral("\r\n\r\nEvery file with its outcome is listed in ") + path;
    showWithAction(QStringLiteral("3"), text, lib_MsgAnswer(), QStringLiteral("&Open list"), [path] { openReport(path); });
}

void PublishRun::copyAll()
{
    BusyPointer busy;
    const QDateTime started = QDateTime::currentDateTime();
    m_report = std::make_unique<PublishReport>(m_names, m_settings, false, started);
    m_reportPath = m_report->path();
    m_latest = PublishSettings::zeroDate().toUTC(); // compared with the files' times in UTC
    m_copied = 0;
    m_failures = 0;
    m_filesOut = 0;
    m_cancelled = false;
    m_written.clear();
    m_pending.clear();
    m_outcomes.clear();
    m_recorded = 0;
    m_considered = 0;
    m_jobsWaiting = 0;
    appState().cancel = false;
    PublishFamilies families(m_db, m_names.exclusionField);
    PublishRules rules(m_settings, families);
    UserPrompt &port = prompt();
    port.progressShow(m_names.progressText);
    qsizetype total = -1; // known once the listing has ended
    const auto stopped = [&](const QString &by) -> QString {
        return QStringLiteral("Stopped by ") + by + QStringLiteral(" after ") + QString::number(m_recorded)
            + QStringLiteral(" of ") + QString::number(total) + QStringLiteral(" files");
    };
    {
        PublishCopier copier(m_settings.tgtDir, PublishCopier::workersForThisMachine());
        SourceListing listing([this](const auto &take) { listSource(take); });
        const auto listingEnded = [&] {
            total = listing.count();
            port.progressInit(int(total));
        };
        try {
            bool complete = false;
            while (!appState().cancel) {
                const bool wasComplete = complete;
                const QStringList batch = listing.take(kWaitMs, complete);
                if (complete && !wasComplete)
                    listingEnded();
                for (const QString &path : batch) {
                    if (appState().cancel)
                        break;
                    consider(rules, path, copier);
                    ++m_considered;
                    if (m_considered % kProgressStep == 0 || m_considered == total) {
                        // Until the count is known the window only takes the user's clicks.
                        if (total >= 0)
                            port.progressUpdate(m_considered, m_considered);
                        else
                            port.processEvents();
                    }
                }
                if (complete && m_considered == total)
                    break;
                settle(copier, 0);
                if (batch.isEmpty())
                    port.processEvents();
            }
        } catch (...) {
            // An error (the database) ends the run: what the workers copied is still listed
            // before the error goes to the command's handler.
            m_askedAfterFailure = true;
            copier.dropQueued();
            finishCopies(copier);
            port.progressHide();
            listing.wait();
            total = listing.count();
            m_report->finish(stopped(QStringLiteral("an error")));
            throw;
        }
        finishCopies(copier);
        listing.wait();
        total = listing.count();
    }
    // Stopped before every file was decided and recorded (stopping during the last copies of
    // a run that had decided everything leaves it whole).
    m_cancelled = m_recorded < total;
    port.progressHide();
    m_report->finish(m_cancelled ? stopped(QStringLiteral("the user")) : QString());
    DebugLog(m_names.command + QStringLiteral(": ") + lib_FormatCount(total, QStringLiteral("file"))
             + QStringLiteral(", ") + copiesText(m_copied) + QStringLiteral(" in ")
             + lib_FormatElapsed(9, started.msecsTo(QDateTime::currentDateTime())));
}

void PublishRun::consider(PublishRules &rules, const QString &path, PublishCopier &copier)
{
    const Decision d = rules.decide(path);
    if (d.verdict != Verdict::NotPhoto && d.verdict != Verdict::Vanished && d.verdict != Verdict::OutsideWindow)
        m_latest = std::max(m_latest, d.modified);
    PendingLine pending{{relativeToSource(path), d.modified, QStringLiteral("left out"), PublishRules::reason(d, m_names),
                         {}, -1, {}}};
    if (d.verdict == Verdict::FamilyUnknown)
        lib_MsgWarning(QStringLiteral("Family ID ") + d.detail + QStringLiteral(" assigned to the file was not found in the db"));
    if (d.verdict == Verdict::Copy) {
        const QStringList targets = targetsOf(d);
        // A few jobs ahead of the oldest line still waiting for its copies (so a run that is
        // stopped stops near where it was), and none on a name a job under way is writing (the
        // later photo must be the one that stays).
        while (!appState().cancel && (m_jobsWaiting >= kJobsAhead || copier.busyWith(targets))) {
            // Held back by the copies: woken when half of them are done, not after each.
            settle(copier, kWaitMs, m_jobsWaiting >= kJobsAhead ? kJobsAhead / 2 : 1);
            prompt().progressUpdate(m_considered, m_considered);
        }
        if (appState().cancel)
            return; // stopped while waiting: this file is not considered
        pending.ticket = ++m_tickets;
        ++m_jobsWaiting;
        copier.submit({pending.ticket, path, targets});
    }
    m_pending.push_back(std::move(pending));
    settle(copier, 0);
}

// Waits for the copies under way; when the run was stopped, those not begun are dropped.
void PublishRun::finishCopies(PublishCopier &copier)
{
    while (copier.unfinished() > 0 || !m_pending.empty()) {
        if (appState().cancel)
            copier.dropQueued();
        settle(copier, kWaitMs);
        // The progress window takes the user's clicks (the report throttles itself).
        prompt().progressUpdate(m_considered, m_considered);
    }
}

// Takes in the copies that finished, asks once after the first failure that may be the first of
// many, and writes the lines whose turn has come.
void PublishRun::settle(PublishCopier &copier, int waitMs, int atLeast)
{
    for (PublishCopier::Outcome &outcome : copier.takeFinished(waitMs, atLeast)) {
        if (!outcome.askAbout.isEmpty()) {
            if (!m_askedAfterFailure) {
                m_askedAfterFailure = true;
                if (lib_MsgYesNo(QStringLiteral("Failed to copy ") + outcome.source + QStringLiteral(".\r\nErr: ")
                                 + outcome.askAbout
                                 + QStringLiteral("\r\nFurther failures are only listed in the report.\r\nDo you wish to cancel?"))) {
                    appState().cancel = true;
                    copier.dropQueued();
                }
            }
            copier.resume();
        }
        m_outcomes.insert(outcome.ticket, std::move(outcome));
    }
    while (!m_pending.empty()) {
        PendingLine &front = m_pending.front();
        if (front.ticket >= 0) {
            const auto it = m_outcomes.find(front.ticket);
            if (it == m_outcomes.end())
                return;
            if (!it->begun) {
                // Dropped when the run was stopped, and with it every file decided after it.
                m_pending.clear();
                m_outcomes.clear();
                m_jobsWaiting = 0;
                return;
            }
            recordCopies(front.line, *it);
            m_outcomes.erase(it);
            --m_jobsWaiting;
        }
        m_report->add(front.line);
        ++m_recorded;
        m_pending.pop_front();
    }
}

// The copies of one photo, in the line of the report: where it went, what failed, and whether it
// replaced a copy made earlier in this run.
void PublishRun::recordCopies(PublishReport::Line &line, const PublishCopier::Outcome &outcome)
{
    m_copied += outcome.attempted; // the message line counts every copy attempted
    QStringList notes;
    for (const QString &relative : outcome.copiedTo) {
        const QString earlier = m_written.value(relative);
        if (!earlier.isEmpty())
            notes << QStringLiteral("replaced the copy of ") + earlier + QStringLiteral(" made earlier in this run");
        m_written.insert(relative, line.path);
    }
    line.copiedTo = outcome.copiedTo;
    line.size = outcome.size;
    line.sha256 = outcome.sha256;
    if (!line.copiedTo.isEmpty())
        ++m_filesOut;
    line.outcome = outcome.failures.isEmpty() ? QStringLiteral("copied")
        : line.copiedTo.isEmpty()             ? QStringLiteral("copy failed")
                                              : QStringLiteral("partly copied");
    line.reason = (outcome.failures + notes).join(QStringLiteral("; "));
    if (!outcome.failures.isEmpty())
        ++m_failures;
}

void PublishRun::summarise()
{
    QString text = lib_FormatCount(m_copied, QStringLiteral("file")) + QStringLiteral(" copied to ") + m_settings.tgtDir
        + QLatin1Char('.');
    // The count above is of copies, as the message line gives it; with family folders a photo
    // is copied more than once.
    if (m_settings.inclFam && m_filesOut != m_copied)
        text += QStringLiteral("\r\nThey are the copies of ") + lib_FormatCount(m_filesOut, QStringLiteral("file"))
            + QStringLiteral(" of the Source Dir, one in the folder of each family of a photo.");
    if (m_cancelled)
        text += QStringLiteral("\r\nThe run was stopped before the end: the files after that were not considered.");
    if (m_failures > 0)
        text += QStringLiteral("\r\n") + lib_FormatCount(m_failures, QStringLiteral("file"))
            + QStringLiteral(" could not be copied completely: see the report.");
    text += QStringLiteral("\r\n\r\n") + m_report->totalsText()
        + QStringLiteral("\r\n\r\nEvery decision, with the size and SHA-256 of each copy, is recorded in ") + m_reportPath;
    const QString path = m_reportPath;
    showWithAction(QStringLiteral("3"), text, lib_MsgAnswer(), QStringLiteral("&Open report"), [path] { openReport(path); });
}

void PublishRun::moveWindowOn()
{
    if (!lib_MsgYesNo(m_names.finalQuestion))
        return;
    WriteSetting(m_names.minDateKey, PublishSettings::formatDate(m_latest.toLocalTime().addSecs(1)));
    WriteSetting(m_names.maxDateKey, QStringLiteral("20991231 235959"));
}

} // namespace quillet

#pragma once

#include "publishcopier.h"
#include "publishnames.h"
#include "publishreport.h"
#include "publishrules.h"

#include <QHash>
#include <deque>
#include <functional>
#include <memory>

namespace quillet {

class FamilyDatabase;

// Prepares a web upload or a CD (one routine, two sets of names): copies the allocated photos
// and movies of the date window from the Source Dir into the preparation folder, under their
// names without the allocation tag, leaving out what the families' privacy wishes and the Keep
// Private marker hold back. Every decision goes into a report in the data folder; from the
// confirmation question the user can preview the same decisions without anything copied.
class PublishRun
{
public:
    // Shows a text in the main window's message line.
    using StatusSink = std::function<void(const QString &)>;

    PublishRun(const PublishNames &names, FamilyDatabase &db, StatusSink status = {});
    ~PublishRun();

    // The menu command. Messages and questions go through the user-prompt port; library errors
    // (the database, the report file) are thrown to the command's handler.
    void run();

    // The confirmation question, with the privacy sentences the parameters call for.
    static QString confirmationText(const PublishNames &names, const PublishSettings &settings);

    // What the last run or preview did: its report, the copies counted as the message line counts
    // them, and whether it stopped before the end.
    const QString &reportPath() const { return m_reportPath; }
    int copied() const { return m_copied; }
    bool cancelled() const { return m_cancelled; }
    // The preview offered from the confirmation: decides every file, writes the preview report
    // and shows its totals. Copies nothing and asks nothing.
    void preview();

private:
    // A file decided, waiting in the order of the scan for its copies to finish before its line
    // goes into the report.
    struct PendingLine
    {
        PublishReport::Line line;
        qint64 ticket = -1; // its copy job, or -1 when it is not copied
    };

    void readSettings();
    bool prepareTargetDir();
    void listSource(const std::function<void(const QString &)> &take) const;
    QStringList sourceFiles() const;
    void copyAll();
    void consider(PublishRules &rules, const QString &path, PublishCopier &copier);
    void finishCopies(PublishCopier &copier);
    void settle(PublishCopier &copier, int waitMs, int atLeast = 1);
    void recordCopies(PublishReport::Line &line, const PublishCopier::Outcome &outcome);
    QString relativeToSource(const QString &path) const;
    QStringList targetsOf(const Decision &decision) const;
    void summarise();
    void moveWindowOn();

    const PublishNames &m_names;
    FamilyDatabase &m_db;
    StatusSink m_status;
    PublishSettings m_settings;
    QString m_sourcePrefix; // the Source Dir as the scan's paths start with it
    std::unique_ptr<PublishReport> m_report;
    QString m_reportPath;
    QDateTime m_latest;
    int m_copied = 0;
    int m_failures = 0;
    int m_filesOut = 0; // photos and movies of which at least one copy was made
    bool m_askedAfterFailure = false;
    bool m_cancelled = false;
    // Targets written in this run: a second photo with the same name without its tag replaces
    // the first, and the report says so.
    QHash<QString, QString> m_written;
    // The lines not yet in the report, and the outcomes of copies that finished before the
    // lines ahead of theirs.
    std::deque<PendingLine> m_pending;
    QHash<qint64, PublishCopier::Outcome> m_outcomes;
    qint64 m_tickets = 0;
    qint64 m_recorded = 0; // lines in the report
    int m_jobsWaiting = 0; // copy jobs of the lines not yet in the report
    int m_considered = 0;  // files decided, for the progress report
};

} // namespace quillet

#pragma once

#include "publishnames.h"
#include "publishreport.h"
#include "publishrules.h"

#include <QSet>
#include <functional>
#include <memory>

namespace quillet {

class FamilyDatabase;
class ForeignBase;
class Sha256Worker;

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
    bool prepareTargetDir();
    QStringList sourceFiles() const;
    void copyAll();
    void consider(PublishRules &rules, const QString &path);
    void copyFile(const Decision &decision, PublishReport::Line &line);
    qint64 copyOnce(const QString &source, const QString &relative, QString &failure, Sha256Worker *sha);
    QString relativeToSource(const QString &path) const;
    QStringList targetsOf(const Decision &decision) const;
    void summarise();
    void moveWindowOn();

    const PublishNames &m_names;
    FamilyDatabase &m_db;
    StatusSink m_status;
    PublishSettings m_settings;
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
    // The preparation folder, under which every target is resolved.
    std::unique_ptr<ForeignBase> m_targetBase;
    // Hashes the first copy of each file while it is written.
    std::unique_ptr<Sha256Worker> m_sha;
};

} // namespace quillet

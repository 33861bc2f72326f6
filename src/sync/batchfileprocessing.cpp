#include "batchfileprocessing.h"

#include "batchfilejournal.h"
#include "batchfilename.h"
#include "batchfilereader.h"
#include "batchfilereplay.h"

#include "lib/apppaths.h"
#include "lib/deferredsync.h"
#include "lib/debuglog.h"
#include "lib/error.h"
#include "lib/errorhandler.h"
#include "lib/fileutils.h"
#include "lib/texthelpers.h"
#include "lib/userprompt.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QScopeGuard>

namespace quillet {

namespace {

const QString kCrLf = QStringLiteral("\r\n");

QString processQuestion(const QString &sendingPc, const BatchfileContent &content, const ReplaySettings &s)
{
    return QStringList{QStringLiteral("Found batchfile from:  ") + sendingPc, QString(),
                       QStringLiteral("This batchfile is based on:"), QStringLiteral("Source Dir = ") + content.srcDir,
                       QStringLiteral("Target Dir = ") + content.tgtDir, QString(),
                       QStringLiteral("Your current settings are:"), QStringLiteral("Source Dir = ") + s.srcDir,
                       QStringLiteral("Target Dir = ") + s.tgtDir, QString(),
                       QStringLiteral("If you think the Source & Target dirs on both systems are equivalent, go ahead "
                                      "and process the file."),
                       QStringLiteral("If not, select No and change your Settings to match."), QString(),
                       QStringLiteral("Process it now?")}
        .join(kCrLf);
}

// What the done copies of a batchfile say: the highest count they carry and the rotation
// entries they record as turned or skipped (matched by position, opcode and operand).
struct EarlierReplays
{
    bool exist = false;
    int count = 0;
    QSet<int> rotationsDone;
};

// True when the entries of `done` are, one by one, the first entries of `content`.
bool startsWith(const BatchfileContent &content, const BatchfileContent &done)
{
    if (done.entries.size() > content.entries.size())
        return false;
    for (int i = 0; i < done.entries.size(); ++i) {
        if (done.entries.at(i).opcode != content.entries.at(i).opcode
            || done.entries.at(i).operands != content.entries.at(i).operands)
            return false;
    }
    return true;
}

// With `sameJournal`, only done copies whose entries are, one by one, the first entries of
// `content` count: for a name that is used again by another journal later.
EarlierReplays earlierReplays(const QString &fileName, const BatchfileContent &content, bool sameJournal = false)
{
    EarlierReplays earlier;
    for (const QString &copy : BatchfileName::doneCopiesOf(BatchfileName::doneFolder(), fileName)) {
        const BatchfileContent done = BatchfileReader::readFile(copy);
        // A copy cut short by a crash still tells about its complete entries.
        if (!done.ok() && done.problem != BatchfileContent::Problem::TruncatedEntry)
            continue;
        if (sameJournal && !startsWith(content, done))
            continue;
        earlier.exist = true;
        earlier.count = std::max(earlier.count, done.processedCount);
        for (int i = 0; i < done.entries.size() && i < content.entries.size(); ++i) {
            const BatchfileEntry &was = done.entries.at(i);
            const BatchfileEntry &now = content.entries.at(i);
            if (was.opcode == now.opcode && was.operands == now.operands && was.lineAfter
                && BatchfileReplay::isRotationDoneResult(*was.lineAfter))
                earlier.rotationsDone.insert(i);
        }
    }
    return earlier;
}

// Opens each done batchfile with the desktop's program for it, once per listed entry. Where the
// desktop has none, the user is told once per file where to find it.
void openForReview(const QStringList &paths)
{
    QSet<QString> told;
    for (const QString &path : paths) {
        if (!prompt().openWithDefaultProgram(path) && !told.contains(path)) {
            told.insert(path);
            lib_MsgWarning(QStringLiteral("Could not open ") + path
                           + QStringLiteral(" here. Open it in a text editor to review it."));
        }
    }
}

} // namespace

BatchfileProcessing::BatchfileProcessing(FamilyDatabase *db)
    : m_db(db)
{
}

bool BatchfileProcessing::ask(const QString &text, bool defaultYes)
{
    QElapsedTimer question;
    question.start();
    const bool yes = lib_MsgYesNo(text, 0, defaultYes);
    m_questionMs += question.elapsed();
    return yes;
}

QStringList BatchfileProcessing::FindBatchfiles(const QString &pcName)
{
    QStringList found;
    const QFileInfoList entries = QDir(AppPaths::dataDir()).entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo &entry : entries) {
        const QString name = entry.fileName();
        if (!name.startsWith(QLatin1String("_Batchfile_"), Qt::CaseInsensitive))
            continue;
        if (BatchfileName::isConflictCopy(name)) {
            BatchfileName::reportConflictCopy(entry.absoluteFilePath());
            continue;
        }
        if (!BatchfileName::isBatchfile(name))
            continue;
        const QString path = entry.absoluteFilePath();
        if (path == QFileInfo(Batchfile::CurrentPath()).absoluteFilePath()
            || BatchfileName::belongsTo(name, pcName, Qt::CaseSensitive)) {
            DebugLog(QStringLiteral("   Found ") + path + QStringLiteral(", not from another computer, ignore"));
            continue;
        }
        DebugLog(QStringLiteral("   Found ") + path + QStringLiteral(", will process"));
        found << path;
    }
    std::sort(found.begin(), found.end(),
              [](const QString &a, const QString &b) { return a.compare(b, Qt::CaseInsensitive) < 0; });
    return found.mid(0, ReplayOutcome::kMaxListed);
}

void BatchfileProcessing::ProcessBatchfiles()
{
    // The progress window lets events run between entries; a Refresh chosen meanwhile must not
    // start a second replay of the same batchfile.
    static bool running = false;
    if (running) {
        DebugLog(QStringLiteral("ProcessBatchfiles: a replay is running already"));
        return;
    }
    running = true;
    const auto done = qScopeGuard([] { running = false; });
    m_clock.start();
    m_questionMs = 0;
    m_blockedPcs.clear();
    ReplayOutcome outcome;
    try {
        const ReplaySettings settings = ReplaySettings::read(m_db);
        DebugLog(QStringLiteral("Looking for batchfiles to process"));
        for (const QString &path : FindBatchfiles(settings.pcName)) {
            if (!processOne(path, settings, outcome))
                break;
        }
    } catch (const Error &e) {
        prompt().progressHide();
        lib_ErrorHandler(QStringLiteral("ProcessBatchfiles"), e);
    }
    finish(outcome);
}

bool BatchfileProcessing::processOne(const QString &path, const ReplaySettings &settings, ReplayOutcome &outcome)
{
    const QString fileName = QFileInfo(path).fileName();
    const QString sendingPc = BatchfileName::sendingPc(fileName);
    if (m_blockedPcs.contains(sendingPc)) {
        DebugLog(QStringLiteral("   Left ") + path + QStringLiteral(" for later: an older batchfile of ") + sendingPc
                 + QStringLiteral(" could not be processed"));
        return true;
    }
    BatchfileContent content = BatchfileReader::readFile(path);
    if (!content.ok()) {
        // Later batchfiles of that PC build on this one; none of them is replayed before it.
        m_blockedPcs.insert(sendingPc);
        DebugLog(QStringLiteral("   Not processed ") + path + QStringLiteral(": ") + content.problemText);
        QElapsedTimer shown;
        shown.start();
        lib_MsgWarning(QStringLiteral("The batchfile ") + path + QStringLiteral(" was not processed: ")
                       + content.problemText + QStringLiteral(".") + kCrLf
                       + QStringLiteral("It has been left where it is. If it is still arriving, Refresh later; "
                                        "otherwise ask the other computer to export its batchfiles again and "
                                        "delete this one."));
        m_questionMs += shown.elapsed();
        return true;
    }
    if (!ask(processQuestion(sendingPc, content, settings)))
        return true;
    const EarlierReplays earlier = earlierReplays(fileName, content);
    content.processedCount = std::max(content.processedCount, earlier.count);
    if (content.processedCount > 0
        && !ask(QStringLiteral("This batchfile has already been processed ") + QString::number(content.processedCount)
                + QStringLiteral(" time") + (content.processedCount == 1 ? QString() : QStringLiteral("s"))
                + QStringLiteral(". Do you wish to reprocess it?") + kCrLf
                + QStringLiteral("(rotations will be skipped this time)")))
        return true;

    if (!replayInto(fileName, content, settings, outcome, earlier.rotationsDone, earlier.exist)) {
        DebugLog(QStringLiteral("   Cancelled ") + path + QStringLiteral(", left for the next run"));
        return false;
    }
    lib_KillFile(path, true);
    return true;
}

bool BatchfileProcessing::replayInto(const QString &fileName, const BatchfileContent &content,
                                     const ReplaySettings &settings, ReplayOutcome &outcome,
                                     const QSet<int> &rotationsDone, bool resumed)
{
    lib_MakePath(BatchfileName::doneFolder());
    const QString donePath =
        BatchfileName::uniqueDonePath(BatchfileName::doneFolder(), fileName, QDateTime::currentDateTime());
    QFile done(donePath);
    if (!done.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        throw Error(kErrPathFileAccess, QStringLiteral("ProcessBatchfiles"),
                    done.errorString() + QStringLiteral("\r\nFile:") + donePath);
    UserPrompt &port = prompt();
    port.progressShow(QStringLiteral("Processing batchfile..."));
    port.progressInit(content.operationCount());
    BatchfileReplay replay(settings, outcome);
    if (resumed)
        replay.resumeAfter(rotationsDone);
    bool complete = false;
    {
        DeferredSync sync; // one flush to the disk at the end, as Save does
        complete = replay.run(content, done);
    }
    done.close();
    return complete;
}

QStringList BatchfileProcessing::ReplayAdopted(const QStringList &paths, const QSet<QString> &turnedAlready)
{
    m_clock.start();
    m_questionMs = 0;
    ReplayOutcome outcome;
    qsizetype p = 0;
    try {
        const ReplaySettings settings = ReplaySettings::read(m_db);
        for (; p < paths.size(); ++p) {
            const QString &path = paths.at(p);
            const QString fileName = QFileInfo(path).fileName();
            const BatchfileContent content = BatchfileReader::readFile(path);
            if (!content.ok()) {
                DebugLog(QStringLiteral("   Not carried out here ") + path + QStringLiteral(": ") + content.problemText);
                QElapsedTimer shown;
                shown.start();
                lib_MsgWarning(QStringLiteral("The Portable Copy's batchfile ") + path
                               + QStringLiteral(" could not be carried out on this computer: ") + content.problemText
                               + QStringLiteral(".") + kCrLf
                               + QStringLiteral("It is taken over as it is and sent on with the next batchfile export; "
                                                "allocate the photos it names again here if they are missing."));
                m_questionMs += shown.elapsed();
                continue;
            }
            // The rotations this import finds done: those of an earlier, interrupted run of it
            // (the device's current batchfile has the same name on every trip), and those of the
            // photos that came back turned.
            QSet<int> rotationsDone = earlierReplays(fileName, content, true).rotationsDone;
            for (int i = 0; i < content.entries.size(); ++i) {
                const BatchfileEntry &entry = content.entries.at(i);
                const bool rotation = entry.opcode == QLatin1String(Batchfile::kRotateSourceLeft)
                    || entry.opcode == QLatin1String(Batchfile::kRotateSourceRight);
                if (!rotation || entry.operands.isEmpty())
                    continue;
                const QString operand = QString(entry.operands.first()).replace(QLatin1Char('\\'), QLatin1Char('/'));
                if (turnedAlready.contains(lib_FilePart(operand).toLower()))
                    rotationsDone.insert(i);
            }
            DebugLog(QStringLiteral("   Carrying out the Portable Copy's batchfile ") + path);
            if (!replayInto(fileName, content, settings, outcome, rotationsDone, true)) {
                DebugLog(QStringLiteral("   Cancelled ") + path);
                break;
            }
        }
    } catch (const Error &e) {
        // The journal it stopped at (and those after it) stays where it is.
        prompt().progressHide();
        lib_ErrorHandler(QStringLiteral("ImportFromPortableCopy"), e);
    }
    finish(outcome);
    return paths.mid(p);
}

void BatchfileProcessing::finish(const ReplayOutcome &outcome)
{
    UserPrompt &port = prompt();
    port.progressHide();
    DebugLog(QStringLiteral("ProcessBatchfiles: \t") + lib_FormatElapsed(9, m_clock.elapsed() - m_questionMs));
    if (!outcome.noErrors) {
        lib_MsgWarning(QStringLiteral("There were errors during processing of the batchfiles.  Review the batchfile "
                                      "(which will be opened in a moment) looking for lines starting 'Results: "
                                      "failed'."));
        openForReview(outcome.failures);
    }
    if (!outcome.notFound.isEmpty()
        && lib_MsgYesNo(QStringLiteral("Some source files were not found during processing of the batchfiles.  This "
                                       "is often ok if you have already moved/allocated them on this computer. If "
                                       "required, review the batchfiles. Would you like to open these now? (look "
                                       "for lines starting 'Results: source')."),
                        0, false)) {
        openForReview(outcome.notFound);
    }
}

void BatchfileProcessing::CleanupOldBatchfiles()
{
    const QDateTime now = QDateTime::currentDateTime();
    const QFileInfoList entries =
        QDir(BatchfileName::doneFolder()).entryInfoList({QStringLiteral("*_Batchfile_*.log")}, QDir::Files);
    for (const QFileInfo &entry : entries) {
        if (entry.lastModified().secsTo(now) > 31LL * 24 * 3600)
            lib_KillFile(entry.absoluteFilePath());
    }
}

} // namespace quillet

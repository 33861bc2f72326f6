// The source photo list of the workspace: scanning the Source Dir and filling the list.
#include "workspace.h"

#include "allocationtag.h"
#include "orderedprefetch.h"
#include "sessionrules.h"

#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/appstate.h"
#include "lib/debuglog.h"
#include "lib/errorhandler.h"
#include "lib/fileutils.h"
#include "lib/findfiles.h"
#include "lib/userprompt.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QtConcurrent/QtConcurrentRun>

#include <optional>

namespace quillet {

namespace {

// Rows whose dates one worker reads in one go: enough to make the hand-over cheap, few enough
// that the list grows and the window is served many times a second.
constexpr int kRowsPerChunk = 256;
// The longest the loops of a load keep the window waiting for its events.
constexpr int kEventsEveryMs = 20;
// How often the entries made so far are added to the list while it fills.
constexpr int kAppendEveryMs = 250;

// Lets the window's timers and painting run every so often during a long loop on this thread.
class EventPacer
{
public:
    EventPacer() { m_since.start(); }
    void serve(QEventLoop::ProcessEventsFlags flags = QEventLoop::ExcludeUserInputEvents)
    {
        if (m_since.elapsed() < kEventsEveryMs)
            return;
        QCoreApplication::processEvents(flags);
        m_since.restart();
    }

private:
    QElapsedTimer m_since;
};

struct FoundFile
{
    QString path;
    QString name;
};

// The walk of the Source Dir, on a worker thread: the directory listing of 20,000 files takes a
// good part of a second, which the window must not wait for. Touches nothing shared.
QList<FoundFile> findAll(const QString &srcDir, bool recurse, std::optional<Error> &failure)
{
    QList<FoundFile> found;
    try {
        lib_clsFindFiles finder;
        for (bool more = finder.FindFirstFile(srcDir, QStringLiteral("*.*"), recurse); more; more = finder.FindNextFile())
            found.append({finder.FullFile(), finder.File()});
    } catch (const Error &e) {
        failure = e;
    }
    return found;
}

} // namespace

bool Workspace::scanSourceDir(bool debug, QStringList &debugLines)
{
    m_srcFiles.ResetScanZone();
    const QString srcDir = ReadSetting(QStringLiteral("SrcDir"));
    const bool recurse = ReadSetting(QStringLiteral("SrcDirInclSubs")) == QLatin1String("1");
    std::optional<Error> failure;
    const QFuture<QList<FoundFile>> walk = QtConcurrent::run([&] { return findAll(srcDir, recurse, failure); });
    AwaitServingEvents(walk);
    const QList<FoundFile> found = walk.result();
    if (failure)
        throw *failure;
    EventPacer pacer;
    for (const FoundFile &file : found) {
        pacer.serve();
        if (!SrcFiles::IsAcceptedName(file.name)) {
            if (debug)
                debugLines << QStringLiteral("false,") + file.path;
            continue;
        }
        const int before = m_srcFiles.SrcFilesCount();
        const int row = m_srcFiles.AddScannedFile(file.path);
        if (debug) {
            QString line = QStringLiteral("true,") + file.path + QLatin1Char(',') + StripFamIDs(file.name);
            if (m_srcFiles.SrcFilesCount() > before)
                line += m_srcFiles.row(row).isAllocated() ? QStringLiteral(",true") : QStringLiteral(",false");
            debugLines << line;
        }
    }
    return true;
}

void Workspace::writeDebugList(const QStringList &lines, bool removeAllocated)
{
    QFile f(GetDebugViewPath());
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return;
    QString text = QStringLiteral("Type Accepted,Path\\File,File No FamIDs,Allocated\r\n,Remove Allocateds=")
        + (removeAllocated ? QStringLiteral("True") : QStringLiteral("False")) + QStringLiteral("\r\n");
    for (const QString &line : lines)
        text += line + QStringLiteral("\r\n");
    f.write(text.toUtf8());
}

void Workspace::loadUndoLevels()
{
    if (!m_undos) {
        m_srcFiles.Clear();
        return;
    }
    // A reload must not lose the levels made since the last one: write them, then read them back
    // as rows of the table's undo zone.
    if (appState().systemLoaded)
        m_undos->SaveToFile();
    m_undos->LoadFromFile();
    m_undos->SetUndoLevelsCntLbl();
}

Workspace::LoadResult Workspace::LoadSource(bool removeAllocated, bool debug)
{
    lib_Stopwatch(1);
    Q_EMIT statusText(QStringLiteral("Loading source files..."));
    appState().cancel = false;
    if (debug)
        DebugLog(QStringLiteral("LoadSource: \tDebug list file created = ") + GetDebugViewPath());

    if (m_undos)
        m_undos->JumpToNewUndoLevel();
    m_sourceList.clear();
    m_sourceList.setThumbnailView(m_options.thumbnails);
    m_thumbnailStore.clear();
    loadUndoLevels();
    QStringList debugLines;
    scanSourceDir(debug, debugLines);
    // Both views list the photos in name order, so that switching views keeps the order and
    // with it the day/session groups.
    m_srcFiles.SortScanZone();
    if (debug)
        writeDebugList(debugLines, removeAllocated);

    if (m_options.thumbnails) {
        m_placeholder = QImage(AppPaths::placeholderPicture());
        if (m_placeholder.isNull()) {
            lib_MsgError(QStringLiteral("Error: file ") + AppPaths::placeholderPicture() + QStringLiteral(" not found"));
            return LoadResult::PlaceholderMissing;
        }
        m_sourceList.setPlaceholder(m_placeholder);
    }
    fillList(removeAllocated);
    const bool cancelled = appState().cancel;
    Q_EMIT sourceCountChanged(m_sourceList.rowCount());
    if (debug)
        ShowDebugText(QString(), GetDebugViewPath());
    Q_EMIT statusText(QString());
    DebugLogTiming(QStringLiteral("LoadSource"));
    return cancelled ? LoadResult::Cancelled : LoadResult::Done;
}

bool Workspace::showFillProgress(bool useExif, int count)
{
    const bool thumbnails = m_options.thumbnails;
    if (!thumbnails && !useExif)
        return false;
    // The thumbnails themselves are made while their rows are in view, after the list is
    // complete; the caption names what the list shows, as it always has.
    prompt().progressShow(thumbnails && useExif ? QStringLiteral("Loading thumbnails and EXIF dates...")
                          : thumbnails          ? QStringLiteral("Loading thumbnails...")
                                                : QStringLiteral("Loading EXIF dates..."));
    prompt().progressInit(count);
    return true;
}

namespace {

// The rows a load lists, in table order, with what the workers need to date them.
struct ListedRows
{
    QList<int> rows;
    QStringList paths;
    QList<bool> needDate; // allocated photos take no part in the grouping
};

ListedRows rowsToList(const SrcFiles &table, bool removeAllocated)
{
    ListedRows out;
    EventPacer pacer;
    for (int i = 1; i <= table.SrcFilesCount(); ++i) {
        pacer.serve();
        const SrcFiles::Row &row = table.row(i);
        if (removeAllocated && row.isAllocated())
            continue;
        out.rows << i;
        out.paths << row.PathFile;
        out.needDate << !row.isAllocated();
    }
    return out;
}

SourceListModel::Entry entryOf(int index, const SrcFiles::Row &row, SessionRules::Grouping &grouping,
                               const QDateTime &date)
{
    SourceListModel::Entry entry;
    entry.row = index;
    entry.text = row.FileNoFamIDs;
    if (row.isAllocated()) {
        entry.tag = entry.colour = QStringLiteral("BLUE");
    } else {
        entry.tag = QStringLiteral("BLACK");
        entry.colour = grouping.next(date);
        entry.taken = date;
    }
    return entry;
}

} // namespace

void Workspace::fillList(bool removeAllocated)
{
    const ListedRows listed = rowsToList(m_srcFiles, removeAllocated);
    // The dates are read on worker threads a few chunks ahead of this loop, which takes them in
    // order: the grouping, the cancel and the progress stay those of a loop over the rows.
    const bool useExif = m_options.useExifDate;
    const PhotoServices services = m_services;
    const int chunks = int((listed.rows.size() + kRowsPerChunk - 1) / kRowsPerChunk);
    OrderedPrefetch<QList<QDateTime>> dates(chunks, [=, paths = listed.paths, needDate = listed.needDate](int c) {
        QList<QDateTime> out;
        const int end = std::min(int(paths.size()), (c + 1) * kRowsPerChunk);
        for (int k = c * kRowsPerChunk; k < end; ++k)
            out << (needDate.at(k) ? PhotoDate(services, paths.at(k), useExif) : QDateTime());
        return out;
    });

    UserPrompt &port = prompt();
    const bool showProgress = showFillProgress(useExif, int(listed.rows.size()));
    SessionRules::Grouping grouping(m_options.morningEnd, m_options.afternoonEnd);
    EventPacer pacer;
    // Entries reach the list a few times a second: a view lays out all its entries again after
    // each insertion, which at 20,000 entries is work the window would wait for.
    QList<SourceListModel::Entry> batch;
    QElapsedTimer sinceAppend;
    sinceAppend.start();
    for (int c = 0; c < chunks && !appState().cancel; ++c) {
        const QList<QDateTime> chunk = dates.take(c);
        for (int j = 0; j < chunk.size() && !appState().cancel; ++j) {
            const int k = c * kRowsPerChunk + j;
            const int index = listed.rows.at(k);
            batch << entryOf(index, m_srcFiles.row(index), grouping, chunk.at(j));
            if (showProgress)
                port.progressUpdate(k + 1, k + 1);
        }
        if (sinceAppend.elapsed() >= kAppendEveryMs) {
            m_sourceList.append(batch);
            batch.clear();
            sinceAppend.restart();
        }
        // The progress window lets user input in as well (it is how it is closed).
        pacer.serve(QEventLoop::AllEvents);
    }
    m_sourceList.append(batch); // also what was made before a cancel
    dates.cancel();
    if (showProgress)
        port.progressHide();
}

} // namespace quillet

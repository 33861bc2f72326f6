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

#include <QFile>
#include <QFileInfo>

namespace quillet {

bool Workspace::scanSourceDir(bool debug, QStringList &debugLines)
{
    m_srcFiles.ResetScanZone();
    lib_clsFindFiles finder;
    const QString srcDir = ReadSetting(QStringLiteral("SrcDir"));
    const bool recurse = ReadSetting(QStringLiteral("SrcDirInclSubs")) == QLatin1String("1");
    for (bool found = finder.FindFirstFile(srcDir, QStringLiteral("*.*"), recurse); found; found = finder.FindNextFile()) {
        const QString path = finder.FullFile();
        if (!SrcFiles::IsAcceptedName(finder.File())) {
            if (debug)
                debugLines << QStringLiteral("false,") + path;
            continue;
        }
        const int before = m_srcFiles.SrcFilesCount();
        const int row = m_srcFiles.AddScannedFile(path);
        if (debug) {
            QString line = QStringLiteral("true,") + path + QLatin1Char(',') + StripFamIDs(finder.File());
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
    m_thumbnails.clear();
    loadUndoLevels();
    QStringList debugLines;
    scanSourceDir(debug, debugLines);
    if (m_options.thumbnails)
        m_srcFiles.SortScanZone();
    if (debug)
        writeDebugList(debugLines, removeAllocated);

    if (m_options.thumbnails) {
        m_placeholder = QImage(AppPaths::placeholderPicture());
        if (m_placeholder.isNull()) {
            lib_MsgError(QStringLiteral("Error: file ") + AppPaths::placeholderPicture() + QStringLiteral(" not found"));
            return LoadResult::PlaceholderMissing;
        }
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

void Workspace::fillList(bool removeAllocated)
{
    // The rows to show, in table order; their thumbnails and dates are worked out on worker
    // threads a little ahead of the loop, which keeps its order and its cancel.
    QList<int> rows;
    for (int i = 1; i <= m_srcFiles.SrcFilesCount(); ++i) {
        if (!(removeAllocated && m_srcFiles.row(i).isAllocated()))
            rows << i;
    }
    const bool thumbnails = m_options.thumbnails;
    const bool useExif = m_options.useExifDate;
    const bool showProgress = thumbnails || useExif;
    QStringList paths;
    QList<bool> needDate;
    QList<bool> needThumb;
    for (int i : rows) {
        paths << m_srcFiles.row(i).PathFile;
        needDate << !m_srcFiles.row(i).isAllocated();
        needThumb << !m_thumbnails.contains(i); // undo photos' thumbnails are already loaded
    }
    const PhotoServices services = m_services;
    OrderedPrefetch<RowWork> work(int(rows.size()), [=](int k) {
        RowWork w;
        if (thumbnails && services.thumbnail && needThumb.at(k))
            w.thumbnail = services.thumbnail(paths.at(k));
        if (needDate.at(k))
            w.date = PhotoDate(services, paths.at(k), useExif);
        return w;
    });

    UserPrompt &port = prompt();
    if (showProgress) {
        port.progressShow(thumbnails && useExif ? QStringLiteral("Loading thumbnails and EXIF dates...")
                          : thumbnails          ? QStringLiteral("Loading thumbnails...")
                                                : QStringLiteral("Loading EXIF dates..."));
        port.progressInit(int(rows.size()));
    }
    SessionRules::Grouping grouping(m_options.morningEnd, m_options.afternoonEnd);
    for (int k = 0; k < rows.size(); ++k) {
        if (appState().cancel)
            break;
        const RowWork w = work.take(k);
        const SrcFiles::Row &row = m_srcFiles.row(rows.at(k));
        SourceListModel::Entry entry;
        entry.row = rows.at(k);
        entry.text = row.FileNoFamIDs;
        if (row.isAllocated()) {
            entry.tag = entry.colour = QStringLiteral("BLUE");
        } else {
            entry.tag = QStringLiteral("BLACK");
            entry.colour = grouping.next(w.date);
            entry.taken = w.date;
        }
        if (thumbnails) {
            entry.thumbnail = !needThumb.at(k) ? m_thumbnails.value(entry.row)
                : w.thumbnail.isNull()         ? m_placeholder
                                               : w.thumbnail;
            m_thumbnails.insert(entry.row, entry.thumbnail);
        }
        m_sourceList.append(entry);
        if (showProgress)
            port.progressUpdate(k + 1, k + 1);
    }
    work.cancel();
    if (showProgress)
        port.progressHide();
}

} // namespace quillet

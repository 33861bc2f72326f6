#include "allocationsave.h"

#include "allocationtag.h"
#include "copytargets.h"
#include "workspace.h"

#include "app/settingsstore.h"
#include "imaging/copyresizedimage.h"
#include "lib/appstate.h"
#include "lib/debuglog.h"
#include "lib/error.h"
#include "lib/errorhandler.h"
#include "lib/deferredsync.h"
#include "lib/fileutils.h"
#include "lib/texthelpers.h"
#include "lib/userprompt.h"
#include "sync/batchfilejournal.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <optional>

namespace quillet {

namespace {

constexpr int kMaxTargetPath = 256;

// "1h 2m 3s", "3m 20s", "40s".
QString duration(double seconds)
{
    const qint64 total = qRound64(std::max(0.0, seconds));
    const qint64 h = total / 3600, m = total % 3600 / 60, s = total % 60;
    QString text;
    if (h > 0)
        text += QString::number(h) + QStringLiteral("h ");
    if (h > 0 || m > 0)
        text += QString::number(m) + QStringLiteral("m ");
    return text + QString::number(s) + QLatin1Char('s');
}

} // namespace

// The settings and working values of one Save.
struct AllocationSave::Run
{
    QString srcDir, tgtDir, portDir;
    bool assnSub = false, assnSrcSub = false, createBatchs = false, batchOnly = false;
    bool targetResize = false, portable = false, showParent = false;
    int resizeMD = 0, resizeQ = 0, resizeExclFam = 0;

    QList<int> families; // selected family list positions, in list order
    QString tag;
    int copyCount = 0;
    int itemsLeft = 0;  // undo items still to record
    bool privacyChosen = false;
    int firstListPos = -1;
    int copiesDone = 0;
    bool noUndo = false;
    bool stopped = false;
    std::optional<BatchfileWriter> journal;
    // "photo to family" of every copy that failed and that the user chose to go on without.
    QStringList undelivered;
};

AllocationSave::AllocationSave(Workspace &workspace, QObject *parent)
    : QObject(parent)
    , m_ws(workspace)
    , m_resizedCopy([](const QString &source, const QString &target, int sizeCode, int qualityCode) {
        return CopyResizedImage(source, target, qint16(sizeCode), qint16(qualityCode));
    })
    , m_clock([] { return QDateTime::currentMSecsSinceEpoch(); })
{
    m_activity.setInterval(10000);
    connect(&m_activity, &QTimer::timeout, this, &AllocationSave::ActivityTimeout);
}

AllocationSave::~AllocationSave() = default;

QString AllocationSave::FamilyFolderName(const QString &entryText, bool showParent)
{
    const QString text = entryText.trimmed();
    const int dash = text.indexOf(QLatin1String(" - "));
    if (showParent && dash >= 0)
        return text.mid(dash + 3).trimmed();
    return text;
}

void AllocationSave::Save()
{
    try {
        // One flush to the disk at the end of the Save instead of one per copy and journal line.
        DeferredSync sync;
        doSave();
    } catch (const Error &e) {
        lib_ErrorHandler(QStringLiteral("cmdSave_Click()"), e);
    }
}

void AllocationSave::doSave()
{
    BusyPointer busy;
    clsUndos &undos = m_ws.undos();
    int reviewed = 0;
    if (undos.ReviewingUndo()) {
        // A reviewed level is being corrected: undo it first, keeping the user's new choice.
        reviewed = undos.UndoLevelCurr();
        undos.UndoLastLevel(true);
    }
    ++m_saveCount;
    Run run;
    if (!plan(run))
        return;
    if (!clsUndos::TestCanUndo(run.itemsLeft)) {
        if (!lib_MsgYesNo(QStringLiteral("There are ") + lib_FormatCount(run.copyCount, QStringLiteral("file"))
                          + QStringLiteral(" to copy which is too many to undo. Continue without undo capability?")))
            return;
        run.noUndo = true;
    }
    if (!run.noUndo)
        undos.CreateUndoInit();
    if (run.createBatchs)
        run.journal.emplace();
    appState().cancel = false;
    processPhotos(run);
    if (run.journal) {
        try {
            run.journal->close();
        } catch (const Error &) {
            // Closing errors are ignored: every entry was flushed as it was written.
        }
    }
    finish(run, reviewed);
}

bool AllocationSave::plan(Run &run) const
{
    run.srcDir = ReadSetting(QStringLiteral("SrcDir"));
    run.tgtDir = ReadSetting(QStringLiteral("TgtDir"));
    run.assnSub = ReadSettingBool(QStringLiteral("AssnSubToTgt"));
    run.assnSrcSub = ReadSettingBool(QStringLiteral("AssnSrcSubToTgt"));
    run.createBatchs = ReadSettingBool(QStringLiteral("CreateBatchs"));
    run.batchOnly = ReadSettingBool(QStringLiteral("BatchOnly"));
    run.targetResize = ReadSettingBool(QStringLiteral("TargetResize"));
    run.resizeMD = ReadSettingInt(QStringLiteral("TargetResizeMD"));
    run.resizeQ = ReadSettingInt(QStringLiteral("TargetResizeQ"));
    run.resizeExclFam = ReadSettingInt(QStringLiteral("ResizeExclFam"));
    run.portable = IsPortableCopy() && run.createBatchs;
    if (run.portable)
        run.portDir = ReadSetting(QStringLiteral("PortCopyOrigCopyDir"));
    run.showParent = m_ws.options().showParent;

    const QList<int> photos = m_ws.sourceList().selectedPositions();
    const FamilyListModel &families = m_ws.familyList();
    QStringList entries;
    for (int f : families.selectedPositions()) {
        const bool marker = families.at(f).familyId == FamilyListModel::kPrivacyMarkerId;
        if (marker)
            run.privacyChosen = run.privacyChosen || !photos.isEmpty();
        else
            run.copyCount += int(photos.size());
        if (!marker && run.firstListPos < 0 && !photos.isEmpty())
            run.firstListPos = photos.first();
        entries << (marker ? QStringLiteral("P") : QString::number(families.at(f).familyId));
        run.families << f;
    }
    run.tag = BuildAllocationTag(entries);
    // One undo item per (photo, entry), the privacy marker's included.
    run.itemsLeft = int(photos.size() * run.families.size());
    return run.copyCount > 0;
}

void AllocationSave::processPhotos(Run &run)
{
    SourceListModel &list = m_ws.sourceList();
    // The count is re-read on every step: saved photos leave the list as the loop goes.
    for (int p = 0; p < list.rowCount() && !run.stopped; ++p) {
        if (!list.at(p).selected)
            continue;
        if (!savePhoto(run, list.at(p).row))
            continue;
        if (!m_ws.options().showAllocated) {
            list.removeAt(p);
            --p;
        }
        m_ws.ReportSourceCount();
    }
}

bool AllocationSave::savePhoto(Run &run, int row)
{
    clsUndos &undos = m_ws.undos();
    const SrcFiles::Row photo = m_ws.srcFiles().row(row);
    const QString newName = TaggedName(photo.FileNoFamIDs, run.tag);
    const QString newPath = lib_JoinPath(lib_DirPart(photo.PathFile), newName);
    const QString relSource = Batchfile::RelativePath(photo.PathFile, run.srcDir);
    for (int f : run.families) {
        const FamilyListModel::Entry &family = m_ws.familyList().at(f);
        QString target;
        if (family.familyId != FamilyListModel::kPrivacyMarkerId) {
            QStringList folder{FamilyFolderName(family.text, run.showParent)};
            if (run.assnSub)
                folder << lib_FilePart(lib_DirPart(photo.PathFile));
            else if (run.assnSrcSub)
                folder << lib_FilePart(run.srcDir);
            const QString targetDir = lib_JoinPath(run.tgtDir, folder.join(QLatin1Char('/')));
            target = lib_JoinPath(targetDir, photo.FileNoFamIDs);
            const bool plain = family.familyId == run.resizeExclFam || !run.targetResize;
            // Another photo of this name already in the folder keeps its copy; this one gets its own.
            target = CopyTargets::ForPhoto(target, lib_JoinPath(lib_DirPart(photo.PathFile), photo.FileNoFamIDs),
                                           photo.PathFile, plain, &undos);
            if (target.size() > kMaxTargetPath) {
                lib_MsgError(QStringLiteral("The target path\\filename for one photo is too long. Please choose a "
                                            "different Target Dir (create a network 'share')."));
                run.stopped = true;
                return false;
            }
            if (!copyToFamily(run, photo.PathFile, targetDir, target, family.familyId)) {
                run.stopped = true;
                return false;
            }
            // The journal names the copy as made here, so the other PCs replay the same name.
            if (run.journal)
                run.journal->entry(Batchfile::kCopySource,
                                   {relSource, folder.join(QLatin1Char('\\')) + QLatin1Char('\\') + lib_FilePart(target)});
        }
        if (!run.noUndo)
            undos.CreateUndoFill(run.itemsLeft, photo.FileNoFamIDs, row, newPath, target, family.familyId,
                                 SourceListModel::KeyOf(row));
        --run.itemsLeft;
    }
    if (!run.noUndo)
        undos.CreateUndoFin();
    if (run.journal)
        run.journal->entry(Batchfile::kRenameSource, {relSource, newName});
    return renameSource(run, row, newPath);
}

bool AllocationSave::copyToFamily(Run &run, const QString &source, const QString &targetDir, const QString &target,
                                  int familyId)
{
    const bool excluded = familyId == run.resizeExclFam;
    if (!excluded && run.batchOnly && run.createBatchs)
        return true; // the other PC makes this copy when it replays the journal
    const bool plain = excluded || !run.targetResize;
    bool made = false;
    try {
        if (!lib_MakePath(targetDir))
            throw Error(kLibErrorNumber, QStringLiteral("Lib09.lib_MakePath"),
                        QStringLiteral("Could not create the folder ") + targetDir + QStringLiteral("\r\n")
                            + appState().lastSystemError);
        if (plain) {
            lib_CopyFile(source, target, true);
        } else if (!m_resizedCopy(source, target, run.resizeMD, run.resizeQ)) {
            return false; // the user chose to cancel after a failed resize
        }
        // A resized copy that failed and was passed over reports true all the same.
        made = QFileInfo::exists(target);
    } catch (const Error &e) {
        const QString first = (plain ? QStringLiteral("Failed to copy ") : QStringLiteral("Failed to load/copy ")) + source
            + QLatin1Char('.');
        if (askCancel(first, e.description()))
            return false;
    }
    if (!made) {
        // The Save goes on as if the copy had been made; its end names every copy that is missing.
        run.undelivered << lib_FilePart(source) + QStringLiteral(" to ") + Batchfile::RelativePath(targetDir, run.tgtDir);
        DebugLog(QStringLiteral("cmdSave_Click: \tcopy not made: ") + source + QStringLiteral(" to ") + target);
    }
    ++run.copiesDone;
    m_ws.ShowStatus(lib_FormatCount(run.copiesDone, QStringLiteral("file")) + QStringLiteral(" copied (of ")
                    + QString::number(run.copyCount) + QLatin1Char(')'));
    return true;
}

bool AllocationSave::askCancel(const QString &firstLine, const QString &error) const
{
    QString text = firstLine + QStringLiteral("\r\n");
    if (!error.isEmpty())
        text += QStringLiteral("Err: ") + error + QStringLiteral("\r\n");
    const bool cancel = lib_MsgYesNo(text + QStringLiteral("Do you wish to cancel?"));
    if (cancel)
        appState().cancel = true;
    return cancel;
}

bool AllocationSave::renameSource(Run &run, int row, const QString &newPath)
{
    SrcFiles::Row &photo = m_ws.srcFiles().row(row);
    if (run.portable) {
        // The original travels back to the main PC; the journal renames it there.
        const QString parked = lib_JoinPath(run.portDir, lib_FilePart(photo.PathFile));
        try {
            lib_MakePath(run.portDir);
            lib_CopyFile(photo.PathFile, parked, true);
            lib_KillFile(photo.PathFile, true);
        } catch (const Error &e) {
            lib_ErrorHandler(QStringLiteral("cmdSave_Click()"), e);
            return false;
        }
    } else if (photo.PathFile != newPath && !QFile::rename(photo.PathFile, newPath)) {
        // The row keeps naming the file as it lies on disk; the photo stays unallocated.
        lib_MsgWarning(QStringLiteral("Could not rename ") + photo.PathFile + QStringLiteral(" to ")
                       + lib_FilePart(newPath) + QStringLiteral(". Its copies were made but the photo keeps its name."));
        return false;
    }
    photo.PathFile = newPath;
    photo.Allocated = QStringLiteral("-1");
    return true;
}

void AllocationSave::finish(Run &run, int reviewedLevel)
{
    clsUndos &undos = m_ws.undos();
    // A Save stopped before its first item leaves no empty level behind.
    if (!run.noUndo && undos.UndoLevelMax() > 0 && undos.LevelIndexLower(undos.UndoLevelMax()) == 0)
        undos.DeleteUndoLevel(0);
    undos.SetUndoLevelsCntLbl();
    keepUndoFile();
    Q_EMIT saveEnded();
    if (!run.undelivered.isEmpty())
        reportUndelivered(run.undelivered);
    if (reviewedLevel != 0 && reviewedLevel < undos.UndoLevelMax()) {
        undos.ReviewUndoLevel(reviewedLevel, false);
        undos.SetUndoLevelsCntLbl();
    }
    if (!undos.ReviewingUndo()) {
        m_ws.ClearSelectedFamilies();
        SourceListModel &list = m_ws.sourceList();
        list.clearSelection();
        if (run.firstListPos >= 0 && run.firstListPos < list.rowCount())
            list.setSelected(run.firstListPos, true);
        Q_EMIT displaySrcFile();
        const int marker = m_ws.privacyMarkerPosition();
        if (m_ws.options().autoReselPriv && marker >= 0)
            m_ws.familyList().setSelected(marker, run.privacyChosen);
    } else {
        Q_EMIT displaySrcFile();
    }
}

void AllocationSave::keepUndoFile() const
{
    // Written after every Save, so a crash or a power cut cannot take the level with it.
    try {
        m_ws.undos().SaveToFile();
    } catch (const Error &e) {
        lib_ErrorHandler(QStringLiteral("cmdSave_Click()"), e);
    }
}

void AllocationSave::reportUndelivered(const QStringList &pairs)
{
    const int n = int(pairs.size());
    lib_MsgWarning(QStringLiteral("The Save is finished, but ") + QString::number(n)
                   + (n == 1 ? QStringLiteral(" copy was") : QStringLiteral(" copies were"))
                   + QStringLiteral(" not made:\r\n\r\n") + pairs.join(QStringLiteral("\r\n"))
                   + QStringLiteral("\r\n\r\nThese photos are marked as allocated to those families all the same. "
                                    "Review the Save, fix the cause (disk full, folder locked) and save them again."));
}

void AllocationSave::RepeatSelect()
{
    clsUndos &undos = m_ws.undos();
    const int level = undos.UndoLevelCurrExtPM();
    if (level == 0)
        return;
    m_ws.ClearSelectedFamilies();
    const int lower = undos.LevelIndexLower(level);
    for (int i = lower; lower > 0 && i <= undos.LevelIndexUpper(level); ++i) {
        const int position = m_ws.familyList().positionOfId(undos.ItemFamilyID(i));
        if (position >= 0)
            m_ws.familyList().setSelected(position, true);
    }
}

void AllocationSave::RepeatAndSave()
{
    try {
        RepeatSelect();
    } catch (const Error &e) {
        lib_ErrorHandler(QStringLiteral("cmdRepeatnSave_Click()"), e);
        return;
    }
    Save();
}

QString AllocationSave::AllocationStatistics(int mode) const
{
    if (m_ws.options().showAllocated)
        return QString();
    QString text;
    if (mode == 1 || mode == 3) {
        text = lib_FormatCount(m_saveCount, QStringLiteral("picture")) + QStringLiteral(" allocated in ")
            + duration(m_allocSeconds);
        if (m_saveCount > 0)
            text += QStringLiteral(" = ") + QString::number(qRound(m_allocSeconds / m_saveCount)) + QStringLiteral("s per file");
    }
    if ((mode == 2 || mode == 3) && m_saveCount >= 1)
        text += QStringLiteral(" (") + duration(m_ws.sourceList().rowCount() * m_allocSeconds / m_saveCount)
            + QStringLiteral(" to go)");
    return text;
}

void AllocationSave::FamilyListClicked()
{
    const qint64 now = m_clock();
    // A pause counts at most 10 seconds: the timer adds those when it runs out.
    if (m_lastClick >= 0 && now - m_lastClick < 10000)
        m_allocSeconds += (now - m_lastClick) / 1000.0;
    m_activity.stop();
    m_lastClick = now;
    m_activity.start();
    m_ws.ShowStatus(AllocationStatistics(3));
}

void AllocationSave::ActivityTimeout()
{
    m_allocSeconds += 10;
    m_activity.stop();
    m_ws.ShowStatus(AllocationStatistics(3));
}

} // namespace quillet

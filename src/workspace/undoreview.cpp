// The undo store on the workspace's lists: review of a level, leaving review, and Undo.
#include "clsundos.h"

#include "allocationtag.h"
#include "workspace.h"

#include "app/settingsstore.h"
#include "lib/error.h"
#include "lib/fileutils.h"
#include "lib/texthelpers.h"
#include "lib/userprompt.h"
#include "sync/batchfilejournal.h"

#include <QFileInfo>
#include <optional>

namespace quillet {

namespace {

const QString kRed = QStringLiteral("RED");
const QString kBlack = QStringLiteral("BLACK");

} // namespace

void clsUndos::selectFamily(int familyId)
{
    FamilyListModel &families = m_ws.familyList();
    const int position = families.positionOfId(familyId);
    if (position >= 0)
        families.setSelected(position, true);
}

void clsUndos::showReviewPhoto(int index, const Item &first, bool skippingToEnd)
{
    SourceListModel &list = m_ws.sourceList();
    const int position = list.positionOfRow(index);
    if (position >= 0) {
        list.setTag(position, kRed, kRed);
        if (!skippingToEnd)
            list.setSelected(position, true);
        return;
    }
    if (skippingToEnd)
        return;
    SourceListModel::Entry entry;
    entry.row = index;
    entry.text = first.filename;
    entry.tag = entry.colour = kRed;
    entry.selected = true;
    // Both views keep name order; the thumbnail is made when the entry comes into view.
    entry.ownThumbnail = !first.thumbKey.isEmpty();
    list.insertByName(entry, [this](int row) { return m_ws.srcFiles().row(row).FileNoFamIDs; });
}

void clsUndos::ReviewUndoLevel(int level, bool skippingToEnd)
{
    if (level > m_levelMax)
        internalError(QStringLiteral("Attempt to view non-existent undo level"));
    if (!skippingToEnd) {
        m_ws.sourceList().clearSelection();
        m_ws.familyList().clearSelection();
    }
    const int lower = LevelIndexLower(level);
    const int upper = LevelIndexUpper(level);
    for (int i = lower; lower > 0 && i <= upper; ++i) {
        if (i == lower || m_items.at(i).srcFilesIndex != m_items.at(i - 1).srcFilesIndex) {
            showReviewPhoto(m_items.at(i).srcFilesIndex, m_items.at(i), skippingToEnd);
            m_ws.sourceList().HighlightSourceSelections(true);
        }
    }
    for (int i = lower; lower > 0 && !skippingToEnd && i <= upper; ++i)
        selectFamily(m_items.at(i).familyId);
    m_levelCurr = level;
    m_ws.ReportSourceCount();
}

void clsUndos::ClearAnyUndoReviews(bool inclFamilies)
{
    if (!ReviewingUndo())
        return;
    const int lower = LevelIndexLower(m_levelCurr);
    const int upper = LevelIndexUpper(m_levelCurr);
    SourceListModel &list = m_ws.sourceList();
    for (int i = upper; lower > 0 && i >= lower; --i) {
        if (i < upper && m_items.at(i).srcFilesIndex == m_items.at(i + 1).srcFilesIndex)
            continue;
        list.removeAt(list.positionOfRow(m_items.at(i).srcFilesIndex));
    }
    list.clearSelection();
    if (inclFamilies)
        m_ws.familyList().clearSelection();
    m_ws.ReportSourceCount();
}

void clsUndos::ReviewUndoLevelPrev(bool gotoToEnd)
{
    if (ReviewingUndo() && m_levelCurr == 1)
        return;
    const int target = ReviewingUndo() ? m_levelCurr - 1 : m_levelMax;
    if (target < 1)
        return;
    if (!gotoToEnd) {
        ReviewUndoLevel(target, false);
        m_levelCurr = target;
    } else {
        for (int level = target; level >= 1; --level)
            ReviewUndoLevel(level, true);
        ReviewUndoLevel(1, false);
    }
    Q_EMIT displaySrcFile();
    SetUndoLevelsCntLbl();
}

void clsUndos::ReviewUndoLevelNext(bool gotoToEnd)
{
    if (m_levelCurr == m_levelMax)
        return;
    const int target = ReviewingUndo() ? m_levelCurr + 1 : (m_levelPrevReview > m_levelMax ? 0 : m_levelPrevReview);
    if (target == 0) {
        m_levelCurr = 0;
    } else if (!gotoToEnd) {
        ClearAnyUndoReviews(true);
        m_levelCurr = target;
        ReviewUndoLevel(target, false);
    } else {
        for (int level = target; level <= m_levelMax; ++level) {
            ClearAnyUndoReviews(true);
            m_levelCurr = level;
            ReviewUndoLevel(level, true);
        }
        m_levelCurr = m_levelMax;
        ReviewUndoLevel(m_levelMax, false);
    }
    Q_EMIT displaySrcFile();
    SetUndoLevelsCntLbl();
}

void clsUndos::JumpToNewUndoLevel()
{
    if (m_levelMax > 0) {
        // Photos stay in the list from the level where review last began up to the newest; without
        // any review there are none to take out (start 0 clears nothing).
        const int start = ReviewingUndo() ? m_levelCurr : (m_levelPrevReview > m_levelMax ? 0 : m_levelPrevReview);
        for (int level = start; start > 0 && level <= m_levelMax; ++level) {
            m_levelCurr = level;
            ClearAnyUndoReviews(false);
        }
    }
    m_levelCurr = 0;
    SetUndoLevelsCntLbl();
}

QString clsUndos::UndoLevelsCntText() const
{
    if (ReviewingUndo())
        return QStringLiteral("Reviewing ") + QString::number(m_levelCurr) + QStringLiteral(" of ")
            + QString::number(m_levelMax);
    return QString::number(m_levelMax) + QStringLiteral(" undo") + (m_levelMax == 1 ? QString() : QStringLiteral("s"));
}

void clsUndos::SetUndoLevelsCntLbl()
{
    Q_EMIT undoLevelsChanged(UndoLevelsCntText(), ReviewingUndo(), ReviewingUndo() || m_levelMax > 0);
}

void clsUndos::restorePhoto(const Item &it, bool quiet, BatchfileWriter *journal, bool portable,
                            const QString &srcDir)
{
    SrcFiles::Row &row = m_ws.srcFiles().row(it.srcFilesIndex);
    const QString tagged = row.PathFile;
    const QString untaggedName = StripFamIDs(lib_FilePart(tagged));
    const QString untagged = lib_JoinPath(lib_DirPart(tagged), untaggedName);
    if (journal)
        journal->entry(Batchfile::kRenameSource, {Batchfile::RelativePath(tagged, srcDir), untaggedName});
    try {
        if (portable && journal) {
            const QString parked = lib_JoinPath(ReadSetting(QStringLiteral("PortCopyOrigCopyDir")), untaggedName);
            if (lib_CopyFile(parked, untagged, true))
                lib_KillFile(parked, true);
        } else if (tagged != untagged) {
            QFile::rename(tagged, untagged);
        }
    } catch (const Error &) {
        // Quiet by contract: the level is undone all the same.
    }
    // The row names the file as it lies on disk, also when the rename could not be made.
    row.PathFile = (QFileInfo::exists(untagged) || !QFileInfo::exists(tagged)) ? untagged : tagged;
    row.Allocated = QStringLiteral("0");

    SourceListModel &list = m_ws.sourceList();
    const int position = list.positionOfRow(it.srcFilesIndex);
    if (position >= 0) {
        if (!quiet)
            list.setSelected(position, true);
        list.setTag(position, kBlack, kBlack);
        list.setGhosted(position, false);
        return;
    }
    SourceListModel::Entry entry;
    entry.row = it.srcFilesIndex;
    entry.text = row.FileNoFamIDs;
    entry.tag = entry.colour = kBlack;
    entry.selected = true;
    entry.ownThumbnail = !it.thumbKey.isEmpty();
    list.insertByName(entry, [this](int r) { return m_ws.srcFiles().row(r).FileNoFamIDs; });
}

int clsUndos::removeTargetCopy(const Item &it, BatchfileWriter *journal, bool copiesKept, const QString &tgtDir)
{
    int removed = 0;
    if (copiesKept) {
        try {
            lib_KillFile(it.tgtPathfile, true);
        } catch (const Error &) {
            // Quiet by contract.
        }
        removed = 1;
    }
    if (journal)
        journal->entry(Batchfile::kDeleteTargetFile, {Batchfile::RelativePath(it.tgtPathfile, tgtDir)});
    return removed;
}

void clsUndos::UndoLastLevel(bool quiet)
{
    const int level = UndoLevelCurrExtM();
    if (level == 0)
        return;
    BusyPointer busy;
    const bool createBatchs = ReadSettingBool(QStringLiteral("CreateBatchs"));
    const bool batchOnly = ReadSettingBool(QStringLiteral("BatchOnly"));
    const QString srcDir = ReadSetting(QStringLiteral("SrcDir"));
    const QString tgtDir = ReadSetting(QStringLiteral("TgtDir"));
    const bool copiesKept = !(batchOnly && createBatchs);
    if (!quiet) {
        m_ws.sourceList().clearSelection();
        m_ws.familyList().clearSelection();
    }
    std::optional<BatchfileWriter> journal;
    if (createBatchs)
        journal.emplace();
    int cleared = 0;
    const int lower = LevelIndexLower(level);
    const int upper = LevelIndexUpper(level);
    for (int i = lower; lower > 0 && i <= upper; ++i) {
        const Item it = m_items.at(i);
        if (i == lower || it.srcFilesIndex != m_items.at(i - 1).srcFilesIndex)
            restorePhoto(it, quiet, journal ? &*journal : nullptr, IsPortableCopy(), srcDir);
        if (!quiet)
            selectFamily(it.familyId);
        if (it.familyId != FamilyListModel::kPrivacyMarkerId)
            cleared += removeTargetCopy(it, journal ? &*journal : nullptr, copiesKept, tgtDir);
    }
    if (journal)
        journal->close();
    DeleteUndoLevel(level);
    if (!quiet) {
        // A quiet undo is part of a Save or a photo operation, which write the file when they end.
        SaveToFile();
        ReviewUndoLevelNext(false);
        if (!ReviewingUndo())
            Q_EMIT displaySrcFile();
    }
    m_ws.ReportSourceCount();
    if (copiesKept)
        m_ws.ShowStatus(lib_FormatCount(cleared, QStringLiteral("target file")) + QStringLiteral(" cleared/undone"));
}

} // namespace quillet

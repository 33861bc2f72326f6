#pragma once

#include <QList>
#include <QObject>
#include <QString>

namespace quillet {

class Workspace;
class BatchfileWriter;

// The undo levels of the session. One level records what one Save did: one item per (photo,
// family-list entry) pair, the privacy marker entry included (family ID -999, no target copy).
// Items are kept in ascending level order, the items of a level contiguous and in the order the
// Save recorded them; consecutive items of a level with the same source-file index are one photo.
// Levels are numbered 1 (oldest) to UndoLevelMax() (newest) without gaps.
//
// The store also drives review mode: the photos of a reviewed level come back into the source
// list tagged "RED" with their families selected. It works on the workspace's models, so review
// and undo run the same headless as in the window. Item indexes are 1-based; index 0 is unused.
// Internal errors (a level that does not exist) throw Error(1000, "Internal err - ...").
class clsUndos : public QObject
{
    Q_OBJECT
public:
    static constexpr int kCapacity = 1000;

    explicit clsUndos(Workspace &workspace, QObject *parent = nullptr);
    ~clsUndos() override;

    // ---- items ----
    int ItemUndoLevel(int i) const { return item(i).level; }
    QString ItemFilename(int i) const { return item(i).filename; }
    int ItemSrcFilesIndex(int i) const { return item(i).srcFilesIndex; }
    QString ItemTgtPathfile(int i) const { return item(i).tgtPathfile; }
    int ItemFamilyID(int i) const { return item(i).familyId; }
    QString ItemThumbnailImgLstKey(int i) const { return item(i).thumbKey; }
    QString ItemSrcPathfile(int i) const { return item(i).srcPathfile; }
    // First item of `level` (the first whose level is at least it), 0 when none.
    int LevelIndexLower(int level) const;
    // Last item of the level that begins at LevelIndexLower(level).
    int LevelIndexUpper(int level) const;

    // ---- state ----
    int UndoLevelMax() const { return m_levelMax; }
    int UndoTop() const { return m_top; }
    int UndoLevelCurr() const { return m_levelCurr; }
    int UndoLevelPrevReview() const { return m_levelPrevReview; }
    bool ReviewingUndo() const { return m_levelCurr != 0; }
    // The level Undo acts on: the reviewed one, else the newest.
    int UndoLevelCurrExtM() const { return m_levelCurr != 0 ? m_levelCurr : m_levelMax; }
    // The level whose families Repeat select reuses; 0 when there is none.
    int UndoLevelCurrExtPM() const;
    // True when a Save of n items can be kept as one level.
    static bool TestCanUndo(int n) { return n <= kCapacity; }

    // ---- recording a Save ----
    // Opens a new level (and ends any review).
    void CreateUndoInit();
    // Appends one item to the newest level. `fileCntToCopy` is the number of items the Save still
    // has to record: whole oldest levels are pushed out (later levels renumbered down) until that
    // many rows are free. The level being recorded is never pushed out; should it alone fill the
    // table, the item is not kept.
    void CreateUndoFill(int fileCntToCopy, const QString &filename, int srcFilesIndex, const QString &srcPathfile,
                        const QString &tgtPathfile, int familyId, const QString &thumbnailKey);
    // Ends one photo of the level: refreshes the label.
    void CreateUndoFin();
    // Deletes a level (0: the newest) and renumbers the later ones down by one.
    void DeleteUndoLevel(int level);

    // ---- the undo file ----
    // "_Undos_<PCname>.log" in the data folder.
    static QString FilePath();
    // Deletes the undo file; the owner then replaces this store by a new one.
    void Clear();
    // Rewrites the whole file atomically. Does nothing before the file has been read once: an
    // empty table that never saw the file must not replace it.
    void SaveToFile() const;
    // Reads the file: refills the undo zone of the source file table (one row per photo) and,
    // when thumbnails and ReloadUndoThumbs are on, reloads the thumbnails of the newest photos.
    // A file of another version, or one that cannot be read, is deleted and logged; the session
    // then starts without levels.
    void LoadFromFile();

    // ---- review (undoreview.cpp) ----
    void ClearAnyUndoReviews(bool inclFamilies);
    void ReviewUndoLevel(int level, bool skippingToEnd);
    void ReviewUndoLevelNext(bool gotoToEnd);
    void ReviewUndoLevelPrev(bool gotoToEnd);
    void JumpToNewUndoLevel();
    void SetUndoLevelsCntLbl();
    // "Reviewing n of m" while reviewing, else "n undo"/"n undos".
    QString UndoLevelsCntText() const;
    // Undoes the reviewed level, else the newest: the source photos lose their tag and come back
    // into the list, the copies are deleted, the journal gets NS and DTF records. `quiet` leaves
    // the selections alone and does not move review on (Save uses it before saving again).
    void UndoLastLevel(bool quiet);

Q_SIGNALS:
    // The label text and the enabled state of the undo controls (SetUndoLevelsCntLbl).
    void undoLevelsChanged(const QString &text, bool reviewing, bool undoEnabled);
    // The window should show the selected photo (review moved, undo done).
    void displaySrcFile();

private:
    struct Item
    {
        int level = 0;
        QString filename;
        int srcFilesIndex = 0;
        QString tgtPathfile;
        int familyId = 0;
        QString thumbKey;
        QString srcPathfile;
    };

    const Item &item(int i) const;
    void readFile(const QString &path);
    void reloadThumbnails(int maxPhotos);
    void selectFamily(int familyId);
    void showReviewPhoto(int index, const Item &first, bool skippingToEnd);
    void restorePhoto(const Item &it, bool quiet, BatchfileWriter *journal, bool portable, const QString &srcDir);
    int removeTargetCopy(const Item &it, BatchfileWriter *journal, bool copiesKept, const QString &tgtDir);
    [[noreturn]] static void internalError(const QString &what);

    Workspace &m_ws;
    QList<Item> m_items; // m_items[0] unused
    int m_top = 0;
    int m_levelMax = 0;
    int m_levelCurr = 0;
    int m_levelPrevReview = 0;
    bool m_fileRead = false;
};

} // namespace quillet

#pragma once

#include <QList>
#include <QString>

namespace quillet {

// The table of source photos the workspace refers to by row number. Rows 1..SrcFilesUndoCnt() are the
// photos of the saved undo levels; rows SrcFilesUndoCnt()+1..SrcFilesCount() are the photos found by the latest
// scan of the Source Dir. A row's number does not change while the list shows it: list keys
// ("K" + row), thumbnails and undo items all name photos by it. Row 0 is never used.
class SrcFiles
{
public:
    static constexpr int kMaxRows = 20000;

    struct Row
    {
        QString FileNoFamIDs; // file name without folder and without its allocation tag
        QString PathFile;     // full path as the file now lies on disk, tag included
        QString Allocated;    // "-1" when the name carried a tag when the row was filled, else "0"
        bool isAllocated() const { return Allocated == QLatin1String("-1"); }
    };

    // The files the list takes: the last four characters, lower-cased, are ".jpg", ".gif",
    // ".mov", ".mp4" or ".avi" (so "IMG_1.JPG" is taken and "IMG_1.jpeg" is not).
    static bool IsAcceptedName(const QString &name);
    // The movies among them, which the viewer cannot show.
    static bool IsMovieName(const QString &name);

    int SrcFilesUndoCnt() const { return m_undoCount; }
    int SrcFilesCount() const { return int(m_rows.size()); }

    // Empties the table (both zones).
    void Clear();
    // Drops the rows of the latest scan, keeping the undo zone.
    void ResetScanZone();
    // Empties the undo zone (and with it the scan zone): the undo store refills it.
    void ResetUndoZone() { Clear(); }
    // Appends a row of the undo zone; only while the scan zone is empty.
    int AddUndoRow(const QString &fileNoFamIds, const QString &pathFile);
    // Appends a row for a file found by a scan, unless an undo row holds the same untagged name
    // (compared without regard to case): then returns that row's number and adds nothing.
    // Throws Error rather than go past kMaxRows.
    int AddScannedFile(const QString &pathFile);
    // The undo row with this untagged name, or 0.
    int FindUndoRow(const QString &fileNoFamIds) const;

    const Row &row(int index) const;
    Row &row(int index);

    // Sorts the scan zone by FileNoFamIDs (thumbnail view lists photos in name order).
    void SortScanZone();

private:
    QList<Row> m_rows; // m_rows[0] is row 1
    int m_undoCount = 0;
};

} // namespace quillet

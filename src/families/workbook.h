#pragma once

#include <QByteArray>
#include <QHash>
#include <QMap>
#include <QString>
#include <QVariant>

#include <memory>

namespace quillet {

// The error number of a file whose content is not what its type promises.
constexpr qint32 kErrBadFileFormat = 321;

// The first worksheet of a workbook file, read directly (no spreadsheet program involved).
//
// Contract: read() takes the whole file as bytes and keeps the cells of rows 1..kMaxRows and
// columns 1..kMaxColumns (1-based; further cells are ignored). A cell is a QString, a double, a
// bool, or an invalid QVariant when empty. Malformed content throws Error(kErrBadFileFormat) with
// a description that names the problem; it never crashes and never reads outside the bytes.
// setText() changes a cell in memory at once (cell() sees it); written() gives the whole file again
// with only those cells changed, everything else as it was (other sheets, styles, formulas).
// Formats that cannot be written say so through isWritable().
class Workbook
{
public:
    static constexpr int kMaxRows = 1000;
    static constexpr int kMaxColumns = 64;

    virtual ~Workbook();

    // The reader for a file name's extension (".xlsx", ".ods", ".xls", ".csv", any letter case);
    // nullptr for any other.
    static std::unique_ptr<Workbook> forFileName(const QString &fileName);
    // The extensions forFileName() knows, without the dot.
    static QStringList extensions();

    // Reads the file through read(); throws Error when it cannot be opened or is malformed.
    void load(const QString &path);
    // Replaces the file with written() in one step (a temporary file renamed over it); throws
    // Error when the file or its folder cannot be written.
    void save(const QString &path) const;

    // Parses a whole file; replaces what was read before.
    void read(const QByteArray &bytes);
    virtual bool isWritable() const = 0;
    // True when setText() changed a cell since read().
    bool isChanged() const { return !m_edits.isEmpty(); }
    QByteArray written() const;

    QVariant cell(int row, int column) const;
    // The cell as text: numbers without a needless ".0", booleans as TRUE/FALSE.
    QString text(int row, int column) const;
    // Sets a cell to a text; an empty text empties the cell.
    void setText(int row, int column, const QString &text);

    // "A", "B", ..., "Z", "AA", ... for 1, 2, ...
    static QString columnName(int column);
    // The column of a name such as "M" or "AB", 0 when it is not one.
    static int columnNumber(QStringView name);

protected:
    // Fills the cells from the file's bytes through store().
    virtual void parse(const QByteArray &bytes) = 0;
    // The file bytes with the edited cells (row -> column -> text) changed.
    virtual QByteArray rewrite(const QByteArray &original, const QMap<int, QMap<int, QString>> &edits) const = 0;
    // Keeps a cell when it lies within the limits; an empty value is dropped.
    void store(int row, int column, const QVariant &value);
    // Throws the format error with the given description.
    [[noreturn]] static void malformed(const QString &description);

private:
    static quint32 key(int row, int column) { return quint32(row) << 8 | quint32(column); }

    QByteArray m_original;
    QHash<quint32, QVariant> m_cells;
    QMap<int, QMap<int, QString>> m_edits;
};

} // namespace quillet

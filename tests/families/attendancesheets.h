#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>

namespace quillet::test {

// One row of an attendance sheet as the tests describe it: the name in column A, the ten day
// cells B..K as a text of '1' (true), '0' (false) or ' ' (empty), column M, and a note in N.
struct SheetRow
{
    int row = 0;
    QString name;
    QString days;
    QString mark;
    QString note;
};

// The office's sheet the import tests share (the same rows in every format; the .xls fixture
// tests/families/data/attendance.xls holds them too, see make-attendance-xls.pl):
// a header row, children of several families, a stale "y" on rows that will not match, a
// blank row, and a row after row 100 that must never be read.
QList<SheetRow> attendanceRows();

// Real workbook files as spreadsheet programs write them, each with a second sheet "Notes".
// The .xlsx has shared strings, a bold header style, a formula in column L, inline strings, and a
// styled empty cell in column M; the .ods compresses empty rows and cells with repeat counts and
// has a formula too; the .csv quotes names with commas and quotes and ends lines with CR LF.
QByteArray makeXlsx(const QList<SheetRow> &rows);
QByteArray makeOds(const QList<SheetRow> &rows);
QByteArray makeCsv(const QList<SheetRow> &rows, char separator = ',');
// attendanceRows() as a workbook of the format named by its extension ("xlsx", "ods", "csv"),
// or the checked-in .xls fixture for "xls".
QByteArray attendanceSample(const QString &format, char csvSeparator = ',');
// A data-driven test's column "format", one row a format.
void addFormatRows(std::initializer_list<const char *> formats);

// The entries of a zip archive, unpacked, by name (empty when the bytes are not an archive).
QMap<QString, QByteArray> zipEntries(const QByteArray &archive);
// A zip archive of the given entries in the given order ("mimetype" stored, the rest deflated).
QByteArray makeZip(const QList<QPair<QString, QByteArray>> &entries);

} // namespace quillet::test

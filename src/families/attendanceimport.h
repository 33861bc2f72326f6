#pragma once

#include <QList>
#include <QString>

namespace quillet {

class AttendanceMatcher;
class Error;
class FamilyDatabase;
class Workbook;

// The family editor's Import command: sets the ten day flags of every current family from the
// office's attendance workbook (.xlsx, .ods, .csv, or .xls read only) and marks the rows it used
// with "y" in column M of the workbook, which is replaced in one step.
//
// Everything the user sees goes through the user-prompt port. The database changes in one
// transaction: a workbook that cannot be read, or a day cell that is neither true nor false,
// changes nothing. Family names reach the database only as bound values.
class AttendanceImport
{
public:
    explicit AttendanceImport(FamilyDatabase &db);

    // The whole command: the explanation, the file chooser, the import. Errors are reported here
    // ("Error: (n) description"). True when families were updated, so the caller reloads its list.
    bool run();
    // The import of one workbook, without the explanation and the chooser. Throws Error.
    void importFile(const QString &path);

    // What the last import did, for the caller's message line.
    int familiesUpdated() const { return m_familiesUpdated; }
    const QList<int> &rowsMatched() const { return m_rowsMatched; }
    // "Days imported for n families", or empty when nothing was imported.
    QString statusText() const;

private:
    void updateFamilies(AttendanceMatcher &matcher);
    // Saves the marks; the reason why not, or an empty text when the workbook now carries them.
    QString markWorkbook(const Workbook &book, const QString &path) const;
    void report(const AttendanceMatcher &matcher, const QString &path, const QString &notMarked) const;
    static void offerToOpen(const QString &path, bool marked);
    static void showError(const Error &error);

    FamilyDatabase &m_db;
    int m_familiesUpdated = 0;
    QList<int> m_rowsMatched;
};

} // namespace quillet

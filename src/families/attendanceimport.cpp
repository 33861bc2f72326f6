#include "attendanceimport.h"

#include "attendancematcher.h"
#include "workbook.h"

#include "app/familydatabase.h"
#include "lib/error.h"
#include "lib/errorhandler.h"
#include "lib/fileutils.h"
#include "lib/userprompt.h"

#include <QSqlError>
#include <QSqlRecord>
#include <QStandardPaths>

namespace quillet {

namespace {

const QString kSource = QStringLiteral("cmdImport");
const QString kCrLf = QStringLiteral("\r\n");

QString explanation()
{
    return QStringList{QStringLiteral("This will import a list of days for ALL families marked as current."),
                       QStringLiteral("It expects to read a spreadsheet formatted:"),
                       QStringLiteral("Col A = child fullname"),
                       QStringLiteral("Col B = attends Mon AM (true/false)"),
                       QStringLiteral("Col C = attends Mon PM (true/false)"),
                       QStringLiteral("repeat for all days"),
                       QStringLiteral("Col M = this col will be set by program to 'y' if name found in database during import")}
        .join(kCrLf);
}

QString rowList(const QList<int> &rows)
{
    QStringList numbers;
    for (int row : rows)
        numbers << QString::number(row);
    return numbers.join(QStringLiteral(", "));
}

// A last name that another tool stored as "" counts as none, as the editor stores it.
QVariant lastNameOf(const QSqlRecord &family)
{
    const QVariant last = family.value(QStringLiteral("LastName"));
    return last.isNull() || last.toString().isEmpty() ? QVariant() : last;
}

} // namespace

AttendanceImport::AttendanceImport(FamilyDatabase &db)
    : m_db(db)
{
}

bool AttendanceImport::run()
{
    lib_MsgInfo(explanation());
    // The office's workbook lives with the user's documents, not beside the program.
    const QString path = lib_OpenFileDialog(QStringLiteral("Excel"), Workbook::extensions().join(u' '),
                                            QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation),
                                            QStringLiteral("Select import file"));
    if (path.isEmpty())
        return false;
    try {
        importFile(path);
    } catch (const Error &e) {
        showError(e);
    } catch (const std::exception &e) {
        showError(Error(kLibErrorNumber, kSource, QString::fromLocal8Bit(e.what())));
    }
    return m_familiesUpdated > 0;
}

// The workbook is read and written directly: no spreadsheet program is attached to or started
// ("Excel.Application"), so there is no message asking the user to acknowledge that program's own
// messages while it opens the workbook ("Opening selected workbook now, ..."). Instead the user is
// offered to open the workbook afterwards, when names were not found.
void AttendanceImport::importFile(const QString &path)
{
    m_familiesUpdated = 0;
    m_rowsMatched.clear();
    std::unique_ptr<Workbook> book = Workbook::forFileName(path);
    if (!book)
        throw Error(kErrBadFileFormat, kSource,
                    QStringLiteral("Only workbooks of the types .xlsx, .xls, .ods and .csv can be imported\r\nFile: ")
                        + path);
    AttendanceMatcher matcher(*book);
    QString notMarked;
    {
        BusyPointer busy;
        book->load(path);
        matcher.clearMarks();
        updateFamilies(matcher);
        m_rowsMatched = matcher.matchedRows();
        notMarked = markWorkbook(*book, path);
    }
    report(matcher, path, notMarked);
}

void AttendanceImport::updateFamilies(AttendanceMatcher &matcher)
{
    QStringList assignments;
    for (const char *field : AttendanceMatcher::kDayFields)
        assignments << QLatin1String(field) + QStringLiteral("=?");
    const QString update =
        QStringLiteral("UPDATE tblFamilies SET ") + assignments.join(QStringLiteral(", ")) + QStringLiteral(" WHERE FamilyID=?");
    QSqlDatabase connection = m_db.connection();
    if (!connection.transaction())
        throw Error(kObjectErrorBase + 1, kSource, connection.lastError().text());
    try {
        int updated = 0;
        for (const QSqlRecord &family : m_db.select(QStringLiteral("SELECT * FROM tblFamilies WHERE [Current]=True"))) {
            const auto days = matcher.match(family.value(QStringLiteral("FirstName")).toString(), lastNameOf(family));
            if (!days)
                continue;
            QVariantList values(days->cbegin(), days->cend());
            values << family.value(QStringLiteral("FamilyID"));
            m_db.exec(update, values);
            ++updated;
        }
        m_db.TouchLastDBUpdate();
        if (!connection.commit())
            throw Error(kObjectErrorBase + 1, kSource, connection.lastError().text());
        m_familiesUpdated = updated;
    } catch (...) {
        connection.rollback();
        throw;
    }
}

QString AttendanceImport::markWorkbook(const Workbook &book, const QString &path) const
{
    if (!book.isWritable())
        return QStringLiteral("workbooks of the type .xls can be read but not written.");
    if (!book.isChanged())
        return QString();
    try {
        book.save(path);
        return QString();
    } catch (const Error &e) {
        lib_ErrorHandler(kSource, e, false);
        return e.description();
    }
}

void AttendanceImport::report(const AttendanceMatcher &matcher, const QString &path, const QString &notMarked) const
{
    const QString families = matcher.familiesNotFound();
    const QString children = matcher.childrenNotFound();
    const bool listRows = !notMarked.isEmpty() && !m_rowsMatched.isEmpty();
    QString clipboard = children;
    if (listRows)
        clipboard += QStringLiteral("Rows found in the database: ") + rowList(m_rowsMatched) + kCrLf;
    if (!clipboard.isEmpty())
        prompt().setClipboardText(clipboard);

    QString text;
    if (!families.isEmpty() || !children.isEmpty()) {
        text = QStringLiteral("The following families were not found in the spreadsheet:") + kCrLf + kCrLf + families
            + kCrLf + QStringLiteral("The following children were not found in the database:") + kCrLf + kCrLf
            + children;
        if (!children.isEmpty())
            text += QStringLiteral("(names copied to clipboard)");
    }
    // The marks are how the office sees which rows were used: say so when they could not be made.
    if (!notMarked.isEmpty()) {
        text += (text.isEmpty() ? QString() : kCrLf + kCrLf) + QStringLiteral("Column M of the workbook was not marked: ")
            + notMarked;
        if (listRows)
            text += kCrLf + QStringLiteral("The rows found in the database are ") + rowList(m_rowsMatched)
                + QStringLiteral(" (row numbers copied to clipboard).");
    }
    if (!text.isEmpty())
        lib_MsgInfo(text);
    if (!families.isEmpty() || !children.isEmpty())
        offerToOpen(path, notMarked.isEmpty());
}

void AttendanceImport::offerToOpen(const QString &path, bool marked)
{
    const QString question = marked
        ? QStringLiteral("Open the workbook in the spreadsheet program now, to see the rows marked 'y' in column M?")
        : QStringLiteral("Open the workbook in the spreadsheet program now?");
    if (lib_MsgYesNo(question) && !prompt().openWithDefaultProgram(path))
        lib_MsgWarning(QStringLiteral("No program is set up to open this workbook:\r\n") + path);
}

void AttendanceImport::showError(const Error &error)
{
    lib_ErrorHandler(kSource, error, false);
    lib_MsgError(QStringLiteral("Error: (") + QString::number(error.number()) + QStringLiteral(") ")
                 + error.description());
}

QString AttendanceImport::statusText() const
{
    if (m_familiesUpdated == 0)
        return QString();
    return QStringLiteral("Days imported for ") + QString::number(m_familiesUpdated)
        + (m_familiesUpdated == 1 ? QStringLiteral(" family") : QStringLiteral(" families"));
}

} // namespace quillet

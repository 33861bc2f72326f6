#include "attendancesheets.h"

#include "app/familydatabase.h"
#include "families/attendanceimport.h"
#include "families/attendancematcher.h"
#include "families/workbook.h"
#include "families/xlsworkbook.h"
#include "lib/error.h"
#include "support/hometest.h"

#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QSqlRecord>
#include <QTest>

#include <unistd.h>

using namespace quillet;
using namespace quillet::test;

namespace {

struct Fam
{
    int id;
    const char *first;
    const char *last; // nullptr: Null
    bool current;
    const char *daysBefore; // fields set before the import
    const char *daysAfter;  // fields expected set afterwards
};

// The families of the office's sheet in attendanceRows().
const Fam kFamilies[] = {
    {1, "Jack & Jill", "Smith", true, "FamDaysWam", "FamDaysMam FamDaysFpm"}, // two children, OR-ed
    {2, "Tom & Ann", "Brown", true, "", "FamDaysTam FamDaysTpm"},             // full name; Tom Brown unused
    {3, "(Staff)", nullptr, true, "FamDaysMam", "FamDaysMam"},                // never imported
    {4, "Sean", "O'Brien", true, "", "FamDaysMam FamDaysMpm FamDaysTpm"},     // found after trimming
    {5, "Mia", "Lee", true, "FamDaysFpm", "FamDaysFpm"},                      // not in the sheet
    {6, "Max and Ella", "Stone", true, "", "FamDaysTHam"},                    // one child of two
    {7, "Old", "Family", false, "", ""},                                      // not current
    {8, "Late", "Child", true, "", ""},                                       // only after row 100
};

const QString kFamiliesNotFound = QStringLiteral("Mia Lee\r\nMax and Ella Stone or Max Stone\r\nLate Child\r\n");
const QString kChildrenNotFound = QStringLiteral("Brown, \"Tommy\"\r\nNobody Known\r\nOld Family\r\nTom Brown\r\n");
const QString kListsMessage = QStringLiteral("The following families were not found in the spreadsheet:\r\n\r\n")
    + kFamiliesNotFound + QStringLiteral("\r\nThe following children were not found in the database:\r\n\r\n")
    + kChildrenNotFound + QStringLiteral("(names copied to clipboard)");
const QString kExplanation = QStringLiteral(
    "This will import a list of days for ALL families marked as current.\r\nIt expects to read a spreadsheet "
    "formatted:\r\nCol A = child fullname\r\nCol B = attends Mon AM (true/false)\r\nCol C = attends Mon PM "
    "(true/false)\r\nrepeat for all days\r\nCol M = this col will be set by program to 'y' if name found in database "
    "during import");
const QString kOpenQuestion =
    QStringLiteral("Open the workbook in the spreadsheet program now, to see the rows marked 'y' in column M?");

} // namespace

class TestAttendanceImport : public HomeTest
{
    Q_OBJECT

    std::unique_ptr<FamilyDatabase> m_db;

    void addFamilies()
    {
        for (const Fam &f : kFamilies) {
            m_db->exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName, [Current]) VALUES (?, ?, ?, ?)"),
                       {f.id, QString::fromUtf8(f.first), f.last ? QVariant(QString::fromUtf8(f.last)) : QVariant(),
                        f.current});
            for (const QString &field : QString::fromLatin1(f.daysBefore).split(u' ', Qt::SkipEmptyParts))
                m_db->exec(QStringLiteral("UPDATE tblFamilies SET [") + field + QStringLiteral("]=True WHERE FamilyID=?"), {f.id});
        }
    }

    // The day fields set for a family, in the order of the sheet's columns.
    QString daysOf(int id) const
    {
        const QSqlRecord r =
            m_db->select(QStringLiteral("SELECT * FROM tblFamilies WHERE FamilyID=") + QString::number(id)).value(0);
        QStringList set;
        for (const char *field : AttendanceMatcher::kDayFields)
            if (r.value(QLatin1String(field)).toInt() != 0)
                set << QLatin1String(field);
        return set.join(u' ');
    }

    void verifyFamilies(bool imported)
    {
        for (const Fam &f : kFamilies)
            QCOMPARE(daysOf(f.id), QString::fromLatin1(imported ? f.daysAfter : f.daysBefore));
    }

    QString lastUpdate() const { return m_db->ReadParam(QStringLiteral("LastDBUpdate")).toString(); }

    QString writeSample(const QString &format)
    {
        return m_env->writeFile(QStringLiteral("days.") + format, attendanceSample(format, ';'));
    }

private Q_SLOTS:
    void init()
    {
        HomeTest::init();
        QVERIFY(m_env->makeInstallation());
        m_db = std::make_unique<FamilyDatabase>();
        QVERIFY(m_db->OpenDatabase());
        addFamilies();
    }

    void cleanup()
    {
        m_db.reset();
        HomeTest::cleanup();
    }

    void importsEveryFormat_data() { addFormatRows({"xlsx", "ods", "csv", "xls"}); }

    void importsEveryFormat()
    {
        QFETCH(QString, format);
        const QString path = writeSample(format);
        const QByteArray before = fileBytes(path);
        const QString stampBefore = lastUpdate();
        m_port->choose(path);
        m_port->answer(true); // open the workbook afterwards
        AttendanceImport import(*m_db);
        QVERIFY(import.run());

        verifyFamilies(true);
        QCOMPARE(import.familiesUpdated(), 4);
        QCOMPARE(import.rowsMatched(), (QList<int>{2, 3, 4, 7, 8}));
        QVERIFY(lastUpdate() > stampBefore);
        QCOMPARE(m_port->fileDialogs.size(), 1);
        QCOMPARE(m_port->fileDialogs.at(0).description, QStringLiteral("Excel"));
        QCOMPARE(m_port->fileDialogs.at(0).extension, QStringLiteral("xlsx xls ods csv"));
        QCOMPARE(m_port->fileDialogs.at(0).title, QStringLiteral("Select import file"));
        QCOMPARE(m_port->opened, QStringList{path});

        const QStringList texts = m_port->texts();
        QCOMPARE(texts.size(), 3);
        QCOMPARE(texts.at(0), kExplanation);
        const bool xls = format == QLatin1String("xls");
        if (!xls) {
            QCOMPARE(texts.at(1), kListsMessage);
            QCOMPARE(texts.at(2), kOpenQuestion);
            QCOMPARE(m_port->clipboard, kChildrenNotFound);
        } else {
            QCOMPARE(texts.at(1), kListsMessage + QStringLiteral(
                "\r\n\r\nColumn M of the workbook was not marked: workbooks of the type .xls can be read but not written."
                "\r\nThe rows found in the database are 2, 3, 4, 7, 8 (row numbers copied to clipboard)."));
            QCOMPARE(texts.at(2), QStringLiteral("Open the workbook in the spreadsheet program now?"));
            QCOMPARE(m_port->clipboard, kChildrenNotFound + QStringLiteral("Rows found in the database: 2, 3, 4, 7, 8\r\n"));
            QCOMPARE(fileBytes(path), before);
            return;
        }

        // The workbook on disk: column M marked, every other cell as it was.
        std::unique_ptr<Workbook> original = Workbook::forFileName(path);
        original->read(before);
        std::unique_ptr<Workbook> marked = Workbook::forFileName(path);
        marked->load(path);
        for (int row = 1; row <= 110; ++row) {
            for (int column = 1; column <= 14; ++column) {
                if (column != 13)
                    QCOMPARE(marked->text(row, column), original->text(row, column));
            }
            const bool isMarked = row >= 2 && row <= 8 && row != 5 && row != 6;
            QCOMPARE(marked->text(row, 13), row == 1 ? QStringLiteral("Found") : isMarked ? QStringLiteral("y") : QString());
        }
    }

    void statementsTakeNamesAsValues()
    {
        // Names that would end a quoted text in a statement, in the database and in the sheet.
        m_db->exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName, [Current]) VALUES (9, ?, ?, True)"),
                   {QStringLiteral("D'Arcy"), QStringLiteral("O'Neill'); DROP TABLE tblFamilies; --")});
        QList<SheetRow> rows = attendanceRows();
        rows.insert(rows.size() - 1, {12, QStringLiteral("D'Arcy O'Neill'); DROP TABLE tblFamilies; --"), QStringLiteral("0000000011"),
                     QString(), QString()});
        const QString path = m_env->writeFile(QStringLiteral("days.xlsx"), makeXlsx(rows));
        m_port->answer(false);
        AttendanceImport import(*m_db);
        import.importFile(path);
        QCOMPARE(daysOf(9), QStringLiteral("FamDaysFam FamDaysFpm"));
        verifyFamilies(true);
    }

    void cancellingTheChooserChangesNothing()
    {
        const QString stamp = lastUpdate();
        AttendanceImport import(*m_db);
        QVERIFY(!import.run());
        QCOMPARE(m_port->texts(), QStringList{kExplanation});
        verifyFamilies(false);
        QCOMPARE(lastUpdate(), stamp);
    }

    void failuresChangeNothingAndSayWhy_data()
    {
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("message");
        const QList<SheetRow> rows = attendanceRows();
        QByteArray csv = makeCsv(rows);
        csv.replace("Jack Smith,TRUE,FALSE,", "Jack Smith,TRUE,maybe,"); // Monday afternoon
        QTest::newRow("day neither true nor false")
            << "days.csv" << csv << "Error: (13) Cell C2 holds \"maybe\", which is neither true nor false (TRUE/FALSE, 1/0 or empty)";
        QTest::newRow("not a workbook") << "days.xlsx" << QByteArray("Child,Mon AM\r\n")
                                        << "Error: (321) The workbook cannot be read: it is not a zip archive, or the "
                                           "archive is damaged\r\nFile: ";
        QTest::newRow("damaged .xls") << "days.xls" << QByteArray("Child,Mon AM\r\n")
                                      << "Error: (321) The workbook cannot be read: the file is damaged (code -8)\r\nFile: ";
        QTest::newRow(".xls reader crashes") << "days.xls" << QByteArray()
                                             << "Error: (321) The workbook could not be read: its reader stopped "
                                                "unexpectedly (the file may be damaged)\r\nFile: ";
        QTest::newRow("other type") << "days.txt" << QByteArray("Jack Smith")
                                    << "Error: (321) Only workbooks of the types .xlsx, .xls, .ods and .csv can be "
                                       "imported\r\nFile: ";
    }

    void failuresChangeNothingAndSayWhy()
    {
        QFETCH(QString, fileName);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, message);
        auto restore = qScopeGuard([] { XlsWorkbook::setReader(QString(), 0); });
        if (bytes.isEmpty()) { // the real workbook, and a reader that crashes on it
            bytes = attendanceSample(QStringLiteral("xls"));
            const QString reader = m_env->writeFile(QStringLiteral("reader.sh"), "#!/bin/sh\nkill -SEGV $$\n");
            QVERIFY(QFile::setPermissions(reader, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
            XlsWorkbook::setReader(reader, 0);
        }
        const QString path = m_env->writeFile(fileName, bytes);
        const QString stamp = lastUpdate();
        m_port->choose(path);
        AttendanceImport import(*m_db);
        QVERIFY(!import.run());
        QCOMPARE(m_port->messages().size(), 2);
        QCOMPARE(m_port->messages().last().style, int(MsgStyle::Error));
        QVERIFY2(m_port->lastText().startsWith(message), qPrintable(m_port->lastText()));
        verifyFamilies(false);
        QCOMPARE(lastUpdate(), stamp);
        QCOMPARE(fileBytes(path), bytes);
        QVERIFY(m_port->clipboard.isEmpty());
    }

    void theMarkedWorkbookReplacesTheOldOneWhole()
    {
        // A second name for the old file keeps the old bytes: the marked file was written
        // beside it and renamed over it, never rewritten in place.
        const QString path = writeSample(QStringLiteral("ods"));
        const QByteArray before = fileBytes(path);
        const QString oldName = m_env->path(QStringLiteral("old.ods"));
        QCOMPARE(::link(QFile::encodeName(path).constData(), QFile::encodeName(oldName).constData()), 0);
        m_port->answer(false);
        AttendanceImport(*m_db).importFile(path);
        QCOMPARE(fileBytes(oldName), before);
        QVERIFY(fileBytes(path) != before);
        QCOMPARE(QDir(m_env->root()).entryList(QDir::Files), (QStringList{"days.ods", "old.ods"})); // no leftovers
    }

    void aReadOnlyWorkbookIsImportedButNotReplaced()
    {
        const QString path = writeSample(QStringLiteral("xlsx"));
        const QByteArray before = fileBytes(path);
        QVERIFY(QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::ReadGroup));
        m_port->answer(false);
        AttendanceImport import(*m_db);
        import.importFile(path);
        verifyFamilies(true);
        QCOMPARE(fileBytes(path), before);
        QVERIFY(m_port->texts().at(0).contains(
            QStringLiteral("Column M of the workbook was not marked: Path/File access error: the file is read-only")));
        QVERIFY(m_port->clipboard.endsWith(QStringLiteral("Rows found in the database: 2, 3, 4, 7, 8\r\n")));
        QVERIFY(m_port->opened.isEmpty());
    }

    void whenEveryoneIsFoundNothingIsAsked()
    {
        // Only the families and rows that match: no list, no question; the marks are written.
        m_db->exec(QStringLiteral("UPDATE tblFamilies SET [Current]=False WHERE FamilyID IN (5, 6, 8)"));
        QList<SheetRow> rows;
        for (const SheetRow &r : attendanceRows())
            if (r.row <= 7)
                rows << r;
        rows.removeIf([](const SheetRow &r) { return r.name == QLatin1String("Tom Brown"); });
        const QString path = m_env->writeFile(QStringLiteral("days.ods"), makeOds(rows));
        AttendanceImport import(*m_db);
        import.importFile(path);
        QCOMPARE(m_port->texts(), QStringList());
        QVERIFY(m_port->clipboard.isEmpty());
        QCOMPARE(import.statusText(), QStringLiteral("Days imported for 3 families"));
        std::unique_ptr<Workbook> marked = Workbook::forFileName(path);
        marked->load(path);
        QCOMPARE(marked->text(7, 13), QStringLiteral("y"));
    }
};

QTEST_GUILESS_MAIN(TestAttendanceImport)
#include "tst_attendanceimport.moc"

// The family database as a plain SQLite file: other SQLite tools read and write it, and files of the
// first layout (text columns tied to the program's own collation) are rebuilt once when opened.
#include "app/familydatabase.h"
#include "app/sqlitecollation.h"
#include "families/familyeditor.h"
#include "support/hometest.h"

#include <QDir>
#include <QProcess>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStandardPaths>
#include <QTest>

#include <optional>

#include <sys/stat.h>

using namespace quillet;
using namespace quillet::test;

namespace {

// The first layout, as the program created it until the collation left the schema.
const char *const kFirstLayout[] = {
    "CREATE TABLE tblFamilies ( FamilyID INTEGER PRIMARY KEY AUTOINCREMENT, FirstName TEXT NOT NULL COLLATE QNOCASE,"
    " LastName TEXT COLLATE QNOCASE, Parent TEXT COLLATE QNOCASE, Current INTEGER NOT NULL DEFAULT -1,"
    " NoUploadToWeb INTEGER NOT NULL DEFAULT 0, NoCopyToCd INTEGER NOT NULL DEFAULT 0,"
    " FamDaysMam INTEGER NOT NULL DEFAULT 0, FamDaysTam INTEGER NOT NULL DEFAULT 0,"
    " FamDaysWam INTEGER NOT NULL DEFAULT 0, FamDaysTHam INTEGER NOT NULL DEFAULT 0,"
    " FamDaysFam INTEGER NOT NULL DEFAULT 0, FamDaysMpm INTEGER NOT NULL DEFAULT 0,"
    " FamDaysTpm INTEGER NOT NULL DEFAULT 0, FamDaysWpm INTEGER NOT NULL DEFAULT 0,"
    " FamDaysTHpm INTEGER NOT NULL DEFAULT 0, FamDaysFpm INTEGER NOT NULL DEFAULT 0,"
    " FamDaysOverride INTEGER NOT NULL DEFAULT 0, StartDate TEXT, EndDate TEXT)",
    "CREATE INDEX ixFamiliesName ON tblFamilies (FirstName, LastName)",
    "CREATE TABLE _tblParams ( DBversion INTEGER, PrivacyText TEXT COLLATE QNOCASE, MorningSessEnd TEXT,"
    " AfternoonSessEnd TEXT, WebAllowPriv INTEGER, WebCopyPriv INTEGER, CdAllowPriv INTEGER, CdCopyPriv INTEGER,"
    " LastDBUpdate TEXT, LastExport TEXT, LastExportFromPC TEXT)",
    "INSERT INTO _tblParams (DBversion, PrivacyText, WebAllowPriv, WebCopyPriv, CdAllowPriv, CdCopyPriv, LastExportFromPC)"
    " VALUES (1, 'Keep private', 1, 0, 0, 0, 'OFFICE')",
    "INSERT INTO tblFamilies (FamilyID, FirstName, LastName, Parent, FamDaysTHpm) VALUES (3, 'Sean', 'O''Brien', 'Mary', -1)",
    "INSERT INTO tblFamilies (FamilyID, FirstName, LastName, Current) VALUES (7, '\u00c9mile', 'Brun', 0)",
    "INSERT INTO tblFamilies (FamilyID, FirstName) VALUES (8, '(Staff)')",
    // The newest family was deleted: its ID must never come back.
    "INSERT INTO tblFamilies (FamilyID, FirstName) VALUES (12, 'Gone')",
    "DELETE FROM tblFamilies WHERE FamilyID=12",
};

ino_t inode(const QString &path)
{
    struct stat st = {};
    return ::stat(QFile::encodeName(path).constData(), &st) == 0 ? st.st_ino : 0;
}

// Runs the sqlite3 shell on a file; its standard output, or nothing when it failed.
std::optional<QString> shell(const QString &path, const QString &sql)
{
    QProcess p;
    p.start(QStringLiteral("sqlite3"), {path, sql});
    if (!p.waitForFinished(20000) || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0)
        return std::nullopt;
    return QString::fromUtf8(p.readAllStandardOutput());
}

} // namespace

class TestFamilySchema : public HomeTest
{
    Q_OBJECT

    void makeFirstLayout()
    {
        m_env->dataDir();
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("old"));
            db.setDatabaseName(FamilyDatabase::DbPath());
            QVERIFY(db.open() && RegisterTextCollation(db));
            QSqlQuery q(db);
            for (const char *statement : kFirstLayout)
                QVERIFY2(q.exec(QString::fromUtf8(statement)), statement);
            db.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("old"));
    }

    static QStringList schemaTexts(FamilyDatabase &db)
    {
        QStringList out;
        for (const QSqlRecord &r : db.select(QStringLiteral("SELECT sql FROM sqlite_master WHERE sql IS NOT NULL")))
            out << r.value(0).toString();
        return out;
    }

private Q_SLOTS:
    void init()
    {
        HomeTest::init();
        if (QStandardPaths::findExecutable(QStringLiteral("sqlite3")).isEmpty())
            QSKIP("the sqlite3 shell is not installed (Debian package sqlite3)");
    }

    void firstLayoutIsRebuiltOnceKeepingEverything()
    {
        makeFirstLayout();
        const QString path = FamilyDatabase::DbPath();
        // The reason for the change: other tools cannot write the first layout.
        QVERIFY(!shell(path, QStringLiteral("INSERT INTO tblFamilies (FirstName) VALUES ('Ann');")));
        const ino_t before = inode(path);
        {
            FamilyDatabase db;
            QVERIFY(db.OpenDatabase());
            QVERIFY(m_port->messages().isEmpty());
            QCOMPARE(db.DBversion(), 2);
            QVERIFY(!schemaTexts(db).join(QLatin1Char(' ')).contains(QStringLiteral("QNOCASE")));
            QCOMPARE(db.ReadParam(QStringLiteral("PrivacyText")).toString(), QStringLiteral("Keep private"));
            QCOMPARE(db.ReadParam(QStringLiteral("LastExportFromPC")).toString(), QStringLiteral("OFFICE"));
            FamilyEditor editor(db);
            editor.LoadList(false, true);
            QCOMPARE(editor.entryTexts(), (QStringList{" - \u00c9mile Brun", "Mary - Sean O'Brien", "(Staff)"}));
            const FamilyFields sean = editor.Fields(3);
            QCOMPARE(sean.lastName, QStringLiteral("O'Brien"));
            QVERIFY(sean.days[8]); // FamDaysTHpm
            QVERIFY(!editor.Fields(7).current);
            // A new family continues after the deleted 12.
            QCOMPARE(db.insert(QStringLiteral("INSERT INTO tblFamilies (FirstName) VALUES (?)"), {QStringLiteral("Ann")}), 13);
        }
        QVERIFY(inode(path) != before);
        QVERIFY(QDir(m_env->dataDir()).entryList({QStringLiteral("*.~*")}).isEmpty());
        const ino_t migrated = inode(path);
        {
            FamilyDatabase db;
            QVERIFY(db.OpenDatabase());
            QCOMPARE(db.select(QStringLiteral("SELECT * FROM tblFamilies")).size(), 4);
        }
        QCOMPARE(inode(path), migrated); // once only
        QCOMPARE(shell(path, QStringLiteral("INSERT INTO tblFamilies (FirstName) VALUES ('Bo'); SELECT MAX(FamilyID) FROM tblFamilies;"))
                     .value_or(QStringLiteral("failed")),
                 QStringLiteral("14\n"));
    }

    void otherToolsWriteAndTheProgramReadsInOrder()
    {
        QVERIFY(m_env->makeInstallation());
        const QString path = FamilyDatabase::DbPath();
        // Written the way a support person would: yes as 1, names in any case and with accents.
        const QString out = shell(path, QStringLiteral(
            "INSERT INTO tblFamilies (FirstName, LastName, Current, FamDaysMam) VALUES ('zoe', 'Adams', 1, 1);"
            "INSERT INTO tblFamilies (FirstName, LastName, Current) VALUES ('\u00c9mile', 'Brun', 1);"
            "INSERT INTO tblFamilies (FirstName, Current) VALUES ('(Staff)', 1);"
            "INSERT INTO tblFamilies (FirstName, LastName, Current) VALUES ('adam', 'Lee', 0);"
            "UPDATE tblFamilies SET Parent='Kim O''Neil' WHERE FirstName='zoe';"
            "SELECT FirstName FROM tblFamilies ORDER BY FirstName;")).value_or(QStringLiteral("failed"));
        QCOMPARE(out, QStringLiteral("(Staff)\nadam\nzoe\n\u00c9mile\n"));

        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        FamilyEditor editor(db);
        editor.LoadList(true, false); // current only: 1 counts as yes
        QCOMPARE(editor.entryTexts(), (QStringList{"\u00c9mile Brun", "zoe Adams", "(Staff)"}));
        QCOMPARE(FamilyEditor::CountsText(editor.entryTexts()), QStringLiteral("2 families, 2 children"));
        const auto monday = db.select(QStringLiteral("SELECT * FROM tblFamilies WHERE ([Current]=True And [FirstName] Not Like '(%') And (FamDaysMam=True)"));
        QCOMPARE(monday.size(), 1);
        QCOMPARE(db.select(QStringLiteral("SELECT * FROM tblFamilies WHERE [Parent]=?"), {QStringLiteral("KIM O'NEIL")}).size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestFamilySchema)
#include "tst_familyschema.moc"

#include "transferfixture.h"

#include "app/sqlitecollation.h"
#include "sync/databasecopycheck.h"
#include "sync/databasetransfer.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

using namespace quillet;
using namespace quillet::test;

// The family database between two PCs: which copy wins, the questions and their defaults, and
// copies from elsewhere that must be refused before anything local changes.
class TestDatabaseTransfer : public QObject
{
    Q_OBJECT

    std::unique_ptr<TwoPcFixture> m_f;

    QString copyPath() const { return m_f->xfr + QStringLiteral("/Database/quilletData.db"); }

    // PC B edits its families and exports them; the copy then waits in the transfer folder.
    void exportFromB(const QStringList &families = {QStringLiteral("Bella")})
    {
        m_f->b.activate();
        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        int id = 100;
        db.exec(QStringLiteral("BEGIN"));
        for (const QString &name : families)
            addFamily(db, ++id, name);
        db.exec(QStringLiteral("COMMIT"));
        setStamps(db, QStringLiteral("2026-03-01 09:00:00"), QStringLiteral("2026-02-01 09:00:00"), QString());
        QVERIFY(ExportFamilyDatabase(db));
        m_f->a.activate();
    }

private Q_SLOTS:
    void init()
    {
        m_f = std::make_unique<TwoPcFixture>();
        QVERIFY(m_f->install());
    }
    void cleanup()
    {
        m_f.reset();
    }

    void exportFollowsTheStamps_data()
    {
        QTest::addColumn<QString>("update");
        QTest::addColumn<QString>("exported");
        QTest::addColumn<bool>("expected");
        QTest::newRow("never changed, never exported") << "" << "" << false;
        QTest::newRow("changed, never exported") << "2026-01-02 10:00:00" << "" << true;
        QTest::newRow("changed after the export") << "2026-01-02 10:00:05" << "2026-01-02 10:00:00" << true;
        QTest::newRow("exported after the change") << "2026-01-02 10:00:00" << "2026-01-02 10:00:05" << false;
        QTest::newRow("both in the same second") << "2026-01-02 10:00:00" << "2026-01-02 10:00:00" << false;
    }
    void exportFollowsTheStamps()
    {
        QFETCH(QString, update);
        QFETCH(QString, exported);
        QFETCH(bool, expected);
        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        setStamps(db, update, exported, QString());
        QCOMPARE(ExportFamilyDatabase(db), expected);
        QCOMPARE(QFileInfo::exists(copyPath()), expected);
        QVERIFY(db.isOpen());
        if (expected) {
            QCOMPARE(ReadTransferParam(QStringLiteral("LastExportFromPC")).toString(), QStringLiteral("A"));
            QCOMPARE(db.ReadParam(QStringLiteral("LastExportFromPC")).toString(), QStringLiteral("A"));
            // The export stamps do not count as a change: the next export has nothing to do.
            QCOMPARE(db.ReadParam(QStringLiteral("LastDBUpdate")).toString(), update);
            QVERIFY(!ExportFamilyDatabase(db));
        }
        QVERIFY(m_f->port.messages().isEmpty());
    }

    void exportOverAnotherPcsWaitingCopy_data()
    {
        QTest::addColumn<bool>("localChanges");
        QTest::addColumn<QList<bool>>("answers");
        QTest::addColumn<bool>("exported");
        QTest::newRow("no local changes: no question") << false << QList<bool>{} << false;
        QTest::newRow("local changes, No keeps the other copy") << true << QList<bool>{false} << false;
        QTest::newRow("local changes, Yes replaces it") << true << QList<bool>{true} << true;
    }
    void exportOverAnotherPcsWaitingCopy()
    {
        QFETCH(bool, localChanges);
        QFETCH(QList<bool>, answers);
        QFETCH(bool, exported);
        exportFromB();
        const QByteArray waiting = fileBytes(copyPath());
        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        if (localChanges)
            addFamily(db, 1, QStringLiteral("Anna"));
        for (bool a : answers)
            m_f->port.answer(a);
        QCOMPARE(ExportFamilyDatabase(db), exported);
        QCOMPARE(ReadTransferParam(QStringLiteral("LastExportFromPC")).toString(),
                 exported ? QStringLiteral("A") : QStringLiteral("B"));
        if (!exported)
            QCOMPARE(fileBytes(copyPath()), waiting);
        if (localChanges) {
            QCOMPARE(m_f->port.messages().first().style, int(MsgStyle::QuestionNo)); // No is the default
            QVERIFY(m_f->port.messages().first().text.endsWith(
                QLatin1String("\r\nContinue to export the copy from this PC?")));
        }
        if (localChanges && !exported)
            QCOMPARE(m_f->port.lastText(),
                     QStringLiteral("Don't forget to import the other copy by running one of the import functions."));
    }

    void importDecides_data()
    {
        QTest::addColumn<bool>("ownExport");
        QTest::addColumn<bool>("localChanges");
        QTest::addColumn<QList<bool>>("answers");
        QTest::addColumn<bool>("imported");
        QTest::newRow("this PC's own export") << true << false << QList<bool>{} << false;
        QTest::newRow("another PC's, nothing changed here") << false << false << QList<bool>{} << true;
        QTest::newRow("local changes, No keeps the local one") << false << true << QList<bool>{false} << false;
        QTest::newRow("local changes, Yes takes the other") << false << true << QList<bool>{true} << true;
    }
    void importDecides()
    {
        QFETCH(bool, ownExport);
        QFETCH(bool, localChanges);
        QFETCH(QList<bool>, answers);
        QFETCH(bool, imported);
        FamilyDatabase db;
        if (ownExport) {
            QVERIFY(db.OpenDatabase());
            addFamily(db, 1, QStringLiteral("Anna"));
            QVERIFY(ExportFamilyDatabase(db));
        } else {
            exportFromB({QStringLiteral("Bella"), QStringLiteral("Bruno")});
            QVERIFY(db.OpenDatabase());
            setStamps(db, QStringLiteral("2026-01-01 08:00:00"), QStringLiteral("2026-01-01 08:00:00"), "A");
            if (localChanges)
                addFamily(db, 1, QStringLiteral("Anna"));
        }
        const QByteArray before = fileBytes(FamilyDatabase::DbPath());
        for (bool a : answers)
            m_f->port.answer(a);
        QCOMPARE(ImportFamilyDatabase(db), imported);
        QVERIFY(db.isOpen());
        if (localChanges)
            QCOMPARE(m_f->port.messages().first().style, int(MsgStyle::QuestionNo));
        if (imported) {
            QCOMPARE(familyNames(db), (QStringList{"Bella", "Bruno"}));
            QCOMPARE(db.ReadParam(QStringLiteral("LastExportFromPC")).toString(), QStringLiteral("B"));
            QCOMPARE(db.ReadParam(QStringLiteral("LastDBUpdate")).toString(), QStringLiteral("2026-03-01 09:00:00"));
            // The copy moved: the same copy is never imported twice.
            QVERIFY(!QFileInfo::exists(copyPath()));
            QVERIFY(!ImportFamilyDatabase(db));
            QVERIFY(!ExportFamilyDatabase(db)); // unchanged since the import
        } else {
            QCOMPARE(fileBytes(FamilyDatabase::DbPath()), before);
            QVERIFY(QFileInfo::exists(copyPath()));
        }
        // Nothing of the replacement is left beside the database.
        QCOMPARE(QDir(AppPaths::dataDir()).entryList({"*.~*"}, QDir::Files), QStringList());
    }

    void damagedCopyIsRefused_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::addColumn<QString>("reason");
        QTest::newRow("cut off") << "truncate" << "";
        QTest::newRow("not a database") << "garbage" << "";
        QTest::newRow("empty") << "empty" << "the file is empty";
        QTest::newRow("another program's database") << "schema" << "it has no table tblFamilies";
        QTest::newRow("a field missing") << "field" << "has no field LastExportFromPC";
        QTest::newRow("two parameter rows") << "rows" << "holds 2 rows instead of one";
        QTest::newRow("damaged pages") << "pages" << "";
    }
    void damagedCopyIsRefused()
    {
        QFETCH(QString, damage);
        QFETCH(QString, reason);
        QStringList many;
        for (int i = 0; i < 300; ++i)
            many << QStringLiteral("Family %1 with a longer name to fill pages").arg(i);
        exportFromB(many);
        QByteArray bytes = fileBytes(copyPath());
        const auto alter = [this](const QString &sql) {
            QSqlDatabase raw = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("alter"));
            raw.setDatabaseName(copyPath());
            QVERIFY(raw.open() && RegisterTextCollation(raw));
            QSqlQuery q(raw);
            for (const QString &statement : sql.split(QLatin1Char(';')))
                QVERIFY2(q.exec(statement), qPrintable(statement));
            raw.close();
        };
        if (damage == QLatin1String("truncate"))
            writeBytes(copyPath(), bytes.left(bytes.size() / 2));
        else if (damage == QLatin1String("garbage"))
            writeBytes(copyPath(), QByteArray(8192, 'x'));
        else if (damage == QLatin1String("empty"))
            writeBytes(copyPath(), QByteArray());
        else if (damage == QLatin1String("pages"))
            writeBytes(copyPath(), bytes.replace(bytes.size() / 2, 3000, QByteArray(3000, '\xA5')));
        else if (damage == QLatin1String("schema"))
            alter(QStringLiteral("DROP TABLE tblFamilies;CREATE TABLE Orders (id INTEGER)"));
        else if (damage == QLatin1String("field"))
            alter(QStringLiteral("ALTER TABLE _tblParams DROP COLUMN LastExportFromPC"));
        else
            alter(QStringLiteral("INSERT INTO _tblParams (DBversion) VALUES (1)"));
        QSqlDatabase::removeDatabase(QStringLiteral("alter"));
        const QByteArray damaged = fileBytes(copyPath());

        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        addFamily(db, 1, QStringLiteral("Anna"));
        setStamps(db, QStringLiteral("2026-01-01 08:00:00"), QStringLiteral("2026-01-01 08:00:00"), "A");
        const QByteArray before = fileBytes(FamilyDatabase::DbPath());
        const QStringList connections = QSqlDatabase::connectionNames();

        QVERIFY(!ImportFamilyDatabase(db));
        QVERIFY2(m_f->port.messages().size() == 1, qPrintable(m_f->port.texts().join("\n---\n")));
        QCOMPARE(m_f->port.messages().first().style, int(MsgStyle::Warning));
        QVERIFY(m_f->port.lastText().startsWith(
            QLatin1String("The family database in the Batch Transfer Dir cannot be imported: ")));
        QVERIFY2(m_f->port.lastText().contains(reason), qPrintable(m_f->port.lastText()));
        // Nothing local changed, the copy stays for the user to look at, no connection is left.
        QCOMPARE(fileBytes(FamilyDatabase::DbPath()), before);
        QCOMPARE(familyNames(db), QStringList{"Anna"});
        QCOMPARE(fileBytes(copyPath()), damaged);
        QCOMPARE(QSqlDatabase::connectionNames(), connections);
        QCOMPARE(QDir(AppPaths::dataDir()).entryList({"*.~*"}, QDir::Files), QStringList());
    }

    void readTransferParamOpensAndCloses()
    {
        QVERIFY(ReadTransferParam(QStringLiteral("LastExportFromPC")).isNull()); // no copy
        exportFromB();
        const QStringList connections = QSqlDatabase::connectionNames();
        QCOMPARE(ReadTransferParam(QStringLiteral("LastExportFromPC")).toString(), QStringLiteral("B"));
        QVERIFY(ReadTransferParam(QStringLiteral("NoSuchField")).isNull());
        QCOMPARE(QSqlDatabase::connectionNames(), connections);
        // Opened read-only: reading does not change a byte of the copy (no journal, no stamp).
        const QByteArray before = fileBytes(copyPath());
        QCOMPARE(DatabaseCopyCheck::Problem(copyPath()), QString());
        QCOMPARE(fileBytes(copyPath()), before);
        QCOMPARE(QDir(m_f->xfr + QStringLiteral("/Database")).entryList(QDir::Files), QStringList{"quilletData.db"});
    }
};

QTEST_GUILESS_MAIN(TestDatabaseTransfer)
#include "tst_databasetransfer.moc"

#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/error.h"
#include "lib/texthelpers.h"
#include "support/hometest.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTest>
#include <QTime>

using namespace quillet;
using namespace quillet::test;

namespace {

struct Fam
{
    int id;
    const char *first;
    const char *last;   // nullptr: Null
    const char *parent; // nullptr: Null
    bool current;
};

// Mixed case, accented letters, Null last names and parents, group entries.
const Fam kFamilies[] = {
    {1, "zoe", "Adams", "Mary Adams", true},
    {2, "Émile", "Brun", "anne Brunet", true},
    {3, "(Staff)", nullptr, nullptr, true},
    {4, "adam", nullptr, "Zed Smith", true},
    {5, "Ben", "Clark", nullptr, false},
    {6, "eva", "Brun", "Anne Brun", true},
    {7, "(All)", nullptr, nullptr, true},
    {8, "Édith", nullptr, "bob Clark", true},
};

} // namespace

class TestFamilyDatabase : public HomeTest
{
    Q_OBJECT

    void provision()
    {
        m_env->dataDir();
        QVERIFY(FamilyDatabase::Provision(FamilyDatabase::DbPath()));
    }

    void addFamilies(FamilyDatabase &db)
    {
        QVERIFY(db.connection().transaction());
        for (const Fam &f : kFamilies) {
            db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName, Parent, [Current]) "
                                   "VALUES (?, ?, ?, ?, ?)"),
                    {f.id, QString::fromUtf8(f.first), f.last ? QVariant(QString::fromUtf8(f.last)) : QVariant(),
                     f.parent ? QVariant(QString::fromUtf8(f.parent)) : QVariant(), f.current});
        }
        // Attendance for the both-days query: Monday and Tuesday for 2, 6, (Staff) and the
        // non-current 5; Monday only for 1; 4 attends every session through the override alone.
        db.exec(QStringLiteral("UPDATE tblFamilies SET FamDaysMam=True, FamDaysTam=True WHERE FamilyID IN (2, 3, 5)"));
        db.exec(QStringLiteral("UPDATE tblFamilies SET FamDaysMpm=True, FamDaysTpm=True WHERE FamilyID=6"));
        db.exec(QStringLiteral("UPDATE tblFamilies SET FamDaysMam=True WHERE FamilyID=1"));
        db.exec(QStringLiteral("UPDATE tblFamilies SET FamDaysOverride=True WHERE FamilyID=4"));
        QVERIFY(db.connection().commit());
    }

    // A new database, opened, with kFamilies in it when `withFamilies`.
    void open(FamilyDatabase &db, bool withFamilies = false)
    {
        provision();
        QVERIFY(db.OpenDatabase());
        if (withFamilies)
            addFamilies(db);
    }

    static QString duplicateCheck(const QVariant &first, const QVariant &last, int exceptId)
    {
        QString where = lib_AddWhere(QStringLiteral("FirstName"), QStringLiteral("="), first, QString());
        where = lib_AddWhere(QStringLiteral("LastName"), QStringLiteral("="), last, where);
        where = lib_AddWhere(QStringLiteral("FamilyID"), QStringLiteral("<>"), exceptId, where);
        return QStringLiteral("SELECT * FROM tblFamilies") + where;
    }

    static QList<int> ids(const QList<QSqlRecord> &rows)
    {
        QList<int> out;
        for (const QSqlRecord &r : rows)
            out << r.value(QStringLiteral("FamilyID")).toInt();
        return out;
    }

private Q_SLOTS:
    void freshDatabaseHasOneParameterRow()
    {
        FamilyDatabase db;
        open(db);
        QCOMPARE(db.DBversion(), 2);
        QVERIFY(db.ReadParam(QStringLiteral("MorningSessEnd")).isNull());
        QCOMPARE(db.select(QStringLiteral("SELECT * FROM _tblParams")).size(), 1);
        QVERIFY(db.select(QStringLiteral("SELECT * FROM tblFamilies")).isEmpty());
        QVERIFY(m_port->messages().isEmpty());
        // Every field the program reads or writes by name.
        const QStringList families{"FamilyID", "FirstName", "LastName", "Parent", "Current", "NoUploadToWeb",
                                   "NoCopyToCd", "FamDaysMam", "FamDaysTam", "FamDaysWam", "FamDaysTHam",
                                   "FamDaysFam", "FamDaysMpm", "FamDaysTpm", "FamDaysWpm", "FamDaysTHpm",
                                   "FamDaysFpm", "FamDaysOverride", "StartDate", "EndDate"};
        const QStringList params{"DBversion", "PrivacyText", "MorningSessEnd", "AfternoonSessEnd", "WebAllowPriv",
                                 "WebCopyPriv", "CdAllowPriv", "CdCopyPriv", "LastDBUpdate", "LastExport",
                                 "LastExportFromPC"};
        const auto fields = [&db](const QString &table) {
            const QSqlRecord r = db.connection().record(table);
            QStringList names;
            for (int i = 0; i < r.count(); ++i)
                names << r.fieldName(i);
            return names;
        };
        QCOMPARE(fields(QStringLiteral("tblFamilies")), families);
        QCOMPARE(fields(QStringLiteral("_tblParams")), params);
    }

    void missingFileIsFatal()
    {
        m_env->dataDir();
        FamilyDatabase db;
        QVERIFY(!db.OpenDatabase());
        QCOMPARE(m_port->lastText(), QStringLiteral("Fatal Error: database file not found\r\n") + FamilyDatabase::DbPath());
        QCOMPARE(m_port->messages().last().style, 1);
    }

    void damagedIndexIsRepairedQuietly()
    {
        {
            FamilyDatabase db;
            open(db, true);
        }
        // Damage the index's page (the table rows stay readable): the integrity check fails, and
        // the rebuild recreates the index from the table.
        int rootPage = 0;
        {
            QSqlDatabase raw = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("raw"));
            raw.setDatabaseName(FamilyDatabase::DbPath());
            QVERIFY(raw.open());
            QSqlQuery q(raw);
            QVERIFY(q.exec(QStringLiteral("SELECT rootpage FROM sqlite_master WHERE name='ixFamiliesName'")) && q.next());
            rootPage = q.value(0).toInt();
            raw.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("raw"));
        QFile file(FamilyDatabase::DbPath());
        QVERIFY(file.open(QIODevice::ReadWrite));
        file.seek(qint64(rootPage - 1) * 4096 + 8);
        file.write(QByteArray(200, '\x5a'));
        file.close();

        FamilyDatabase db;
        QVERIFY2(db.OpenDatabase(), qPrintable(m_port->lastText()));
        QVERIFY(m_port->messages().isEmpty());
        QCOMPARE(db.select(QStringLiteral("SELECT * FROM tblFamilies")).size(), int(std::size(kFamilies)));
        QVERIFY(QDir(m_env->dataDir()).entryList({QStringLiteral("*.~*")}).isEmpty());
    }

    void unrepairableFileIsFatal()
    {
        m_env->dataDir();
        QFile file(FamilyDatabase::DbPath());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(8192, 'x'));
        file.close();
        FamilyDatabase db;
        QVERIFY(!db.OpenDatabase());
        const QString text = m_port->lastText();
        QVERIFY2(text.startsWith(QStringLiteral("Fatal Error: could not establish database integrity, repair failed\r\n"
                                                "Error: ")),
                 qPrintable(text));
        QVERIFY(text.endsWith(QStringLiteral("\r\nDB: ") + FamilyDatabase::DbPath()));
        QCOMPARE(m_port->messages().size(), 1);
    }

    void writeParamRules()
    {
        FamilyDatabase db;
        open(db);
        db.exec(QStringLiteral("UPDATE _tblParams SET WebAllowPriv=1, LastDBUpdate='2000-01-01 00:00:00'"));
        db.CloseDatabase();
        QVERIFY(db.OpenDatabase());

        db.WriteParam(QStringLiteral("WebAllowPriv"), 1); // equal: nothing written
        QCOMPARE(db.ReadParam(QStringLiteral("LastDBUpdate")).toString(), QStringLiteral("2000-01-01 00:00:00"));
        db.WriteParam(QStringLiteral("LastExportFromPC"), QStringLiteral("Office")); // no stamp
        QCOMPARE(db.ReadParam(QStringLiteral("LastDBUpdate")).toString(), QStringLiteral("2000-01-01 00:00:00"));
        db.WriteParam(QStringLiteral("PrivacyText"), QString()); // Null and "" are equal
        QCOMPARE(db.ReadParam(QStringLiteral("LastDBUpdate")).toString(), QStringLiteral("2000-01-01 00:00:00"));

        db.WriteParam(QStringLiteral("MorningSessEnd"), QTime(12, 15));
        QCOMPARE(db.ReadParam(QStringLiteral("MorningSessEnd")).toString(), QStringLiteral("12:15:00"));
        const QDateTime stamp = QDateTime::fromString(db.ReadParam(QStringLiteral("LastDBUpdate")).toString(),
                                                      QStringLiteral("yyyy-MM-dd HH:mm:ss"));
        QVERIFY(qAbs(stamp.secsTo(QDateTime::currentDateTime())) < 60);

        // Kept in the file, not only in memory.
        db.CloseDatabase();
        QVERIFY(db.OpenDatabase());
        QCOMPARE(db.ReadParam(QStringLiteral("LastExportFromPC")).toString(), QStringLiteral("Office"));
        QCOMPARE(db.ReadParam(QStringLiteral("MorningSessEnd")).toString(), QStringLiteral("12:15:00"));
    }

    void privacyTextIsCached()
    {
        FamilyDatabase db;
        open(db);
        db.WriteParam(QStringLiteral("PrivacyText"), QStringLiteral("Keep Private"));
        QCOMPARE(db.ReadPrivacyText(), QStringLiteral("Keep Private"));
        db.WriteParam(QStringLiteral("PrivacyText"), QStringLiteral("Changed"));
        QCOMPARE(db.ReadPrivacyText(), QStringLiteral("Keep Private")); // until the next start
    }

    void familyOrders_data()
    {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QList<int>>("order");
        // By first name then last name, ignoring case, accents next to their letter, "(" last.
        QTest::newRow("by name")
            << "SELECT * FROM tblFamilies ORDER BY IIf([FirstName] LIKE '(%','zzz'&[FirstName],[FirstName]) & [LastName]"
            << QList<int>{4, 5, 8, 2, 6, 1, 7, 3};
        // By parent then last name; a Null parent sorts by the last name alone.
        QTest::newRow("by parent")
            << "SELECT * FROM tblFamilies ORDER BY IIf([FirstName] LIKE '(%','zzz'&[FirstName],[Parent]) & [LastName]"
            << QList<int>{6, 2, 8, 5, 1, 4, 7, 3};
        QTest::newRow("current only, for the resize exclusion")
            << "SELECT * FROM tblFamilies WHERE [Current]=True ORDER BY IIf([FirstName] LIKE '(%','zzz'&[FirstName],"
               "[FirstName]) & [LastName]"
            << QList<int>{4, 8, 2, 6, 1, 7, 3};
        QTest::newRow("lookup by id") << "SELECT * FROM tblFamilies WHERE FamilyID=6" << QList<int>{6};
        QTest::newRow("current children for both days")
            << "SELECT * FROM tblFamilies WHERE ([Current]=True And [FirstName] Not Like '(%') And ("
               "(FamDaysMam=True Or FamDaysMpm=True) And (FamDaysTam=True Or FamDaysTpm=True)) ORDER BY "
               "[FirstName],[LastName]"
            << QList<int>{2, 6};
        QTest::newRow("family editor, current only")
            << "SELECT * FROM tblFamilies WHERE [Current]=True" << QList<int>{1, 2, 3, 4, 6, 7, 8};
        // The family editor's duplicate-name check, as the query helpers write it.
        QTest::newRow("same names, any letter case") << duplicateCheck("EVA", "brun", 2) << QList<int>{6};
        QTest::newRow("same names, the family itself left out") << duplicateCheck("eva", "BRUN", 6) << QList<int>{};
        QTest::newRow("same first name, Null last name") << duplicateCheck("ADAM", QVariant(), 0) << QList<int>{4};
        QTest::newRow("wildcard condition") << duplicateCheck("é*", QVariant(), 0) << QList<int>{8};
        QTest::newRow("concatenation compares without case")
            << "SELECT * FROM tblFamilies WHERE [tblFamilies].[FirstName] & ' ' & [LastName]='ÉMILE brun'"
            << QList<int>{2};
        QTest::newRow("text compares without case or accents")
            << "SELECT * FROM tblFamilies WHERE [FirstName]='ÉMILE'" << QList<int>{2};
        QTest::newRow("LIKE without case or accents") << "SELECT * FROM tblFamilies WHERE [FirstName] LIKE 'éd*'"
                                                      << QList<int>{8};
    }
    void familyOrders()
    {
        QFETCH(QString, sql);
        QFETCH(QList<int>, order);
        FamilyDatabase db;
        open(db, true);
        QCOMPARE(ids(db.select(sql)), order);
    }

    void familyIdsCsv()
    {
        WriteSetting(QStringLiteral("SrcDir"), m_env->path(QStringLiteral("src")));
        QDir().mkpath(m_env->path(QStringLiteral("src")));
        FamilyDatabase db;
        open(db, true);
        db.WriteFamilyIDsCsv();
        const QList<QByteArray> lines = fileBytes(m_env->path(QStringLiteral("src/_FamilyIDs.csv"))).split('\n');
        QCOMPARE(lines.size(), int(std::size(kFamilies)) + 1);
        QCOMPARE(lines[0], QByteArray("1,\"zoe\",\"Adams\",\"Mary Adams\",\"Current\"\r"));
        QCOMPARE(lines[2], QByteArray("3,\"(Staff)\",#NULL#,#NULL#,\"Current\"\r"));
        QCOMPARE(lines[4], QByteArray("5,\"Ben\",\"Clark\",#NULL#,\"Not Current\"\r"));
    }

    void datesCompareAsStored()
    {
        FamilyDatabase db;
        open(db, true);
        db.exec(QStringLiteral("UPDATE tblFamilies SET StartDate=?, EndDate=? WHERE FamilyID=5"),
                {QDate(2016, 3, 15), QDateTime(QDate(2016, 7, 1), QTime(17, 30))});
        const auto query = [&db](const QString &condition, const QVariant &date) {
            return ids(db.select(QStringLiteral("SELECT * FROM tblFamilies WHERE ") + condition + QLatin1Char('#')
                                 + lib_DateToSql(date) + QLatin1Char('#')));
        };
        // A date alone is midnight of that day, written and compared the same way.
        QCOMPARE(query(QStringLiteral("[StartDate]="), QDate(2016, 3, 15)), QList<int>{5});
        QCOMPARE(query(QStringLiteral("[StartDate]="), QDateTime(QDate(2016, 3, 15), QTime(0, 0))), QList<int>{5});
        QCOMPARE(query(QStringLiteral("[EndDate]>"), QDate(2016, 7, 1)), QList<int>{5});
        QCOMPARE(query(QStringLiteral("[EndDate]<"), QDateTime(QDate(2016, 7, 1), QTime(17, 30, 1))), QList<int>{5});
        QCOMPARE(query(QStringLiteral("[EndDate]<"), QDate(2016, 7, 1)), QList<int>{});
        QCOMPARE(ids(db.select(QStringLiteral("SELECT * FROM tblFamilies WHERE [StartDate] Is Null"))).size(),
                 int(std::size(kFamilies)) - 1);
    }

    void newFamilyGetsItsKey()
    {
        FamilyDatabase db;
        open(db, true);
        const qint64 id = db.insert(QStringLiteral("INSERT INTO tblFamilies (FirstName, [Current]) VALUES (?, ?)"),
                                    {QStringLiteral("Tom"), true});
        QCOMPARE(id, 9);
        const QList<QSqlRecord> rows = db.select(QStringLiteral("SELECT * FROM tblFamilies WHERE FamilyID=9"));
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows[0].value(QStringLiteral("Current")).toInt(), -1);
        QVERIFY(rows[0].value(QStringLiteral("LastName")).isNull());
        // A deleted family's key is not given to the next newcomer: tags still name it.
        db.exec(QStringLiteral("DELETE FROM tblFamilies WHERE FamilyID=9"));
        QCOMPARE(db.insert(QStringLiteral("INSERT INTO tblFamilies (FirstName) VALUES ('Ann')")), 10);
    }

    void unknownNamesAreFaults()
    {
        provision();
        FamilyDatabase db;
        QVERIFY_THROWS_EXCEPTION(Error, db.ReadParam(QStringLiteral("WebAllowPriv"))); // not open yet
        QVERIFY(db.OpenDatabase());
        QVERIFY_THROWS_EXCEPTION(Error, db.select(QStringLiteral("SELECT * FROM nowhere")));
        QVERIFY_THROWS_EXCEPTION(Error, db.ReadParam(QStringLiteral("WebAlowPriv")));
        QVERIFY_THROWS_EXCEPTION(Error, db.WriteParam(QStringLiteral("WebAlowPriv"), 1));
        QVERIFY(db.ReadParam(QStringLiteral("LastDBUpdate")).isNull()); // nothing was stamped
    }

    void provisionNeverReplacesADatabase()
    {
        {
            FamilyDatabase db;
            open(db, true);
        }
        QVERIFY(!FamilyDatabase::Provision(FamilyDatabase::DbPath()));
        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        QCOMPARE(db.select(QStringLiteral("SELECT * FROM tblFamilies")).size(), int(std::size(kFamilies)));
        QCOMPARE(QDir(m_env->dataDir()).entryList(QDir::Files), QStringList{QStringLiteral("quilletData.db")});
    }

    // The list goes into the Source Dir: without one, or when it is unplugged, nothing is written
    // anywhere, and a read-only list is not replaced.
    void familyIdsCsvFailures_data()
    {
        QTest::addColumn<QString>("srcDir"); // under the test's folder, "" for none
        QTest::addColumn<QByteArray>("old"); // a read-only list already there, "" for none
        QTest::newRow("no Source Dir") << "" << QByteArray();
        QTest::newRow("Source Dir unplugged") << "unplugged" << QByteArray();
        QTest::newRow("read-only list kept") << "src" << QByteArray("old\r\n");
    }
    void familyIdsCsvFailures()
    {
        QFETCH(QString, srcDir);
        QFETCH(QByteArray, old);
        const QString oldPath = m_env->path(QStringLiteral("src/_FamilyIDs.csv"));
        if (!old.isEmpty())
            QFile::setPermissions(m_env->writeFile(QStringLiteral("src/_FamilyIDs.csv"), old), QFileDevice::ReadOwner);
        if (!srcDir.isEmpty())
            WriteSetting(QStringLiteral("SrcDir"), m_env->path(srcDir));
        FamilyDatabase db;
        open(db, true);
        try {
            db.WriteFamilyIDsCsv();
            QFAIL("the list was written");
        } catch (const Error &e) {
            if (!old.isEmpty())
                QVERIFY2(e.description().endsWith(QStringLiteral("File: ") + oldPath), qPrintable(e.description()));
        }
        QVERIFY(!QFileInfo::exists(QStringLiteral("_FamilyIDs.csv")));
        QVERIFY(!QFileInfo::exists(m_env->path(QStringLiteral("unplugged"))));
        QFile::setPermissions(oldPath, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        QCOMPARE(fileBytes(oldPath), old);
    }
};

QTEST_GUILESS_MAIN(TestFamilyDatabase)
#include "tst_familydatabase.moc"

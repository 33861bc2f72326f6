#include "app/jetsql.h"

#include <QTest>

using namespace quillet;

class TestJetSql : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void translate_data()
    {
        QTest::addColumn<QString>("jet");
        QTest::addColumn<QString>("sqlite");
        QTest::newRow("plain select") << "SELECT * FROM tblFamilies" << "SELECT * FROM tblFamilies";
        QTest::newRow("booleans") << "SELECT * FROM tblFamilies WHERE [Current]=True And [NoCopyToCd]=false"
                                  << "SELECT * FROM tblFamilies WHERE [Current]<>0 And [NoCopyToCd]=0";
        // A yes/no field written as 1 by another tool is yes: tests against True mean "not 0".
        QTest::newRow("tests against True") << "WHERE (FamDaysMam=True Or [x] <> True) And [y]>=True And f(True)"
                                            << "WHERE (FamDaysMam<>0 Or [x] = 0) And [y]>=-1 And f(-1)";
        QTest::newRow("concatenation chain treats Null as empty")
            << "SELECT [FirstName] & ' ' & [LastName] FROM t"
            << "SELECT ((IFNULL(((IFNULL([FirstName],'') || IFNULL(' ','')) COLLATE QNOCASE),'') || "
               "IFNULL([LastName],'')) COLLATE QNOCASE) FROM t";
        // The concatenation already sorts without case, so the term gets no second COLLATE.
        QTest::newRow("family order")
            << "SELECT * FROM tblFamilies ORDER BY IIf([FirstName] LIKE '(%','zzz'&[FirstName],[FirstName]) & [LastName]"
            << "SELECT * FROM tblFamilies ORDER BY ((IFNULL(IIf([FirstName] LIKE '(%',((IFNULL('zzz','') || "
               "IFNULL([FirstName],'')) COLLATE QNOCASE),[FirstName]),'') || IFNULL([LastName],'')) COLLATE QNOCASE)";
        QTest::newRow("two order terms") << "SELECT * FROM t ORDER BY [FirstName],[LastName]"
                                         << "SELECT * FROM t ORDER BY [FirstName] COLLATE QNOCASE,[LastName] COLLATE QNOCASE";
        QTest::newRow("descending, then another term")
            << "SELECT * FROM t ORDER BY [FirstName] DESC, [LastName]"
            << "SELECT * FROM t ORDER BY [FirstName] COLLATE QNOCASE DESC, [LastName] COLLATE QNOCASE";
        QTest::newRow("qualified names are one operand")
            << "WHERE [tblFamilies].[FirstName] & t.LastName='x'"
            << "WHERE ((IFNULL([tblFamilies].[FirstName],'') || IFNULL(t.LastName,'')) COLLATE QNOCASE)='x' COLLATE QNOCASE";
        QTest::newRow("date and time literal") << "SELECT * FROM t WHERE [StartDate]>=#03/05/2024 09:41:00#"
                                               << "SELECT * FROM t WHERE [StartDate]>='2024-03-05 09:41:00' COLLATE QNOCASE";
        QTest::newRow("date literal is midnight") << "WHERE [EndDate]<#12/31/2099#"
                                                  << "WHERE [EndDate]<'2099-12-31 00:00:00' COLLATE QNOCASE";
        QTest::newRow("time literal") << "WHERE [MorningSessEnd]=#12:30:00#"
                                      << "WHERE [MorningSessEnd]='12:30:00' COLLATE QNOCASE";
        QTest::newRow("wildcards in LIKE only") << "WHERE [FirstName] LIKE 'An*' AND [x]='a*b' AND [y] NOT LIKE '?b'"
                                                << "WHERE [FirstName] LIKE 'An%' AND [x]='a*b' COLLATE QNOCASE AND [y] NOT LIKE '_b'";
        QTest::newRow("ampersand, True and # inside text stay")
            << "WHERE [FirstName]='Tom & True #1#'" << "WHERE [FirstName]='Tom & True #1#' COLLATE QNOCASE";
        QTest::newRow("double-quoted text") << "WHERE [FirstName]=\"Jack & Jill\" And [LastName]=\"O'Brien \"\"B\"\"\""
                                            << "WHERE [FirstName]='Jack & Jill' COLLATE QNOCASE And [LastName]='O''Brien \"B\"' COLLATE QNOCASE";
        QTest::newRow("SET assigns, WHERE compares")
            << "UPDATE t SET [Current]=True, [x]=?, [y]='a' WHERE [z]=True And [n]=?"
            << "UPDATE t SET [Current]=-1, [x]=?, [y]='a' WHERE [z]<>0 And [n]=? COLLATE QNOCASE";
        QTest::newRow("bound values compare without case")
            << "WHERE ([FirstName]=?) AND ([FamilyID]<>?) AND [x] LIKE ? AND f(?)"
            << "WHERE ([FirstName]=? COLLATE QNOCASE) AND ([FamilyID]<>? COLLATE QNOCASE) AND [x] LIKE ? AND f(?)";
        QTest::newRow("quoted apostrophe") << "WHERE [LastName]='O''Brien' & 'x'"
                                           << "WHERE [LastName]=((IFNULL('O''Brien','') || IFNULL('x','')) COLLATE QNOCASE)";
        QTest::newRow("is null") << "WHERE [Parent] Is Null Or [Parent] Is Not Null"
                                 << "WHERE [Parent] Is Null Or [Parent] Is Not Null";
    }
    void translate()
    {
        QFETCH(QString, jet);
        QFETCH(QString, sqlite);
        QCOMPARE(translateJetSql(jet), sqlite);
    }

    void storedDates_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("stored");
        QTest::newRow("date is midnight") << QVariant(QDate(2016, 3, 15)) << "2016-03-15 00:00:00";
        QTest::newRow("date and time") << QVariant(QDateTime(QDate(2016, 3, 15), QTime(9, 5, 7)))
                                       << "2016-03-15 09:05:07";
        QTest::newRow("time of day") << QVariant(QTime(12, 15)) << "12:15:00";
        QTest::newRow("no date is Null") << QVariant(QDate()) << QString();
    }
    void storedDates()
    {
        QFETCH(QVariant, value);
        QFETCH(QString, stored);
        QCOMPARE(storedDateText(value), stored);
    }
};

QTEST_GUILESS_MAIN(TestJetSql)
#include "tst_jetsql.moc"

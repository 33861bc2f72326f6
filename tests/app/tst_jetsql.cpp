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
                                  << "SELECT * FROM tblFamilies WHERE [Current]=-1 And [NoCopyToCd]=0";
        QTest::newRow("concatenation treats Null as empty")
            << "SELECT [FirstName] & ' ' & [LastName] FROM t"
            << "SELECT (IFNULL((IFNULL([FirstName],'') || IFNULL(' ','')),'') || IFNULL([LastName],'')) FROM t";
        QTest::newRow("family order, sorted without regard to case")
            << "SELECT * FROM tblFamilies ORDER BY IIf([FirstName] LIKE '(%','zzz'&[FirstName],[FirstName]) & [LastName]"
            << "SELECT * FROM tblFamilies ORDER BY (IFNULL(IIf([FirstName] LIKE '(%',(IFNULL('zzz','') || "
               "IFNULL([FirstName],'')),[FirstName]),'') || IFNULL([LastName],'')) COLLATE QNOCASE";
        QTest::newRow("two order terms") << "SELECT * FROM t ORDER BY [FirstName],[LastName]"
                                         << "SELECT * FROM t ORDER BY [FirstName] COLLATE QNOCASE,[LastName] COLLATE QNOCASE";
        QTest::newRow("descending") << "SELECT * FROM t ORDER BY [FirstName] DESC"
                                    << "SELECT * FROM t ORDER BY [FirstName] COLLATE QNOCASE DESC";
        QTest::newRow("date literal") << "SELECT * FROM t WHERE [StartDate]>=#03/05/2024 09:41:00#"
                                      << "SELECT * FROM t WHERE [StartDate]>='2024-03-05 09:41:00'";
        QTest::newRow("date only literal") << "WHERE [EndDate]<#12/31/2099#" << "WHERE [EndDate]<'2099-12-31 00:00:00'";
        QTest::newRow("star wildcard in LIKE") << "WHERE [FirstName] LIKE 'An*' AND [x]='a*b'"
                                               << "WHERE [FirstName] LIKE 'An%' AND [x]='a*b'";
        QTest::newRow("ampersand and True inside text stay") << "WHERE [FirstName]='Tom & True'"
                                                             << "WHERE [FirstName]='Tom & True'";
        QTest::newRow("quoted apostrophe") << "WHERE [LastName]='O''Brien' & 'x'"
                                           << "WHERE [LastName]=(IFNULL('O''Brien','') || IFNULL('x',''))";
        QTest::newRow("is null") << "WHERE [Parent] Is Null" << "WHERE [Parent] Is Null";
    }
    void translate()
    {
        QFETCH(QString, jet);
        QFETCH(QString, sqlite);
        QCOMPARE(translateJetSql(jet), sqlite);
    }
};

QTEST_GUILESS_MAIN(TestJetSql)
#include "tst_jetsql.moc"

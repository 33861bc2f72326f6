#include "lib/error.h"
#include "lib/texthelpers.h"

#include <QTest>

using namespace quillet;

class TestTextHelpers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fieldNames_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("bracket");
        QTest::addColumn<QString>("expected");
        QTest::newRow("plain") << " LastName " << true << "[LastName]";
        QTest::newRow("table qualified") << "tblFamilies.FamilyID" << true << "[tblFamilies].[FamilyID]";
        QTest::newRow("already bracketed") << "[Odd Name]" << true << "[Odd Name]";
        QTest::newRow("no brackets asked") << "LastName" << false << "LastName";
    }
    void fieldNames()
    {
        QFETCH(QString, name);
        QFETCH(bool, bracket);
        QFETCH(QString, expected);
        QCOMPARE(lib_SqlFieldName(name, bracket), expected);
    }

    void dateLiterals_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("expected");
        QTest::newRow("date only") << QVariant(QDate(2016, 11, 6)) << "11/06/2016";
        QTest::newRow("time only") << QVariant(QTime(9, 5, 7)) << "09:05:07";
        QTest::newRow("both, month first") << QVariant(QDateTime(QDate(2021, 1, 31), QTime(15, 30, 0)))
                                           << "01/31/2021 15:30:00";
    }
    void dateLiterals()
    {
        QFETCH(QVariant, value);
        QFETCH(QString, expected);
        QCOMPARE(lib_DateToSql(value), expected);
    }

    void addWhere_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("op");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("where");
        QTest::addColumn<int>("kind");
        QTest::addColumn<bool>("first");
        QTest::addColumn<bool>("useOr");
        QTest::addColumn<bool>("orNull");
        QTest::addColumn<QString>("expected");
        QTest::newRow("apostrophe doubled") << "LastName" << "=" << QVariant(QStringLiteral("O'Brien")) << "" << 0
                                            << true << false << false << " WHERE ([LastName]='O''Brien')";
        QTest::newRow("wildcard becomes LIKE") << "FirstName" << "=" << QVariant(QStringLiteral("(*")) << "" << 0
                                               << true << false << false << " WHERE ([FirstName] LIKE '(*')";
        QTest::newRow("wildcard with <> is NOT LIKE")
            << "FirstName" << "<>" << QVariant(QStringLiteral("A?")) << "" << 0 << false << false << false
            << " ([FirstName] NOT LIKE 'A?')";
        QTest::newRow("null equals") << "Parent" << "=" << QVariant() << " WHERE (x)" << 0 << true << false << false
                                     << " WHERE (x) AND ([Parent] Is Null)";
        QTest::newRow("null differs, OR") << "Parent" << "<>" << QVariant() << " WHERE (x)" << 0 << true << true
                                          << false << " WHERE (x) OR ([Parent] Is Not Null)";
        QTest::newRow("date literal") << "DateAdded" << ">=" << QVariant(QDate(2020, 2, 3)) << "" << 0 << true
                                      << false << false << " WHERE ([DateAdded]>=#02/03/2020#)";
        QTest::newRow("number with or-null") << "FamilyID" << "=" << QVariant(12) << "" << 0 << true << false
                                             << true << " WHERE ([FamilyID]=12 OR [FamilyID] Is Null)";
        QTest::newRow("number as text") << "Code" << "=" << QVariant(7) << "" << 1 << true << false << false
                                        << " WHERE ([Code]='7')";
    }
    void addWhere()
    {
        QFETCH(QString, field);
        QFETCH(QString, op);
        QFETCH(QVariant, value);
        QFETCH(QString, where);
        QFETCH(int, kind);
        QFETCH(bool, first);
        QFETCH(bool, useOr);
        QFETCH(bool, orNull);
        QFETCH(QString, expected);
        QCOMPARE(lib_AddWhere(field, op, value, where, SqlValueKind(kind), first, useOr, orNull), expected);
    }

    void parseNumber_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<double>("expected");
        QTest::newRow("null") << QVariant() << 0.0;
        QTest::newRow("TRUE any case") << QVariant(QStringLiteral("TrUe")) << -1.0;
        QTest::newRow("false") << QVariant(QStringLiteral("false")) << 0.0;
        QTest::newRow("blank") << QVariant(QStringLiteral("   ")) << 0.0;
        QTest::newRow("currency and thousands") << QVariant(QStringLiteral("$1,234.50")) << 1234.5;
        QTest::newRow("pound sign") << QVariant(QString(QChar(0xA3)) + QStringLiteral("12")) << 12.0;
        QTest::newRow("stops at a letter") << QVariant(QStringLiteral("12ab3")) << 12.0;
        QTest::newRow("a number value") << QVariant(3.25) << 3.25;
        QTest::newRow("boolean true") << QVariant(true) << -1.0;
    }
    void parseNumber()
    {
        QFETCH(QVariant, value);
        QFETCH(double, expected);
        QCOMPARE(lib_ParseNumber(value), expected);
    }

    void timesOfDay_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QTime>("time");
        QTest::newRow("short") << " 9:30 " << QTime(9, 30);
        QTest::newRow("as the database stores it") << "12:30:00" << QTime(12, 30);
        QTest::newRow("afternoon with pm") << "3:30 pm" << QTime(15, 30);
        QTest::newRow("no such hour") << "25:00" << QTime();
        QTest::newRow("words") << "half three" << QTime();
    }
    void timesOfDay()
    {
        QFETCH(QString, text);
        QFETCH(QTime, time);
        QCOMPARE(lib_ParseTimeOfDay(text), time);
    }

    void settingsConversions()
    {
        QVERIFY(lib_ToBool(QStringLiteral("1")));
        QVERIFY(lib_ToBool(QStringLiteral("true")));
        QVERIFY(!lib_ToBool(QString()));
        QVERIFY(!lib_ToBool(QStringLiteral("0")));
        QCOMPARE(lib_ToInt(QStringLiteral("20")), 20);
        QCOMPARE(lib_ToInt(QString()), 0);
    }

    void htmlEncode()
    {
        QCOMPARE(lib_HtmlEncode(QStringLiteral("a <b> \"c\"")),
                 QStringLiteral("a&nbsp;&lt;b&gt;&nbsp;&quot;c&quot;"));
        QCOMPARE(lib_HtmlEncode(QStringLiteral("x\r\ny\nz")), QStringLiteral("x<br>y<br>z"));
        QCOMPARE(lib_HtmlEncode(QString::fromUtf8("é")), QStringLiteral("&#233;"));
    }

    void elapsed_data()
    {
        QTest::addColumn<qint64>("ms");
        QTest::addColumn<QString>("expected");
        QTest::newRow("example") << qint64(83456) << "01:23.46";
        QTest::newRow("zero") << qint64(0) << "00:00.00";
        QTest::newRow("hours shown") << qint64(3600000 + 61000) << "01:01:01.00";
    }
    void elapsed()
    {
        QFETCH(qint64, ms);
        QFETCH(QString, expected);
        QCOMPARE(lib_FormatElapsed(9, ms), expected);
    }

    void countsAndOrdinals()
    {
        QCOMPARE(lib_FormatCount(1, QStringLiteral("file")), QStringLiteral("1 file"));
        QCOMPARE(lib_FormatCount(3, QStringLiteral("file")), QStringLiteral("3 files"));
        QCOMPARE(lib_FormatCount(0, QStringLiteral("batch")), QStringLiteral("0 batches"));
        QCOMPARE(lib_OrdinalSuffix(1), QStringLiteral("st"));
        QCOMPARE(lib_OrdinalSuffix(12), QStringLiteral("th"));
        QCOMPARE(lib_OrdinalSuffix(23), QStringLiteral("rd"));
    }

    void lineParts()
    {
        QCOMPARE(lib_GetLineParts3(QStringLiteral("a\\\"b\\c\"\\d"), QLatin1Char('\\')),
                 (QStringList{QStringLiteral("a"), QStringLiteral("b\\c"), QStringLiteral("d")}));
        QCOMPARE(lib_GetLineParts3(QString(), QLatin1Char('\\')).size(), 1);
        const QString tooMany = QString(QStringLiteral("x/")).repeated(100) + QStringLiteral("x");
        try {
            lib_GetLineParts3(tooMany, QLatin1Char('/'));
            QFAIL("101 parts must be refused");
        } catch (const Error &e) {
            QCOMPARE(e.source(), QStringLiteral("Lib09.lib_GetLineParts3"));
        }
    }
};

QTEST_GUILESS_MAIN(TestTextHelpers)
#include "tst_texthelpers.moc"

#include "workspace/sessionrules.h"

#include <QTest>

using namespace quillet;
using namespace quillet::SessionRules;

class TestSessionRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sessionCodes_data()
    {
        QTest::addColumn<QTime>("time");
        QTest::addColumn<int>("code");
        QTest::newRow("early morning") << QTime(7, 0) << 1;
        QTest::newRow("exactly the morning end") << QTime(12, 30) << 1;
        QTest::newRow("a second later") << QTime(12, 30, 1) << 2;
        QTest::newRow("exactly the afternoon end") << QTime(15, 30) << 2;
        QTest::newRow("evening") << QTime(18, 0) << 0;
    }
    void sessionCodes()
    {
        QFETCH(QTime, time);
        QFETCH(int, code);
        QCOMPARE(SessionCode(time, QTime(12, 30), QTime(15, 30)), code);
    }

    void attendanceFlags_data()
    {
        QTest::addColumn<QDate>("date");
        QTest::addColumn<int>("session");
        QTest::addColumn<QString>("flag");
        QTest::newRow("tuesday morning") << QDate(2024, 3, 5) << 1 << "FamDaysTam";
        QTest::newRow("thursday afternoon") << QDate(2024, 3, 7) << 2 << "FamDaysTHpm";
        QTest::newRow("friday evening") << QDate(2024, 3, 8) << 0 << "";
        QTest::newRow("saturday") << QDate(2024, 3, 9) << 1 << "";
    }
    void attendanceFlags()
    {
        QFETCH(QDate, date);
        QFETCH(int, session);
        QFETCH(QString, flag);
        QCOMPARE(AttendanceFlag(date, session), flag);
    }

    void grouping()
    {
        Grouping g(QTime(12, 30), QTime(15, 30));
        const QDate day(2024, 3, 5);
        QCOMPARE(g.next(QDateTime(day, QTime(8, 0))), QStringLiteral("BLACK"));
        QCOMPARE(g.next(QDateTime(day, QTime(8, 30))), QStringLiteral("BLACK"));
        QCOMPARE(g.next(QDateTime(day, QTime(13, 10))), QStringLiteral("BLKWHT"));
        QCOMPARE(g.next(QDateTime(day.addDays(1), QTime(8, 5))), QStringLiteral("BLACK"));
        QCOMPARE(g.next(QDateTime(day.addDays(1), QTime(12, 30))), QStringLiteral("BLACK"));
    }

    void caption()
    {
        QLocale::setDefault(QLocale::c());
        const QString text = DateCaption(QDateTime(QDate(2013, 3, 5), QTime(9, 41)));
        QVERIFY2(text.endsWith(QStringLiteral(" 05-") + QLocale::system().monthName(3, QLocale::ShortFormat)
                               + QStringLiteral("-13 - 09:41")),
                 qPrintable(text));
    }
};

QTEST_GUILESS_MAIN(TestSessionRules)
#include "tst_sessionrules.moc"

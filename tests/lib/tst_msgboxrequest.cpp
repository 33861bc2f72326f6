#include "lib/errorhandler.h"
#include "lib/msgboxrequest.h"
#include "lib/progressestimate.h"

#include <QTest>

using namespace quillet;

class TestMsgBoxRequest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // What the message requests pack (where `packed`), the box reads back; what it reads is
    // forgiving of requests packed by hand.
    void parsesPackedFields_data()
    {
        QTest::addColumn<QString>("request");
        QTest::addColumn<int>("style");
        QTest::addColumn<int>("countdown");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("packed");
        QTest::newRow("info, 5 s, one word") << "3   5Saved" << 3 << 5 << "Saved" << true;
        QTest::newRow("blank countdown") << "1    Failed" << 1 << 0 << "Failed" << false;
        QTest::newRow("four-digit countdown") << "41200Go on?" << 4 << 1200 << "Go on?" << true;
        QTest::newRow("largest countdown") << "59999Sure?" << 5 << 9999 << "Sure?" << true;
        QTest::newRow("zero countdown") << "5   0Delete?" << 5 << 0 << "Delete?" << true;
        QTest::newRow("text keeps leading blanks") << "2   0  indented" << 2 << 0 << "  indented" << true;
        QTest::newRow("not a style digit") << "x   3text" << 0 << 3 << "text" << false;
        QTest::newRow("request without text") << "3   7" << 3 << 7 << "" << true;
        QTest::newRow("question without text or countdown") << "4   0" << 4 << 0 << "" << true;
        QTest::newRow("short request") << "3" << 3 << 0 << "" << false;
    }

    void parsesPackedFields()
    {
        QFETCH(QString, request);
        QFETCH(int, style);
        QFETCH(int, countdown);
        QFETCH(QString, text);
        QFETCH(bool, packed);
        if (packed)
            QCOMPARE(lib_PackMessageRequest(QString::number(style), countdown, text), request);
        const MsgBoxRequest r = MsgBoxRequest::parse(request);
        QCOMPARE(r.style(), style);
        QCOMPARE(r.isQuestion(), style == 4 || style == 5);
        QCOMPARE(r.countdown(), countdown);
        QCOMPARE(r.text(), text);
    }

    void displayText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("shown");
        QTest::newRow("tag with digits cut") << "Photo saved@12" << "Photo saved";
        QTest::newRow("tag with blanks and line end cut") << "Done @ 3\r\n" << "Done ";
        QTest::newRow("cut at the run's first @") << "x@1@2" << "x";
        QTest::newRow("bare @ at the end cut") << "Hello@" << "Hello";
        QTest::newRow("digits without @ stay") << "Copied 12" << "Copied 12";
        QTest::newRow("@ between words is a line break") << "Hello@World" << "Hello\r\nWorld";
        QTest::newRow("@ inside, tag at the end") << "a@b@7" << "a\r\nb";
        QTest::newRow("bare LF becomes CR LF") << "one\ntwo\n\nthree" << "one\r\ntwo\r\n\r\nthree";
        QTest::newRow("CR LF stays") << "one\r\ntwo" << "one\r\ntwo";
        QTest::newRow("leading LF") << "\nx" << "\r\nx";
        QTest::newRow("only a tag") << "@42" << "";
    }

    void displayText()
    {
        QFETCH(QString, text);
        QFETCH(QString, shown);
        QCOMPARE(MsgBoxRequest::displayText(text), shown);
    }

    void lineCount_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("charsPerLine");
        QTest::addColumn<int>("lines");
        QTest::newRow("empty") << "" << 10 << 1;
        QTest::newRow("one word") << "Hello" << 10 << 1;
        QTest::newRow("exactly full") << QString(10, QLatin1Char('a')) << 10 << 1;
        QTest::newRow("one over") << QString(11, QLatin1Char('a')) << 10 << 2;
        QTest::newRow("two and a half") << QString(25, QLatin1Char('a')) << 10 << 3;
        QTest::newRow("breaks") << "a\r\nb\r\nc" << 10 << 3;
        QTest::newRow("blank line counts") << "a\r\n\r\nb" << 10 << 3;
        QTest::newRow("long line among short") << "a\r\n" + QString(21, QLatin1Char('b')) << 10 << 4;
        QTest::newRow("nonsense width") << "abc" << 0 << 3;
    }

    void lineCount()
    {
        QFETCH(QString, text);
        QFETCH(int, charsPerLine);
        QFETCH(int, lines);
        QCOMPARE(MsgBoxRequest::lineCount(text, charsPerLine), lines);
    }

    void progressEstimate_data()
    {
        QTest::addColumn<int>("maximum");
        QTest::addColumn<int>("position");
        QTest::addColumn<int>("done");
        QTest::addColumn<qint64>("elapsedMs");
        QTest::addColumn<QString>("text");
        // 90 items left at 50 s each: 75 minutes, of which only minutes and seconds show.
        QTest::newRow("75 minutes") << 100 << 10 << 10 << qint64(500000) << "Expected completion in 15:00";
        QTest::newRow("minutes and seconds") << 10 << 3 << 3 << qint64(131571) << "Expected completion in 05:07";
        QTest::newRow("rounded to the second") << 4 << 2 << 2 << qint64(1499) << "Expected completion in 00:01";
        QTest::newRow("last item") << 10 << 10 << 10 << qint64(9000) << "Expected completion in 00:00";
        QTest::newRow("past the end") << 10 << 12 << 12 << qint64(9000) << "Expected completion in 00:00";
        QTest::newRow("exactly one hour drops the hour") << 2 << 1 << 1 << qint64(3600000)
                                                         << "Expected completion in 00:00";
        QTest::newRow("done 0: no estimate") << 10 << 5 << 0 << qint64(9000) << "";
    }

    void progressEstimate()
    {
        QFETCH(int, maximum);
        QFETCH(int, position);
        QFETCH(int, done);
        QFETCH(qint64, elapsedMs);
        QFETCH(QString, text);
        QCOMPARE(ProgressEstimate::completionText(maximum, position, done, elapsedMs), text);
    }
};

QTEST_GUILESS_MAIN(TestMsgBoxRequest)
#include "tst_msgboxrequest.moc"

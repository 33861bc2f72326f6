#include "lib/appstate.h"
#include "lib/apppaths.h"
#include "lib/debuglog.h"
#include "lib/errorhandler.h"
#include "support/scriptedprompt.h"
#include "support/testenv.h"

#include <QFile>
#include <QTest>
#include <QTime>

using namespace quillet;
using namespace quillet::test;

class TestErrorHandler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { appState().showErrorDetails = true; }

    void reportCodePart_data()
    {
        QTest::addColumn<qint32>("number");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("codePart");
        QTest::addColumn<int>("shownStyle");
        QTest::newRow("zero: no code part") << qint32(0) << "Sys" << "" << 1;
        QTest::newRow("sys 53") << qint32(53) << "Sys" << "(53) " << 1;
        QTest::newRow("app 3604 is a warning") << qint32(-2147217900) << "App" << "(&H80040E14)(AppDef 3604) " << 2;
        QTest::newRow("app 1000 is an error") << qint32(-2147220504) << "App" << "(&H800403E8)(AppDef 1000) " << 1;
        QTest::newRow("sql provider error") << qint32(-2147221500) << "Sql" << "(&H80040004)(SQL 4) " << 1;
        QTest::newRow("large negative is sql") << qint32(-2147467259) << "Sql"
                                              << "(&H80004005)(SQL -245755) " << 1;
    }

    // The report ends with the code part and the text, and any extra information on a line of its own.
    void reportCodePart()
    {
        QFETCH(qint32, number);
        QFETCH(QString, kind);
        QFETCH(QString, codePart);
        QFETCH(int, shownStyle);
        QCOMPARE(lib_ErrorKind(number), kind);

        const QString head = QStringLiteral(" An error has occurred in LoadSource()\r\n\r\n") + codePart
            + QStringLiteral("File not found");
        const QString report = lib_BuildErrorReport(QStringLiteral("LoadSource()"), number,
                                                    QStringLiteral("File not found"), QString(), QTime(14, 3, 2));
        QVERIFY2(report.endsWith(head), qPrintable(report));
        QVERIFY(lib_BuildErrorReport(QStringLiteral("LoadSource()"), number, QStringLiteral("File not found"),
                                     QStringLiteral("File:/x/y.jpg"), QTime(1, 2, 3))
                    .endsWith(head + QStringLiteral("\r\nFile:/x/y.jpg")));

        ScriptedPrompt port;
        lib_ErrorHandler(QStringLiteral("LoadSource()"), number, QStringLiteral("File not found"));
        QCOMPARE(port.messages().size(), 1);
        QCOMPARE(port.messages().first().style, shownStyle);
        QCOMPARE(port.beeps, 1);
    }

    void silentReportShowsNothing()
    {
        ScriptedPrompt port;
        lib_ErrorHandler(QStringLiteral("Lib09.lib_CopyFile"), kLibErrorNumber, QStringLiteral("x"), false);
        QVERIFY(port.messages().isEmpty());
    }

    void genericTextWithoutDetails()
    {
        appState().showErrorDetails = false;
        ScriptedPrompt port;
        lib_ErrorHandler(QStringLiteral("Save()"), 53, QStringLiteral("secret detail"));
        QCOMPARE(port.messages().size(), 1);
        QVERIFY(port.lastText().endsWith(QStringLiteral(" The application has encountered an error")));
        QVERIFY(!port.lastText().contains(QStringLiteral("secret")));
    }

    void splitLongMessages_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("parts");
        const QString a1249(1249, QLatin1Char('a'));
        QTest::newRow("1249 shown whole") << a1249 << QStringList{a1249};
        const QString a2000(2000, QLatin1Char('a'));
        QTest::newRow("no blank: split after 1240")
            << a2000 << QStringList{a2000.left(1240) + QStringLiteral("...(contd)"), a2000.mid(1240)};
        QString blank990(1250, QLatin1Char('b'));
        blank990[989] = QLatin1Char(' ');
        QTest::newRow("blank at 990 is the split")
            << blank990 << QStringList{blank990.left(990) + QStringLiteral("...(contd)"), blank990.mid(990)};
        QString lfEarly(1300, QLatin1Char('c'));
        lfEarly[9] = QLatin1Char('\n');
        lfEarly[995] = QLatin1Char(' '); // beyond 990: not looked at
        QTest::newRow("steps back to the nearest break")
            << lfEarly << QStringList{lfEarly.left(10) + QStringLiteral("...(contd)"), lfEarly.mid(10)};
    }

    void splitLongMessages()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, parts);
        QCOMPARE(lib_SplitLongMessage(text), parts);

        ScriptedPrompt port;
        lib_MsgInfo(text);
        QCOMPARE(port.texts(), parts);
        QCOMPARE(port.beeps, 0);
    }

    void yesNoAnswers_data()
    {
        QTest::addColumn<bool>("defaultYes");
        QTest::addColumn<bool>("userAnswer");
        QTest::newRow("default yes, user no") << true << false;
        QTest::newRow("default no, user yes") << false << true;
    }

    void yesNoAnswers()
    {
        QFETCH(bool, defaultYes);
        QFETCH(bool, userAnswer);
        ScriptedPrompt port;
        port.answer(userAnswer);
        QCOMPARE(lib_MsgYesNo(QStringLiteral("Continue?"), 5, defaultYes), userAnswer);
        QCOMPARE(port.messages().first().style, defaultYes ? 4 : 5);
        QCOMPARE(port.messages().first().timeout, 5);
    }

    void countdownLeavesTheDefault()
    {
        // With nobody to answer, the box closes through its countdown and the default stands.
        setPrompt(nullptr);
        QCOMPARE(lib_MsgYesNo(QStringLiteral("Q"), 5, false), false);
        QCOMPARE(lib_MsgYesNo(QStringLiteral("Q"), 5, true), true);
    }

    void logLineLayout()
    {
        const QDateTime when(QDate(2016, 11, 6), QTime(20, 48, 3));
        QCOMPARE(lib_FormatLogLine(QStringLiteral("text"), true, QStringLiteral("src"), when),
                 QStringLiteral("src, 06/11/16, 20:48:03, text"));
        QCOMPARE(lib_FormatLogLine(QStringLiteral("text"), false, QString(), when), QStringLiteral("text"));
    }

    void debugLogAppendsCrLfLinesAndTimingWhileLoading()
    {
        TestEnv env;
        env.dataDir();
        DebugLog(QStringLiteral("first"));
        DebugLog(QStringLiteral("second"));
        const QList<QByteArray> lines = fileBytes(GetDebugLogPath()).split('\n');
        QCOMPARE(lines.size(), 3);
        QVERIFY(lines[0].endsWith("first\r"));
        QVERIFY(lines[1].endsWith("second\r"));
        QCOMPARE(lines[0].size(), qsizetype(QByteArray("dd/mm/yy, HH:nn:ss, first\r").size()));
        // Timing lines are written only while the program loads.
        appState().systemLoaded = false;
        lib_Stopwatch(1);
        DebugLogTiming(QStringLiteral("LoadSource"));
        appState().systemLoaded = true;
        DebugLogTiming(QStringLiteral("LoadFamilies"));
        appState().systemLoaded = false;
        const QByteArray all = fileBytes(GetDebugLogPath());
        QVERIFY(all.contains("LoadSource: \t00:00."));
        QVERIFY(!all.contains("LoadFamilies"));
    }

    void stopwatchCommands()
    {
        lib_Stopwatch(1);
        QTest::qSleep(20);
        QCOMPARE(lib_Stopwatch(2), 0); // stops and accumulates
        lib_Stopwatch(3);              // restarts, keeping the total
        QTest::qSleep(10);
        const qint32 peek = lib_Stopwatch(4);
        QVERIFY(peek >= 30);
        const qint32 total = lib_Stopwatch(5);
        QVERIFY(total >= peek);
        QVERIFY(total < peek + 1000);
        lib_Stopwatch(1);
        QVERIFY(lib_Stopwatch(5) < 20); // a new start clears the total
        QCOMPARE(lib_Stopwatch(9), 0);
    }

    void showDebugText()
    {
        TestEnv env;
        env.dataDir();
        ScriptedPrompt port;
        ShowDebugText(QStringLiteral("row 1\r\nrow 2"));
        QCOMPARE(port.opened, QStringList{GetDebugViewPath()});
        QVERIFY(port.messages().isEmpty());
        QFile view(GetDebugViewPath());
        QVERIFY(view.open(QIODevice::ReadOnly));
        QCOMPARE(view.readAll(), QByteArray("row 1\r\nrow 2"));
        view.close();

        port.openResult = false; // no program to show it
        ShowDebugText(QString(), env.writeFile(QStringLiteral("list.txt"), "x"));
        QCOMPARE(port.opened.last(), env.path(QStringLiteral("list.txt")));
        QCOMPARE(port.lastText(), QStringLiteral("Sorry, could not find debug text window"));
    }
};

QTEST_GUILESS_MAIN(TestErrorHandler)
#include "tst_errorhandler.moc"

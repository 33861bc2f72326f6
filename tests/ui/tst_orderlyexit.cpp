#include "lib/apppaths.h"
#include "lib/inifile.h"
#include "uitest.h"
#include "workspace/clsundos.h"

#include <QElapsedTimer>
#include <QProcess>

#include <csignal>

using namespace quillet;
using namespace quillet::test;

// SIGTERM (a logout) and SIGINT end the real program in order whatever it shows: a modal message,
// the settings dialog, the progress window of a load, a Save's question after a failed copy. It
// exits on its own, with the window rectangle in its ini file and its undo levels in the undo file.
class TestOrderlyExit : public QObject
{
    Q_OBJECT

    TestEnv *m_env = nullptr;
    bool m_undoKept = false; // an earlier session's undo file is in place

    // The program runs in this test's own home; the environment of the child is the test's.
    void start(QProcess &program, const QString &executable, const QStringList &arguments = {})
    {
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program.setStandardOutputFile(QProcess::nullDevice());
        program.start(executable, arguments);
        QVERIFY(program.waitForStarted());
    }

    // Waits until the debug log holds `line`: the program has reached that point of its work.
    bool reached(const QString &line, int timeoutMs = 60000)
    {
        const QString log = AppPaths::dataDir() + QStringLiteral("/quilletDebug.txt");
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < timeoutMs) {
            QFile f(log);
            if (f.open(QIODevice::ReadOnly) && f.readAll().contains(line.toUtf8()))
                return true;
            QTest::qWait(50);
        }
        return false;
    }

    // The signal ends the program on its own, the window rectangle stored and the earlier
    // session's undo levels kept; a generous bound keeps a loaded machine from failing the test,
    // while a program that ignores the signal never ends at all.
    void endsInOrder(QProcess &program, int signalNumber, int runningMs = 300)
    {
        QTest::qWait(runningMs); // the modal loop or the load is running
        ::kill(pid_t(program.processId()), signalNumber);
        QVERIFY2(program.waitForFinished(10000), "the program did not end after the signal");
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QVERIFY(!IniFile::read(AppPaths::dataDir() + QStringLiteral("/quillet.ini"), QStringLiteral("Settings"),
                               QStringLiteral("FormRectMn"))
                     .isEmpty());
        if (m_undoKept)
            QVERIFY(fileBytes(clsUndos::FilePath()).startsWith("v1\r\n"));
    }

    void installation(int photos, bool thumbnails)
    {
        QVERIFY(m_env->makeInstallation());
        WriteSetting(QStringLiteral("Thumbnails"), thumbnails ? QStringLiteral("1") : QStringLiteral("0"));
        WriteSetting(QStringLiteral("PCname"), QStringLiteral("Office"));
        for (const char *key : {"AutoFilterFams", "AssnSubToTgt", "AssnSrcSubToTgt"})
            WriteSetting(QLatin1String(key), QStringLiteral("0"));
        QVERIFY(addFamilies({"INSERT INTO tblFamilies (FamilyID, FirstName, LastName, [Current]) VALUES (12,'Anna','Smith',True)"}));
        const QString first = m_env->srcDir() + QStringLiteral("/IMG_0000.jpg");
        QVERIFY(savePhoto(first, thumbnails ? QSize(1600, 1200) : QSize(64, 48)));
        for (int i = 1; i < photos; ++i)
            QVERIFY(QFile::link(first, m_env->srcDir() + QStringLiteral("/IMG_%1.jpg").arg(i, 4, 10, QLatin1Char('0'))));
        // The levels of an earlier session must survive.
        writeBytes(clsUndos::FilePath(), "v1\r\n0\r\n0\r\n");
        m_undoKept = true;
    }

private Q_SLOTS:
    void init()
    {
        m_env = new TestEnv;
        m_undoKept = false;
    }
    void cleanup() { delete m_env; }

    void firstStartWithItsMessageAndTheSettingsDialog_data()
    {
        QTest::addColumn<int>("signalNumber");
        QTest::newRow("SIGTERM") << int(SIGTERM);
        QTest::newRow("SIGINT") << int(SIGINT);
    }
    // A fresh installation greets the user with a message, then opens the settings dialog: both
    // modal, waiting for a user who has logged out.
    void firstStartWithItsMessageAndTheSettingsDialog()
    {
        QFETCH(int, signalNumber);
        QProcess program;
        start(program, QStringLiteral(QUILLET_EXECUTABLE));
        QVERIFY(reached(QStringLiteral("OpenDatabase")));
        endsInOrder(program, signalNumber);
    }

    void duringAListLoad()
    {
        installation(400, true);
        QProcess program;
        start(program, QStringLiteral(QUILLET_EXECUTABLE));
        QVERIFY(reached(QStringLiteral("InitBatchfile")));
        endsInOrder(program, SIGTERM);
    }

    void duringTheReplayOfABatchfile_data()
    {
        QTest::addColumn<QString>("command");
        QTest::newRow("at start-up") << "replay";
        QTest::newRow("on Refresh") << "refresh";
    }
    // Another PC's batchfile of many resized copies is replayed, at start-up or on Refresh: the
    // signal stops it at its next entry as a cancel does, and the batchfile stays whole for the
    // next run to finish.
    void duringTheReplayOfABatchfile()
    {
        QFETCH(QString, command);
        constexpr int kEntries = 200;
        installation(1, false);
        WriteSetting(QStringLiteral("TargetResize"), QStringLiteral("1"));
        WriteSetting(QStringLiteral("TargetResizeMD"), QStringLiteral("3")); // each copy decoded and resized
        WriteSetting(QStringLiteral("TargetResizeQ"), QStringLiteral("3"));
        QImage image(1600, 1200, QImage::Format_RGB32);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                image.setPixel(x, y, qRgb(x % 256, y % 256, (x * y) % 256));
        QVERIFY(image.save(m_env->srcDir() + QStringLiteral("/IMG_0000.jpg"), "JPG"));
        QByteArray batch = (m_env->srcDir() + QStringLiteral("\r\n") + m_env->tgtDir()
                            + QStringLiteral("\r\nNumber of times processed: 0\r\n"))
                               .toUtf8();
        for (int i = 0; i < kEntries; ++i)
            batch += "CS\r\nIMG_0000.jpg\r\nAnna Smith\\IMG_" + QByteArray::number(i) + ".jpg\r\n";
        const QString batchfile = AppPaths::dataFile(QStringLiteral("_Batchfile_161116204830_PC2.log"));
        writeBytes(batchfile, batch);
        const auto copies = [this] {
            return QDir(m_env->tgtDir() + QStringLiteral("/Anna Smith")).entryList({QStringLiteral("IMG_*.jpg")}, QDir::Files).size();
        };

        QProcess program;
        start(program, QStringLiteral(ORDERLYEXIT_HELPER), {command});
        QVERIFY(reached(QStringLiteral("orderlyexit_helper: answering Yes")));
        QElapsedTimer clock;
        clock.start();
        while (copies() < 3 && clock.elapsed() < 30000)
            QTest::qWait(20);
        QVERIFY2(copies() >= 3, "the replay did not start");
        endsInOrder(program, SIGTERM, 0);
        QCOMPARE(program.exitCode(), 0);
        // Stopped at an entry: the batchfile is still there, whole, with most of its copies to do.
        QVERIFY2(copies() < kEntries / 2, qPrintable(QString::number(copies())));
        QCOMPARE(fileBytes(batchfile), batch);
        QVERIFY(reached(QStringLiteral("Cancelled ") + batchfile, 2000));

        if (command != QLatin1String("replay"))
            return; // the next run is the same whichever way the replay was started
        // The next start replays it again (the reprocess question answered Yes) to its end.
        QProcess again;
        start(again, QStringLiteral(ORDERLYEXIT_HELPER), {QStringLiteral("replay")});
        clock.restart();
        while (QFile::exists(batchfile) && clock.elapsed() < 120000)
            QTest::qWait(100);
        QVERIFY2(!QFile::exists(batchfile), "the second run did not finish the batchfile");
        QCOMPARE(copies(), kEntries);
        ::kill(pid_t(again.processId()), SIGTERM);
        QVERIFY2(again.waitForFinished(10000), "the second run did not end after the signal");
        QCOMPARE(again.exitStatus(), QProcess::NormalExit);
    }

    // The family's folder is a file, so its copies fail and Save asks whether to stop.
    void atTheCopyFailureQuestionOfASave()
    {
        installation(3, false);
        QFile blocker(m_env->tgtDir() + QStringLiteral("/Anna Smith"));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        QProcess program;
        start(program, QStringLiteral(ORDERLYEXIT_HELPER), {QStringLiteral("save")});
        QVERIFY(reached(QStringLiteral("orderlyexit_helper: pressing Save")));
        endsInOrder(program, SIGTERM);
        // Nothing was delivered, so no photo may carry a tag (the undo file still reads, above).
        const QStringList photos = QDir(m_env->srcDir()).entryList(QDir::Files);
        QCOMPARE(photos.size(), 3);
        for (const QString &name : photos)
            QVERIFY2(!name.contains(QLatin1String("(#")), qPrintable(name));
    }
};

QTEST_MAIN(TestOrderlyExit)
#include "tst_orderlyexit.moc"

#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/inifile.h"
#include "support/testenv.h"
#include "workspace/clsundos.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTest>

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

    // The signal ends the program on its own; a generous bound keeps a loaded machine from failing
    // the test, while a program that ignores the signal never ends at all.
    void endsInOrder(QProcess &program, int signalNumber)
    {
        QTest::qWait(300); // the modal loop or the load is running
        ::kill(pid_t(program.processId()), signalNumber);
        QVERIFY2(program.waitForFinished(10000), "the program did not end after the signal");
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QVERIFY(!IniFile::read(AppPaths::dataDir() + QStringLiteral("/quillet.ini"), QStringLiteral("Settings"),
                               QStringLiteral("FormRectMn"))
                     .isEmpty());
    }

    void installation(int photos, bool thumbnails)
    {
        QVERIFY(m_env->makeInstallation());
        WriteSetting(QStringLiteral("Thumbnails"), thumbnails ? QStringLiteral("1") : QStringLiteral("0"));
        WriteSetting(QStringLiteral("AutoFilterFams"), QStringLiteral("0"));
        WriteSetting(QStringLiteral("PCname"), QStringLiteral("Office"));
        WriteSetting(QStringLiteral("AssnSubToTgt"), QStringLiteral("0"));
        WriteSetting(QStringLiteral("AssnSrcSubToTgt"), QStringLiteral("0"));
        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName, [Current]) VALUES (12,'Anna','Smith',True)"));
        db.CloseDatabase();
        QImage image(thumbnails ? 1600 : 64, thumbnails ? 1200 : 48, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        const QString first = m_env->srcDir() + QStringLiteral("/IMG_0000.jpg");
        QVERIFY(image.save(first, "JPG"));
        for (int i = 1; i < photos; ++i)
            QVERIFY(QFile::link(first, m_env->srcDir() + QStringLiteral("/IMG_%1.jpg").arg(i, 4, 10, QLatin1Char('0'))));
        // The levels of an earlier session must survive.
        QFile undo(clsUndos::FilePath());
        QVERIFY(undo.open(QIODevice::WriteOnly));
        undo.write("v1\r\n0\r\n0\r\n");
    }

private Q_SLOTS:
    void init() { m_env = new TestEnv; }
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
        QVERIFY(QFile(clsUndos::FilePath()).size() > 0);
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
        QFile file(batchfile);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(batch);
        file.close();
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
        ::kill(pid_t(program.processId()), SIGTERM);
        clock.restart();
        QVERIFY2(program.waitForFinished(10000), "the program did not end after the signal");
        qInfo("ended %lld ms after the signal, %lld of %d copies made", clock.elapsed(), qint64(copies()), kEntries);
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
        QVERIFY(!IniFile::read(AppPaths::dataDir() + QStringLiteral("/quillet.ini"), QStringLiteral("Settings"),
                               QStringLiteral("FormRectMn"))
                     .isEmpty());
        QFile undo(clsUndos::FilePath());
        QVERIFY(undo.open(QIODevice::ReadOnly));
        QVERIFY(undo.readAll().startsWith("v1\r\n"));
        undo.close();
        // Stopped at an entry: the batchfile is still there, whole, with most of its copies to do.
        QVERIFY2(copies() < kEntries / 2, qPrintable(QString::number(copies())));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), batch);
        file.close();
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
        // Nothing was delivered, so no photo may carry a tag and the undo file still reads.
        const QStringList photos = QDir(m_env->srcDir()).entryList(QDir::Files);
        QCOMPARE(photos.size(), 3);
        for (const QString &name : photos)
            QVERIFY2(!name.contains(QLatin1String("(#")), qPrintable(name));
        QFile undo(clsUndos::FilePath());
        QVERIFY(undo.open(QIODevice::ReadOnly));
        QVERIFY(undo.readAll().startsWith("v1\r\n"));
    }
};

QTEST_MAIN(TestOrderlyExit)
#include "tst_orderlyexit.moc"

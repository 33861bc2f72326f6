#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/inifile.h"
#include "support/testenv.h"
#include "workspace/clsundos.h"

#include <QDir>
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

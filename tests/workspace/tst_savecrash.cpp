#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/inifile.h"
#include "support/scriptedprompt.h"
#include "support/testenv.h"
#include "workspace/allocationtag.h"
#include "workspace/clsundos.h"

#include <QDir>
#include <QDirIterator>
#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTest>

using namespace quillet;
using namespace quillet::test;

// A Save killed at any moment loses nothing: every photo is on disk under its old or its new name,
// every target file is a complete copy (at worst a ".~NN" temporary is left), the undo file and
// the ini file still read.
class TestSaveCrash : public QObject
{
    Q_OBJECT

    static constexpr int kPhotos = 12;

    QByteArray m_jpeg;

    void prepare(TestEnv &env)
    {
        env.dataDir();
        QVERIFY(FamilyDatabase::Provision(FamilyDatabase::DbPath()));
        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        for (int id : {3, 5, 9})
            db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, [Current]) VALUES (?,?,True)"),
                    {id, QStringLiteral("Fam%1").arg(id)});
        db.CloseDatabase();
        for (const auto &[key, value] : QList<QPair<QString, QString>>{
                 {"SrcDir", env.path("src")}, {"TgtDir", env.path("tgt")}, {"CreateBatchs", "1"},
                 {"PCname", "PC1"}, {"AssnSubToTgt", "0"}, {"AssnSrcSubToTgt", "0"}, {"Thumbnails", "0"}})
            WriteSetting(key, value);
        QDir().mkpath(env.path("tgt"));
        for (int i = 0; i < kPhotos; ++i)
            env.writeFile(QStringLiteral("src/IMG_%1.jpg").arg(i, 2, 10, QLatin1Char('0')), m_jpeg);
        // The levels of an earlier session.
        QFile undo(clsUndos::FilePath());
        QVERIFY(undo.open(QIODevice::WriteOnly));
        undo.write("v1\r\n0\r\n0\r\n");
    }

    void checkNothingLost(TestEnv &env)
    {
        QStringList untagged;
        QDirIterator src(env.path("src"), QDir::Files);
        while (src.hasNext()) {
            const QString path = src.next();
            QCOMPARE(fileBytes(path), m_jpeg);
            untagged << StripFamIDs(QFileInfo(path).fileName());
        }
        untagged.sort();
        QCOMPARE(untagged.size(), kPhotos); // each photo once, under its old or new name
        QCOMPARE(untagged.removeDuplicates(), 0);
        QDirIterator tgt(env.path("tgt"), QDir::Files, QDirIterator::Subdirectories);
        while (tgt.hasNext()) {
            const QString path = tgt.next();
            if (QFileInfo(path).suffix().startsWith(QLatin1String("~")))
                continue; // a copy's temporary
            QCOMPARE(fileBytes(path), m_jpeg);
        }
        QVERIFY(fileBytes(clsUndos::FilePath()).startsWith("v1\r\n"));
        QCOMPARE(ReadSetting(QStringLiteral("SrcDir")), env.path("src"));
    }

private Q_SLOTS:
    void initTestCase()
    {
        QImage image(800, 600, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        QBuffer buffer(&m_jpeg);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "JPG");
    }

    void killedSaveLosesNothing_data()
    {
        QTest::addColumn<int>("afterCopies"); // the helper kills itself after this many copies
        QTest::addColumn<int>("delayMs");     // or is killed from outside after this delay
        for (int n : {1, 2, 3, 4, 17, 35})
            QTest::addRow("after %d copies", n) << n << 0;
        for (int ms : {0, 20, 60, 150})
            QTest::addRow("after %d ms", ms) << 0 << ms;
    }
    void killedSaveLosesNothing()
    {
        QFETCH(int, afterCopies);
        QFETCH(int, delayMs);
        TestEnv env;
        ScriptedPrompt port;
        prepare(env);
        QProcess helper;
        helper.setProgram(QStringLiteral(SAVECRASH_HELPER));
        helper.setArguments({QString::number(afterCopies)});
        helper.start();
        QVERIFY(helper.waitForStarted());
        if (afterCopies == 0) {
            if (delayMs > 0)
                QTest::qWait(delayMs);
            helper.kill();
        }
        // A Save quicker than the delay has finished already.
        QVERIFY(helper.state() == QProcess::NotRunning || helper.waitForFinished(60000));
        if (afterCopies > 0)
            QCOMPARE(helper.exitStatus(), QProcess::CrashExit);
        checkNothingLost(env);
    }

    void killedRightAfterTheSaveKeepsItsLevel()
    {
        TestEnv env;
        ScriptedPrompt port;
        prepare(env);
        QProcess helper;
        helper.start(QStringLiteral(SAVECRASH_HELPER), {QStringLiteral("-1")});
        QVERIFY(helper.waitForFinished(60000));
        QCOMPARE(helper.exitStatus(), QProcess::CrashExit);
        checkNothingLost(env);
        // The level of the Save is in the file: after a restart it can still be undone.
        const QByteArray undo = fileBytes(clsUndos::FilePath());
        QVERIFY2(undo.startsWith("v1\r\n1\r\n36\r\n1\r\nIMG_00.jpg\r\n"), undo.left(40).constData());
    }

    void uninterruptedSaveAllocatesEverything()
    {
        TestEnv env;
        ScriptedPrompt port;
        prepare(env);
        QProcess helper;
        helper.start(QStringLiteral(SAVECRASH_HELPER), {QStringLiteral("0")});
        QVERIFY(helper.waitForFinished(60000));
        QCOMPARE(helper.exitCode(), 0);
        checkNothingLost(env);
        QCOMPARE(QDir(env.path("src")).entryList({"*(#3#5#9#).jpg"}, QDir::Files).size(), kPhotos);
        QVERIFY(fileBytes(clsUndos::FilePath()).startsWith("v1\r\n1\r\n36\r\n"));
    }
};

QTEST_GUILESS_MAIN(TestSaveCrash)
#include "tst_savecrash.moc"

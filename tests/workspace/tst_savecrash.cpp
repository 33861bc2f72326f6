#include "../sync/crashhelper.h"
#include "headlessworkspace.h"
#include "lib/apppaths.h"
#include "support/scriptedprompt.h"
#include "support/testenv.h"
#include "workspace/allocationtag.h"
#include "workspace/clsundos.h"

#include <QBuffer>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
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
        writeSettings({{"SrcDir", env.path("src")}, {"TgtDir", env.path("tgt")}, {"CreateBatchs", "1"}, {"PCname", "PC1"},
                       {"AssnSubToTgt", "0"}, {"AssnSrcSubToTgt", "0"}, {"Thumbnails", "0"}});
        QDir().mkpath(env.path("tgt"));
        for (int i = 0; i < kPhotos; ++i)
            env.writeFile(QStringLiteral("src/IMG_%1.jpg").arg(i, 2, 10, QLatin1Char('0')), m_jpeg);
        // The levels of an earlier session.
        writeBytes(clsUndos::FilePath(), "v1\r\n0\r\n0\r\n");
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
        QTest::addColumn<int>("afterCopies");      // the helper kills itself after this many copies (-1:
                                                   // right after the Save; 0: never)
        QTest::addColumn<int>("killAfterMs");      // or is killed from outside after this delay (-1: never)
        QTest::addColumn<QByteArray>("undoStart"); // what the undo file then starts with
        for (int n : {1, 2, 3, 4, 17, 35})
            QTest::addRow("after %d copies", n) << n << -1 << QByteArray("v1\r\n");
        for (int ms : {0, 20, 60, 150})
            QTest::addRow("after %d ms", ms) << 0 << ms << QByteArray("v1\r\n");
        // The level of the Save is in the file: after a restart it can still be undone.
        QTest::newRow("right after the Save") << -1 << -1 << QByteArray("v1\r\n1\r\n36\r\n1\r\nIMG_00.jpg\r\n");
        QTest::newRow("not killed") << 0 << -1 << QByteArray("v1\r\n1\r\n36\r\n");
    }
    void killedSaveLosesNothing()
    {
        QFETCH(int, afterCopies);
        QFETCH(int, killAfterMs);
        QFETCH(QByteArray, undoStart);
        TestEnv env;
        ScriptedPrompt port;
        prepare(env);
        const int status = runHelper(QStringLiteral(SAVECRASH_HELPER), {QString::number(afterCopies)}, killAfterMs);
        if (killAfterMs < 0)
            QCOMPARE(status, afterCopies == 0 ? 0 : -2);
        checkNothingLost(env);
        const QByteArray undo = fileBytes(clsUndos::FilePath());
        QVERIFY2(undo.startsWith(undoStart), undo.left(40).constData());
        if (status == 0) // a Save quicker than the delay has finished already
            QCOMPARE(QDir(env.path("src")).entryList({"*(#3#5#9#).jpg"}, QDir::Files).size(), kPhotos);
    }
};

QTEST_GUILESS_MAIN(TestSaveCrash)
#include "tst_savecrash.moc"

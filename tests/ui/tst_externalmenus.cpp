#include "lib/apppaths.h"
#include "support/testjpeg.h"
#include "sync/batchfilejournal.h"
#include "sync/batchfilename.h"
#include "uitest.h"

using namespace quillet;
using namespace quillet::test;

// The main window's part in carrying work between PCs: the replay of batchfiles at start-up and
// on Refresh, the clean-up of old records at start-up, and the External menu's Export/Import
// batchfiles, Export/Import unallocated files and Import From Portable Copy, with their summary
// in the status line and the lists refreshed.
class TestExternalMenus : public HomeTest
{
    Q_OBJECT

    void twoPhotos()
    {
        TestJpeg photo;
        for (const char *name : {"A.jpg", "B.jpg"})
            QVERIFY(writeTestJpeg(m_env->srcDir() + "/" + name, photo));
    }

    QString otherPcsBatchfile(const QString &folder, const QByteArray &entries)
    {
        const QString path = folder + "/_Batchfile_161116204830_PC2.log";
        QFile f(path);
        f.open(QIODevice::WriteOnly);
        f.write(m_env->srcDir().toUtf8() + "\r\n" + m_env->tgtDir().toUtf8() + "\r\nNumber of times processed: 0\r\n"
                + entries);
        return path;
    }

private Q_SLOTS:
    void init()
    {
        HomeTest::init();
        QVERIFY(m_env->makeInstallation());
        WriteSetting(QStringLiteral("PCname"), QStringLiteral("PC1"));
        WriteSetting(QStringLiteral("Thumbnails"), QStringLiteral("0"));
    }

    void startUpCleansUpAndReplays()
    {
        twoPhotos();
        QDir().mkpath(BatchfileName::doneFolder());
        const QString old = BatchfileName::doneFolder() + "/1601010000_Batchfile_160101000000_PC2.log";
        QFile record(old);
        QVERIFY(record.open(QIODevice::WriteOnly));
        record.setFileTime(QDateTime::currentDateTime().addDays(-40), QFileDevice::FileModificationTime);
        record.close();
        const QString waiting = otherPcsBatchfile(m_env->dataDir(), "DS\r\nA.jpg\r\n");
        m_port->answer(true);
        frmMain w;
        QVERIFY(w.StartUp());
        QVERIFY(!QFileInfo::exists(old));
        QVERIFY(!QFileInfo::exists(waiting));
        QVERIFY(!QFileInfo::exists(m_env->srcDir() + "/A.jpg"));
        QCOMPARE(w.workspace().sourceList().rowCount(), 1); // the list is loaded after the replay
    }

    void refreshReplays()
    {
        twoPhotos();
        frmMain w;
        QVERIFY(w.StartUp());
        otherPcsBatchfile(m_env->dataDir(), "DS\r\nB.jpg\r\n");
        m_port->answer(true);
        w.menus().mnuRefresh->trigger();
        QVERIFY(!QFileInfo::exists(m_env->srcDir() + "/B.jpg"));
        QCOMPARE(w.workspace().sourceList().rowCount(), 1);
    }

    void menusCarryBatchfilesBothWays()
    {
        twoPhotos();
        const QString xfr = setFolder(*m_env, "BatchXfrDir");
        WriteSetting(QStringLiteral("CreateBatchs"), QStringLiteral("1"));
        frmMain w;
        QVERIFY(w.StartUp());
        const MainMenus &m = w.menus();
        QVERIFY(m.mnuExportBatchfiles->isEnabled());
        QVERIFY(m.mnuImportBatchfiles->isEnabled());
        QCOMPARE(m.mnuExportBatchfiles->text(), "Export batchfiles");
        QCOMPARE(m.mnuImportBatchfiles->text(), "Import batchfiles");

        m_port->answer(true); // create the transfer folder
        {
            BatchfileWriter journal;
            journal.entry("DS", {"B.jpg"});
        }
        m.mnuExportBatchfiles->trigger();
        // The first start stamped the session times into the family database: it travels too.
        QCOMPARE(w.controls().lblMsg->text(), "1 file exported\r\nDatabase exported");
        QCOMPARE(m_port->lastText(), "1 file exported\r\nDatabase exported");
        QVERIFY(QFileInfo::exists(xfr + "/Database/quilletData.db"));
        QCOMPARE(QDir(xfr + "/Batchfiles").entryList(QDir::Files).size(), 1);

        otherPcsBatchfile(xfr + "/Batchfiles", "DS\r\nA.jpg\r\n");
        m_port->answer(true); // process it
        m.mnuImportBatchfiles->trigger();
        QCOMPARE(m_port->lastText(), "1 file imported");
        QCOMPARE(w.controls().lblMsg->text(), "1 file imported");
        QVERIFY(!QFileInfo::exists(m_env->srcDir() + "/A.jpg"));
        QCOMPARE(w.workspace().sourceList().rowCount(), 1);
        QCOMPARE(m_port->progressCaptions, QStringList{"Processing batchfile..."});
    }

    // The entry is offered as its setting says (see tst_maincommands); with the device unplugged
    // it says so and does nothing.
    void portableCopyImportWithoutTheDevice()
    {
        setFolder(*m_env, "PortableCopyXfrDir");
        frmMain w;
        QVERIFY(w.StartUp());
        w.menus().mnuImportFromPortableCopy->trigger();
        QVERIFY(m_port->lastText().startsWith(QLatin1String("Can not see any Portable Copy device")));
    }

    void exportThenImportThroughTheMenus()
    {
        const QString xfr = setFolder(*m_env, "BatchXfrDir");
        m_env->writeFile(QStringLiteral("src/IMG_0001.jpg"), encodeJpeg(testPicture(QSize(64, 48), 1), 85));
        m_env->writeFile(QStringLiteral("src/Trip/IMG_0002.jpg"), encodeJpeg(testPicture(QSize(64, 48), 2), 85));
        frmMain w;
        QVERIFY(started(w));
        QCOMPARE(w.controls().lvwSrcFiles->model()->rowCount(), 2);

        m_port->answer(true); // create the missing Unallocated folder
        w.menus().mnuExportUnalloc->trigger();
        // The first start stamped the session times into the database: it goes along.
        QCOMPARE(w.controls().lblMsg->text(), QStringLiteral("2 files exported; Database exported"));
        QVERIFY(QFile::exists(xfr + "/Unallocated/Trip/IMG_0002.jpg"));

        // The photos leave this Source Dir, then come back through the import.
        QVERIFY(QDir(m_env->srcDir()).removeRecursively());
        QDir().mkpath(m_env->srcDir());
        m_port->answer(true); // "Import files from ..."
        w.menus().mnuImportUnalloc->trigger();
        QCOMPARE(w.controls().lblMsg->text().section(';', 0, 0), QStringLiteral("2 files imported"));
        QVERIFY(QFile::exists(m_env->srcDir() + "/Trip/IMG_0002.jpg"));
        QTRY_COMPARE(w.controls().lvwSrcFiles->model()->rowCount(), 2); // refreshed
        QCOMPARE(m_port->unexpectedQuestions, 0);
    }
};

QTEST_MAIN(TestExternalMenus)
#include "tst_externalmenus.moc"

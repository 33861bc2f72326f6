#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/appstate.h"
#include "support/hometest.h"
#include "support/testjpeg.h"
#include "sync/batchfilejournal.h"
#include "sync/batchfilename.h"
#include "ui/frmmain.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QTest>

using namespace quillet;
using namespace quillet::test;

// The main window's part in carrying batchfiles: the replay at start-up and on Refresh, the
// clean-up of old records at start-up, and External > Export/Import batchfiles.
class TestBatchfileMenus : public HomeTest
{
    Q_OBJECT

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
        TestJpeg photo;
        for (const char *name : {"A.jpg", "B.jpg"})
            QVERIFY(writeTestJpeg(m_env->srcDir() + "/" + name, photo));
    }

    void startUpCleansUpAndReplays()
    {
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
        const QString xfr = m_env->path("xfr");
        WriteSetting(QStringLiteral("BatchXfrDir"), xfr);
        WriteSetting(QStringLiteral("CreateBatchs"), QStringLiteral("1"));
        QDir().mkpath(xfr);
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
};

QTEST_MAIN(TestBatchfileMenus)
#include "tst_batchfilemenus.moc"

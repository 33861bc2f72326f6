#include "app/settingsstore.h"
#include "lib/appstate.h"
#include "support/hometest.h"
#include "support/testjpeg.h"
#include "ui/frmmain.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QListView>
#include <QTest>

using namespace quillet;
using namespace quillet::test;

// External > Export unallocated files, Import unallocated files and Import From Portable Copy in
// the main window: enabled by their settings, running the transfers, the summary in the status
// line and the lists refreshed.
class TestTransferCommands : public HomeTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        HomeTest::init();
        QVERIFY(m_env->makeInstallation());
        WriteSetting(QStringLiteral("Thumbnails"), QStringLiteral("0"));
    }

    // The entry is offered as its setting says (see tst_maincommands); with the device unplugged
    // it says so and does nothing.
    void portableCopyImportWithoutTheDevice()
    {
        QDir().mkpath(m_env->path(QStringLiteral("device")));
        WriteSetting(QStringLiteral("PortableCopyXfrDir"), m_env->path(QStringLiteral("device")));
        frmMain w;
        QVERIFY(w.StartUp());
        w.menus().mnuImportFromPortableCopy->trigger();
        QVERIFY(m_port->lastText().startsWith(QLatin1String("Can not see any Portable Copy device")));
    }

    void exportThenImportThroughTheMenus()
    {
        const QString xfr = m_env->path(QStringLiteral("xfr"));
        QDir().mkpath(xfr);
        WriteSetting(QStringLiteral("BatchXfrDir"), xfr);
        m_env->writeFile(QStringLiteral("src/IMG_0001.jpg"), encodeJpeg(testPicture(QSize(64, 48), 1), 85));
        m_env->writeFile(QStringLiteral("src/Trip/IMG_0002.jpg"), encodeJpeg(testPicture(QSize(64, 48), 2), 85));
        frmMain w;
        w.show();
        QVERIFY(w.StartUp());
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

QTEST_MAIN(TestTransferCommands)
#include "tst_transfercommands.moc"

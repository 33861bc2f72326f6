#include "app/startup.h"
#include "lib/apppaths.h"
#include "lib/appstate.h"
#include "lib/terminationsignals.h"
#include "ui/frmsettings.h"
#include "uitest.h"

#include <QDialog>
#include <QTextBrowser>

#include <csignal>

using namespace quillet;
using namespace quillet::test;

class TestMainWindow : public HomeTest
{
    Q_OBJECT

private Q_SLOTS:
    void firstStartAsksForTheFoldersThenLoads()
    {
        QVERIFY(Startup::IsFreshInstallation());
        frmMain w;
        QVERIFY(started(w));
        QVERIFY(appState().systemLoaded);
        QVERIFY(QFile::exists(FamilyDatabase::DbPath()));
        QVERIFY(!ReadSetting(QStringLiteral("PCname")).isEmpty()); // the defaults are in (tst_settingsstore)
        QCOMPARE(m_port->messages().size(), 1);
        QVERIFY(m_port->lastText().contains(QStringLiteral("Source Dir")));

        // The settings dialog is open; the user picks the two folders and saves.
        frmSettings *dlg = w.settingsDialog();
        QVERIFY(dlg && dlg->isVisible());
        for (const char *folder : {"photos", "families"})
            QDir().mkpath(m_env->path(QLatin1String(folder)));
        child<QLineEdit>(dlg, "txtSrcDir")->setText(m_env->path(QStringLiteral("photos")));
        child<QLineEdit>(dlg, "txtTgtDir")->setText(m_env->path(QStringLiteral("families")));
        QTest::mouseClick(child<QPushButton>(dlg, "cmdSave"), Qt::LeftButton);
        QTRY_VERIFY(!w.settingsDialog());
        QCOMPARE(ReadSetting(QStringLiteral("SrcDir")), m_env->path(QStringLiteral("photos")));
        QVERIFY(QFile::exists(m_env->path(QStringLiteral("photos/_FamilyIDs.csv"))));
        QTRY_COMPARE(w.controls().lblMsg->text(), QString());
        QCOMPARE(m_port->messages().size(), 1); // the reload found the settings valid
    }

    void secondStartKeepsUserValues()
    {
        QVERIFY(m_env->makeInstallation());
        WriteSetting(QStringLiteral("Thumbnails"), QStringLiteral("0"));
        WriteSetting(QStringLiteral("PCname"), QStringLiteral("Office"));
        frmMain w;
        QVERIFY(w.StartUp());
        QVERIFY(!w.controls().chkThumbnails->isChecked());
        QCOMPARE(ReadSetting(QStringLiteral("PCname")), QStringLiteral("Office"));
        QCOMPARE(ReadSetting(QStringLiteral("TargetResizeQ")), QStringLiteral("3"));
        QVERIFY(m_port->messages().isEmpty());
        QVERIFY(!w.settingsDialog());
        QVERIFY(w.controls().lblVersion->text().startsWith(QLatin1Char('v')));
    }

    void missingDatabaseIsFatal()
    {
        m_env->dataDir(); // a data folder without its database
        frmMain w;
        QVERIFY(!w.StartUp());
        QCOMPARE(m_port->lastText(), QStringLiteral("Fatal Error: database file not found\r\n") + FamilyDatabase::DbPath());
        QVERIFY(!appState().systemLoaded);
    }

    void debugLogStartsFresh()
    {
        QVERIFY(m_env->makeInstallation());
        writeBytes(AppPaths::debugLog(), "last session\r\n");
        frmMain w;
        w.StartUp();
        QFile log(AppPaths::debugLog());
        QVERIFY(!log.open(QIODevice::ReadOnly) || !log.readAll().contains("last session"));
    }

    void closingStoresTheRectangle_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<QRect>("moved"); // where the user put the window, if anywhere
        QTest::addColumn<QString>("stored");
        QTest::newRow("Exit button") << "exit" << QRect(30, 40, 900, 650) << "690;30;930;40";
        QTest::newRow("SIGTERM") << "signal" << QRect(50, 60, 900, 640) << "700;50;950;60";
        // Minimised, the window keeps the rectangle it had before.
        QTest::newRow("File > Exit while minimised") << "minimised" << QRect() << "720;10;1010;20";
    }
    void closingStoresTheRectangle()
    {
        QFETCH(QString, how);
        QFETCH(QRect, moved);
        QFETCH(QString, stored);
        QVERIFY(m_env->makeInstallation());
        WriteSetting(QStringLiteral("FormRectMn"), QStringLiteral("720;10;1010;20"));
        frmMain w;
        TerminationSignals signals;
        connect(&signals, &TerminationSignals::terminationRequested, &w, &QWidget::close);
        QVERIFY(started(w));
        QCOMPARE(w.geometry(), QRect(10, 20, 1000, 700));
        if (moved.isValid())
            w.setGeometry(moved);
        if (how == QLatin1String("exit")) {
            QTest::mouseClick(w.controls().cmdExit, Qt::LeftButton);
        } else if (how == QLatin1String("signal")) {
            std::raise(SIGTERM);
        } else {
            w.showMinimized();
            QTRY_VERIFY(w.isMinimized());
            w.menus().mnuExit->trigger();
        }
        QTRY_VERIFY(!w.isVisible());
        QCOMPARE(ReadSetting(QStringLiteral("FormRectMn")), stored);
    }

    void portableCopyTitle()
    {
        QVERIFY(m_env->makeInstallation());
        writeBytes(AppPaths::adminIni(), "[Settings]\r\nThumbnails=0\r\n");
        frmMain w;
        w.StartUp();
        QVERIFY(w.windowTitle().endsWith(QStringLiteral(" ('Portable' copy)")));
        QVERIFY(!w.controls().chkThumbnails->isChecked());
        QVERIFY(!w.controls().chkThumbnails->isEnabled()); // locked by the administrator
        QVERIFY(w.controls().chkShowParent->isEnabled());
    }

    void prepEntriesRunTheirVariant_data()
    {
        QTest::addColumn<bool>("cd");
        QTest::newRow("web") << false;
        QTest::newRow("cd") << true;
    }

    // Each External entry starts the preparation with its own names: its confirmation, here
    // answered No, ends it with the message line untouched.
    void prepEntriesRunTheirVariant()
    {
        QFETCH(bool, cd);
        QVERIFY(m_env->makeInstallation());
        setFolder(*m_env, "WebTgtDir");
        setFolder(*m_env, "CdTgtDir");
        frmMain w;
        QVERIFY(w.StartUp());
        m_port->clear();
        m_port->answer(false);
        (cd ? w.menus().mnuPrepCopyToCD : w.menus().mnuPrepWebUpload)->trigger();
        QCOMPARE(m_port->messages().size(), 1);
        QVERIFY(m_port->lastText().endsWith(cd ? QStringLiteral("burning to CD/DVD.  Continue?")
                                               : QStringLiteral("upload to the web.  Continue?")));
        QCOMPARE(m_port->actionCaptions.size(), 1);
    }

    void controlNamesAndCaptions_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("caption");
        QTest::newRow("save") << "cmdSave" << "&Save";
        QTest::newRow("repeat sel") << "cmdRepeatSelect" << "Re&peat Sel";
        QTest::newRow("rep and save") << "cmdRepeatnSave" << "&Rep && Save";
        QTest::newRow("select all") << "cmdSelectAll" << "Select &All";
        QTest::newRow("clear all") << "cmdClearAll" << "&Clear All";
        QTest::newRow("undo") << "cmdUndo" << "&Undo";
        QTest::newRow("delete") << "cmdDelete" << "&Delete";
        QTest::newRow("put aside") << "cmdMoveToTemp" << "Put As&ide"; // Alt+A stays Select All
        QTest::newRow("exit") << "cmdExit" << "E&xit";
    }
    void controlNamesAndCaptions()
    {
        QFETCH(QString, name);
        QFETCH(QString, caption);
        frmMain w;
        auto *b = w.findChild<QPushButton *>(name);
        QVERIFY2(b, qPrintable(name));
        QCOMPARE(b->text(), caption);
        for (const char *n : {"lvwSrcFiles", "lstFamilies", "imgPic", "lblMsg", "lblSrcFilesCnt", "lblFamiliesCnt",
                              "lblUndoLevelsCnt", "txtSrcfilesBg", "chkFilterFamsMam", "chkFilterFamsFpm",
                              "chkFilterFamsTHam", "lblSrcFileDets", "lblSrcFileDets1", "lblPictureMsg"})
            QVERIFY2(w.findChild<QWidget *>(QLatin1String(n)), n);
    }

    void helpPage_data()
    {
        QTest::addColumn<bool>("browser");
        QTest::newRow("opened beside the program") << true;
        // Without a program to open it, the page shows in a window of the program.
        QTest::newRow("no browser: inside the program") << false;
    }
    void helpPage()
    {
        QFETCH(bool, browser);
        QVERIFY(m_env->makeInstallation());
        frmMain w;
        w.StartUp();
        QVERIFY(w.menus().mnuHelp->isEnabled());
        m_port->openResult = browser;
        w.menus().mnuHelp->trigger();
        QCOMPARE(m_port->opened, QStringList{AppPaths::helpPage()});
        QVERIFY(AppPaths::helpPage().endsWith(QStringLiteral("/quillet.html")));
        auto *help = w.findChild<QDialog *>(QStringLiteral("frmHelp"));
        QCOMPARE(bool(help), !browser);
        if (!browser) {
            QVERIFY(help->isVisible());
            QVERIFY(child<QTextBrowser>(help, "txtHelp")->toPlainText().contains(QStringLiteral("Quillet")));
            QVERIFY(m_port->texts().isEmpty()); // no warning on top
        }
    }
};
QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"

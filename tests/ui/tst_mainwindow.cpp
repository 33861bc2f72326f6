#include "app/settingsstore.h"
#include "app/startup.h"
#include "lib/apppaths.h"
#include "lib/appstate.h"
#include "lib/terminationsignals.h"
#include "support/hometest.h"
#include "ui/frmmain.h"
#include "ui/frmsettings.h"
#include "app/familydatabase.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTextBrowser>
#include <QDialog>

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
        w.show();
        QVERIFY(w.StartUp());
        QVERIFY(appState().systemLoaded);
        QVERIFY(QFile::exists(FamilyDatabase::DbPath()));
        QVERIFY(!ReadSetting(QStringLiteral("PCname")).isEmpty()); // the defaults are in (tst_settingsstore)
        QCOMPARE(m_port->messages().size(), 1);
        QVERIFY(m_port->lastText().contains(QStringLiteral("Source Dir")));

        // The settings dialog is open; the user picks the two folders and saves.
        frmSettings *dlg = w.settingsDialog();
        QVERIFY(dlg && dlg->isVisible());
        QDir().mkpath(m_env->path(QStringLiteral("photos")));
        QDir().mkpath(m_env->path(QStringLiteral("families")));
        dlg->findChild<QLineEdit *>(QStringLiteral("txtSrcDir"))->setText(m_env->path(QStringLiteral("photos")));
        dlg->findChild<QLineEdit *>(QStringLiteral("txtTgtDir"))->setText(m_env->path(QStringLiteral("families")));
        QTest::mouseClick(dlg->findChild<QPushButton *>(QStringLiteral("cmdSave")), Qt::LeftButton);
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
        QFile old(AppPaths::debugLog());
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("last session\r\n");
        old.close();
        frmMain w;
        w.StartUp();
        QFile log(AppPaths::debugLog());
        QVERIFY(!log.open(QIODevice::ReadOnly) || !log.readAll().contains("last session"));
    }

    void windowRectangleRestoredAndStored()
    {
        QVERIFY(m_env->makeInstallation());
        WriteSetting(QStringLiteral("FormRectMn"), QStringLiteral("720;10;1010;20"));
        frmMain w;
        w.show();
        QVERIFY(w.StartUp());
        QCOMPARE(w.geometry(), QRect(10, 20, 1000, 700));
        w.setGeometry(QRect(30, 40, 900, 650));
        QTest::mouseClick(w.controls().cmdExit, Qt::LeftButton);
        QVERIFY(!w.isVisible());
        QCOMPARE(ReadSetting(QStringLiteral("FormRectMn")), QStringLiteral("690;30;930;40"));
    }

    void minimisedWindowKeepsThePreviousRectangle()
    {
        QVERIFY(m_env->makeInstallation());
        WriteSetting(QStringLiteral("FormRectMn"), QStringLiteral("720;10;1010;20"));
        frmMain w;
        w.show();
        w.StartUp();
        w.showMinimized();
        QTRY_VERIFY(w.isMinimized());
        w.menus().mnuExit->trigger();
        QCOMPARE(ReadSetting(QStringLiteral("FormRectMn")), QStringLiteral("720;10;1010;20"));
    }

    void portableCopyTitle()
    {
        QVERIFY(m_env->makeInstallation());
        QFile admin(AppPaths::adminIni());
        QVERIFY(admin.open(QIODevice::WriteOnly));
        admin.write("[Settings]\r\nThumbnails=0\r\n");
        admin.close();
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
        for (const char *key : {"WebTgtDir", "CdTgtDir"}) {
            QDir().mkpath(m_env->path(QLatin1String(key)));
            WriteSetting(QLatin1String(key), m_env->path(QLatin1String(key)));
        }
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

    void helpOpensThePageBesideTheProgram()
    {
        QVERIFY(m_env->makeInstallation());
        frmMain w;
        w.StartUp();
        QVERIFY(w.menus().mnuHelp->isEnabled());
        w.menus().mnuHelp->trigger();
        QCOMPARE(m_port->opened, QStringList{AppPaths::helpPage()});
        QVERIFY(AppPaths::helpPage().endsWith(QStringLiteral("/quillet.html")));
        QVERIFY(!w.findChild<QDialog *>(QStringLiteral("frmHelp")));
    }

    // Without a program to open it (no browser), the page shows in a window of the program.
    void helpWithoutABrowserShowsInsideTheProgram()
    {
        QVERIFY(m_env->makeInstallation());
        frmMain w;
        w.StartUp();
        m_port->openResult = false;
        w.menus().mnuHelp->trigger();
        auto *help = w.findChild<QDialog *>(QStringLiteral("frmHelp"));
        QVERIFY(help);
        QVERIFY(help->isVisible());
        auto *browser = help->findChild<QTextBrowser *>(QStringLiteral("txtHelp"));
        QVERIFY(browser);
        QVERIFY(browser->toPlainText().contains(QStringLiteral("Quillet")));
        QVERIFY(m_port->texts().isEmpty()); // no warning on top
    }

    void terminationSignalClosesTheWindow()
    {
        QVERIFY(m_env->makeInstallation());
        frmMain w;
        TerminationSignals signals;
        connect(&signals, &TerminationSignals::terminationRequested, &w, &QWidget::close);
        w.show();
        w.StartUp();
        w.setGeometry(QRect(50, 60, 900, 640));
        std::raise(SIGTERM);
        QTRY_VERIFY(!w.isVisible());
        QCOMPARE(ReadSetting(QStringLiteral("FormRectMn")), QStringLiteral("700;50;950;60"));
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"

#include "lib/apppaths.h"
#include "lib/appstate.h"
#include "support/windowtest.h"
#include "ui/aboutbox.h"
#include "ui/frmdebug.h"
#include "ui/workspacecontroller.h"
#include "uitest.h"
#include "workspace/commandrules.h"

#include <QApplication>
#include <QDialog>
#include <QTimer>

using namespace quillet;
using namespace quillet::test;

// The availability of the main window's commands, Exit with and without Shift, the maintenance
// window and the About box, through the real window.
class TestMainCommands : public WindowTest
{
    Q_OBJECT

    void prepare() { WindowTest::prepare({{7, "Ben", "Jones"}}, {"IMG_0041.jpg", "IMG_0042.jpg"}); }

    // Every button and menu entry of a rule, with whether it is enabled.
    static QList<QPair<QString, bool>> states(frmMain &w, CommandRules::Rule rule)
    {
        QList<QPair<QString, bool>> out;
        for (const CommandRules::Command &c : CommandRules::Table()) {
            if (c.rule != rule || c.work == CommandRules::Work::NotBuilt)
                continue;
            if (auto *b = w.findChild<QPushButton *>(c.button); b && !c.button.isEmpty())
                out << qMakePair(c.button, b->isEnabled());
            if (auto *a = w.findChild<QAction *>(c.menu); a && !c.menu.isEmpty())
                out << qMakePair(c.menu, a->isEnabled());
        }
        return out;
    }
    // Every command of each rule is enabled, or disabled, as given.
    static void expectAll(frmMain &w, std::initializer_list<std::pair<CommandRules::Rule, bool>> rules)
    {
        for (const auto &[rule, enabled] : rules) {
            const auto found = states(w, rule);
            QVERIFY(!found.isEmpty());
            for (const auto &[name, on] : found)
                QVERIFY2(on == enabled, qPrintable(name + (enabled ? QStringLiteral(" disabled") : QStringLiteral(" enabled"))));
        }
    }
    // Presses a button of the maintenance window, opened first if need be.
    static void pressInMaintenance(frmMain &w, const char *name)
    {
        if (!w.maintenanceWindow())
            w.showMaintenance();
        QTest::mouseClick(button(*w.maintenanceWindow(), name), Qt::LeftButton);
    }
    static void selectPhoto(frmMain &w, int position)
    {
        w.workspace().sourceList().clearSelection();
        w.workspace().sourceList().setSelected(position, true);
        w.controller().DisplaySrcFile();
    }

private Q_SLOTS:
    void everyCommandOfTheTableIsInTheWindow()
    {
        frmMain w;
        for (const CommandRules::Command &c : CommandRules::Table()) {
            QVERIFY2(c.button.isEmpty() || w.findChild<QPushButton *>(c.button), qPrintable(c.button));
            QVERIFY2(c.menu.isEmpty() || w.findChild<QAction *>(c.menu), qPrintable(c.menu));
        }
    }

    void photoCommandsFollowSelectionAndFirstSave()
    {
        using Rule = CommandRules::Rule;
        prepare();
        frmMain w;
        QVERIFY(started(w));
        // Right after start: nothing to act on, nothing to repeat.
        expectAll(w, {{Rule::PhotoSelected, false}, {Rule::SaveMade, false}, {Rule::SaveMadeAndPhotoSelected, false},
                      {Rule::SaveAllowed, false}, {Rule::Always, true}});
        for (const CommandRules::Command &c : CommandRules::Table()) {
            if (c.work == CommandRules::Work::NotBuilt)
                QVERIFY2(!w.findChild<QAction *>(c.menu)->isEnabled(), qPrintable(c.menu));
        }

        selectPhoto(w, 0);
        // No Save yet, no family chosen.
        expectAll(w, {{Rule::PhotoSelected, true}, {Rule::SaveMade, false}, {Rule::SaveMadeAndPhotoSelected, false},
                      {Rule::SaveAllowed, false}});

        FamilyListModel &fams = w.workspace().familyList();
        fams.setSelected(fams.positionOfId(7), true);
        expectAll(w, {{Rule::SaveAllowed, true}});
        QTest::mouseClick(button(w, "cmdSave"), Qt::LeftButton);
        QVERIFY(QFile::exists(src(QStringLiteral("IMG_0041(#7#).jpg"))));
        // The next photo is on view after the first Save: both repeat commands are offered.
        QVERIFY(!w.workspace().sourceList().selectedRows().isEmpty());
        expectAll(w, {{Rule::SaveMade, true}, {Rule::SaveMadeAndPhotoSelected, true}});

        // Refresh starts over: InitButtons turns the photo and repeat commands off again.
        w.menus().mnuRefresh->trigger();
        expectAll(w, {{Rule::PhotoSelected, false}});
    }

    void externalEntriesFollowTheirSettings_data()
    {
        QTest::addColumn<QStringList>("filled"); // settings given a folder
        QTest::newRow("none") << QStringList{};
        QTest::newRow("batch transfer") << QStringList{QStringLiteral("BatchXfrDir")};
        QTest::newRow("web only") << QStringList{QStringLiteral("WebTgtDir")};
        QTest::newRow("portable") << QStringList{QStringLiteral("PortableCopyXfrDir")};
        QTest::newRow("all") << QStringList{QStringLiteral("BatchXfrDir"), QStringLiteral("WebTgtDir"),
                                            QStringLiteral("CdTgtDir"), QStringLiteral("PortableCopyXfrDir")};
    }
    void externalEntriesFollowTheirSettings()
    {
        QFETCH(QStringList, filled);
        prepare();
        for (const QString &key : filled)
            setFolder(*m_env, qPrintable(key));
        frmMain w;
        QVERIFY(w.StartUp());
        int settingEntries = 0;
        for (const CommandRules::Command &c : CommandRules::Table()) {
            if (c.rule != CommandRules::Rule::SettingSet)
                continue;
            ++settingEntries;
            // An entry is offered only when its setting is filled in and its work is in this build.
            const bool expected = filled.contains(c.setting) && c.work == CommandRules::Work::Built;
            QVERIFY2(w.findChild<QAction *>(c.menu)->isEnabled() == expected, qPrintable(c.menu));
        }
        QCOMPARE(settingEntries, 7);
        // Clearing the setting and refreshing takes an entry away again.
        for (const QString &key : filled)
            WriteSetting(key, QString());
        w.menus().mnuRefresh->trigger();
        for (QAction *a : {w.menus().mnuExportBatchfiles, w.menus().mnuImportBatchfiles, w.menus().mnuExportUnalloc,
                           w.menus().mnuImportUnalloc, w.menus().mnuImportFromPortableCopy,
                           w.menus().mnuPrepWebUpload, w.menus().mnuPrepCopyToCD})
            QVERIFY2(!a->isEnabled(), qPrintable(a->objectName()));
    }

    void disabledButtonHandsTheFocusToExit()
    {
        prepare();
        frmMain w;
        w.show();
        QVERIFY(QTest::qWaitForWindowActive(&w));
        QVERIFY(w.StartUp());
        selectPhoto(w, 0);
        button(w, "cmdDelete")->setFocus();
        QVERIFY(button(w, "cmdDelete")->hasFocus());
        w.InitButtons();
        QVERIFY(!button(w, "cmdDelete")->isEnabled());
        QVERIFY(button(w, "cmdExit")->hasFocus());
    }

    void shiftExitOpensMaintenanceAndKeepsRunning()
    {
        prepare();
        frmMain w;
        QVERIFY(started(w));
        m_port->shift = true;
        QTest::mouseClick(button(w, "cmdExit"), Qt::LeftButton);
        QVERIFY(w.isVisible());
        QVERIFY(w.maintenanceWindow() && w.maintenanceWindow()->isVisible());
        QTest::mouseClick(button(w, "cmdExit"), Qt::LeftButton); // a second time: the same window
        QCOMPARE(w.findChildren<frmDebug *>().size(), 1);
        // File > Exit does not look at Shift.
        w.setGeometry(QRect(40, 50, 900, 650));
        w.menus().mnuExit->trigger();
        QVERIFY(!w.isVisible());
        QCOMPARE(ReadSetting(QStringLiteral("FormRectMn")), QStringLiteral("700;40;940;50"));
        m_port->shift = false;
        QTest::mouseClick(button(w, "cmdExit"), Qt::LeftButton);
    }

    void shiftAtStartOpensMaintenanceBesideAndForgetsPositions()
    {
        prepare();
        WriteSetting(QStringLiteral("FormRectMn"), QStringLiteral("720;10;1010;20"));
        WriteSetting(QStringLiteral("FormRectEP1"), QStringLiteral("500;0;400;0"));
        m_port->shift = true;
        frmMain w;
        w.setGeometry(QRect(10, 30, 900, 600)); // leaves room on the screen beside it
        w.show();
        QVERIFY(w.StartUp());
        QCOMPARE(w.geometry(), QRect(10, 30, 900, 600)); // not moved to the stored rectangle
        QCOMPARE(ReadSetting(QStringLiteral("FormRectMn")), QString());
        QCOMPARE(ReadSetting(QStringLiteral("FormRectEP1")), QString());
        frmDebug *debug = w.maintenanceWindow();
        QVERIFY(debug && debug->isVisible());
        QVERIFY(debug->x() > w.frameGeometry().right());
        QVERIFY(appState().systemLoaded);
    }

    void resetFormsEndsWithoutStoringPositions_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::newRow("yes") << true;
        QTest::newRow("no") << false;
    }
    void resetFormsEndsWithoutStoringPositions()
    {
        QFETCH(bool, yes);
        prepare();
        WriteSetting(QStringLiteral("FormRectMn"), QStringLiteral("720;10;1010;20"));
        WriteSetting(QStringLiteral("FormRectEP2"), QStringLiteral("500;0;400;0"));
        frmMain w;
        QVERIFY(started(w));
        m_port->answer(yes);
        pressInMaintenance(w, "cmdResetForms");
        QVERIFY(m_port->lastText().startsWith(QStringLiteral("This will reset the forms then end the program.")));
        QCOMPARE(w.isVisible(), !yes);
        QCOMPARE(ReadSetting(QStringLiteral("FormRectMn")).isEmpty(), yes);
        QCOMPARE(ReadSetting(QStringLiteral("FormRectEP2")).isEmpty(), yes);
    }

    void sourceTableToClipboard()
    {
        prepare();
        frmMain w;
        QVERIFY(w.StartUp());
        pressInMaintenance(w, "cmdSrcFilesToClipboard");
        const QStringList lines = m_port->clipboard.split(QStringLiteral("\r\n"));
        QCOMPARE(lines.size(), 4);
        QCOMPARE(lines.at(1), QStringLiteral("Path\\File,File No FamIDs,Allocated"));
        QCOMPARE(lines.at(2), src(QStringLiteral("IMG_0041.jpg")) + QStringLiteral(",IMG_0041.jpg,false"));
        QVERIFY(m_port->unexpectedQuestions == 0);

        // Before start-up has finished the user is asked first; No (the default) copies nothing.
        m_port->clipboard.clear();
        appState().systemLoaded = false;
        m_port->answer(false);
        pressInMaintenance(w, "cmdSrcFilesToClipboard");
        QCOMPARE(m_port->messages().last().style, 5); // No is the default button
        QVERIFY(m_port->clipboard.isEmpty());
        appState().systemLoaded = true;
    }

    void debugListKeepsTheMainListAsItWas()
    {
        prepare();
        QVERIFY(QFile::rename(src(QStringLiteral("IMG_0042.jpg")), src(QStringLiteral("IMG_0042(#7#).jpg"))));
        frmMain w;
        QVERIFY(w.StartUp());
        QCOMPARE(w.workspace().sourceList().rowCount(), 1);
        pressInMaintenance(w, "cmdSrcFilesDebug");
        QFile list(AppPaths::debugView());
        // The text viewer takes the file away once it has shown it; without a desktop it stays.
        if (list.open(QIODevice::ReadOnly)) {
            const QByteArray text = list.readAll();
            QVERIFY(text.startsWith("Type Accepted,Path\\File,File No FamIDs,Allocated"));
            QVERIFY(text.contains("IMG_0042(#7#).jpg"));
        }
        QCOMPARE(w.workspace().sourceList().rowCount(), 1); // "Show allocated" is still unticked
    }

    void syncDatesReportsInTheWindowAndAMessage()
    {
        prepare();
        frmMain w;
        QVERIFY(w.StartUp());
        m_port->choose(m_env->srcDir());
        m_port->answer(true); // subfolders
        pressInMaintenance(w, "cmdSyncDatesMfromE");
        QCOMPARE(m_port->chooserStart, ReadSetting(QStringLiteral("SrcDir")));
        const QString result = QStringLiteral("0 files updated (out of 2 analysed)"); // no EXIF dates in them
        QCOMPARE(m_port->lastText(), result);
        QCOMPARE(child<QLabel>(w.maintenanceWindow(), "lblMsg")->text(), result);
        // Cancelling the chooser: no question, no message.
        m_port->clear();
        pressInMaintenance(w, "cmdSyncDatesMfromE");
        QVERIFY(m_port->messages().isEmpty());
    }

    void aboutNamesVersionQtDataFolderAndLicences()
    {
        const QString text = AboutBox::text();
        for (const QString &part : {QStringLiteral("Quillet"), QStringLiteral(QUILLET_VERSION), QString::fromLatin1(qVersion()),
                                    AppPaths::dataDir(), QStringLiteral("GNU General Public License"),
                                    QStringLiteral("FreeImage"), QStringLiteral("SQLite"), QStringLiteral("QuaZip")})
            QVERIFY2(text.contains(part), qPrintable(part));
        frmMain w;
        w.menus().mnuAbout->setEnabled(true);
        QTimer::singleShot(0, [] {
            auto *box = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            QVERIFY(box && box->objectName() == QLatin1String("frmAbout"));
            box->accept();
        });
        w.menus().mnuAbout->trigger();
    }
};

QTEST_MAIN(TestMainCommands)
#include "tst_maincommands.moc"

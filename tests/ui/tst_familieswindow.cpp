// The family editor window, opened from the main window as a user does, against a real database.
#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "support/findchild.h"
#include "support/hometest.h"
#include "lib/fileutils.h"
#include "ui/frmfamilies.h"
#include "ui/frmmain.h"

#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

using namespace quillet;
using namespace quillet::test;

class TestFamiliesWindow : public HomeTest
{
    Q_OBJECT

    static QStringList mainFamilies(frmMain &w)
    {
        QStringList out;
        auto *view = w.findChild<QListView *>(QStringLiteral("lstFamilies"));
        for (int i = 0; i < view->model()->rowCount(); ++i)
            out << view->model()->index(i, 0).data().toString();
        return out;
    }

    static QStringList listed(frmFamilies &f)
    {
        QStringList out;
        auto *list = f.findChild<QListWidget *>(QStringLiteral("lvwFamilies"));
        for (int i = 0; i < list->count(); ++i)
            out << list->item(i)->text();
        return out;
    }

    // Clicks a check box on its box, as a user does.
    static void tick(QCheckBox *box) { QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2)); }

    frmFamilies *openEditor(frmMain &w)
    {
        w.menus().mnuFamilies->trigger();
        return w.findChild<frmFamilies *>();
    }

private Q_SLOTS:
    void init()
    {
        HomeTest::init();
        QVERIFY(m_env->makeInstallation());
        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName) VALUES (1,'Tom','Brown')"));
        db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName) VALUES (2,'(Staff)')"));
    }
    void cleanup()
    {
        QCOMPARE(m_port->unexpectedQuestions, 0);
        HomeTest::cleanup();
    }

    void addFamilyByTypingAppearsInMainWindow()
    {
        frmMain w;
        w.show();
        QVERIFY(w.StartUp());
        QVERIFY(w.menus().mnuFamilies->isEnabled());
        QCOMPARE(mainFamilies(w), (QStringList{"Tom Brown", "(Staff)"}));
        frmFamilies *f = openEditor(w);
        QVERIFY(f);
        QVERIFY(QTest::qWaitForWindowExposed(f));
        QCOMPARE(listed(*f), (QStringList{"Tom Brown", "(Staff)"}));
        QCOMPARE(child<QLabel>(*f, "lblFamiliesCnt")->text(), QStringLiteral("1 families, 1 children"));
        QCOMPARE(child<QLineEdit>(*f, "txtFirstName")->text(), QStringLiteral("Tom")); // the first entry is shown
        QVERIFY(child<QPushButton>(*f, "cmdImport")->isEnabled());

        QTest::mouseClick(child<QPushButton>(*f, "cmdAdd"), Qt::LeftButton);
        auto *first = child<QLineEdit>(*f, "txtFirstName");
        QVERIFY(first->text().isEmpty());
        QVERIFY(child<QCheckBox>(*f, "chkCurrent")->isChecked());
        QVERIFY(!child<QPushButton>(*f, "cmdDelete")->isEnabled());
        QTRY_VERIFY(first->hasFocus());
        // The key filter drops what cannot be part of a folder name.
        QTest::keyClicks(first, QStringLiteral("Ann/ & Jo:e"));
        QCOMPARE(first->text(), QStringLiteral("Ann & Joe"));
        QVERIFY(!child<QListWidget>(*f, "lvwFamilies")->isEnabled());
        QVERIFY(!child<QPushButton>(*f, "cmdAdd")->isEnabled());
        QCOMPARE(child<QPushButton>(*f, "cmdCancel")->text(), QStringLiteral("&Cancel"));
        QTest::keyClicks(child<QLineEdit>(*f, "txtLastName"), QStringLiteral("O'Brien"));
        tick(child<QCheckBox>(*f, "chkFamDaysTHpm"));
        QTest::mouseClick(child<QPushButton>(*f, "cmdSave"), Qt::LeftButton);

        QCOMPARE(child<QLabel>(*f, "lblMsg")->text(), QStringLiteral("Saved"));
        QCOMPARE(child<QPushButton>(*f, "cmdCancel")->text(), QStringLiteral("&Close"));
        QCOMPARE(listed(*f), (QStringList{"Ann & Joe O'Brien", "Tom Brown", "(Staff)"}));
        QCOMPARE(child<QListWidget>(*f, "lvwFamilies")->currentRow(), 0);
        QCOMPARE(child<QLabel>(*f, "lblFamiliesCnt")->text(), QStringLiteral("2 families, 3 children"));
        QVERIFY(!child<QLineEdit>(*f, "txtFamilyID")->text().isEmpty());
        QVERIFY(child<QCheckBox>(*f, "chkFamDaysTHpm")->isChecked()); // shown again from the saved row
        // At once in the main window, while the editor is still open.
        QCOMPARE(mainFamilies(w), (QStringList{"Ann & Joe O'Brien", "Tom Brown", "(Staff)"}));

        QTest::mouseClick(child<QPushButton>(*f, "cmdCancel"), Qt::LeftButton);
        QTRY_VERIFY(!w.findChild<frmFamilies *>());
        QCOMPARE(mainFamilies(w), (QStringList{"Ann & Joe O'Brien", "Tom Brown", "(Staff)"}));
    }

    void cancelDiscardsEditsAndCurrentOnlyIsStored()
    {
        frmMain w;
        w.show();
        QVERIFY(w.StartUp());
        frmFamilies *f = openEditor(w);
        QVERIFY(QTest::qWaitForWindowExposed(f));
        auto *first = child<QLineEdit>(*f, "txtFirstName");
        first->setFocus();
        QTest::keyClicks(first, QStringLiteral("my"));
        QCOMPARE(first->text(), QStringLiteral("Tommy"));
        QTest::keyClick(first, Qt::Key_Escape); // Esc is the Cancel button
        QCOMPARE(first->text(), QStringLiteral("Tom"));
        QCOMPARE(child<QPushButton>(*f, "cmdCancel")->text(), QStringLiteral("&Close"));
        QVERIFY(f->isVisible());

        // Closing the window over unsaved edits asks first; No keeps the window and the edits.
        QTest::keyClicks(first, QStringLiteral("my"));
        m_port->answer(false);
        f->close();
        QVERIFY(f->isVisible());
        QCOMPARE(first->text(), QStringLiteral("Tommy"));
        QCOMPARE(m_port->lastText(), QStringLiteral("The changes to this family are not saved. Close and lose them?"));
        QTest::keyClick(first, Qt::Key_Escape);

        // Current families only is on by default; turning it off is remembered.
        QVERIFY(child<QCheckBox>(*f, "chkShowCurrFamsOnly")->isChecked());
        tick(child<QCheckBox>(*f, "chkShowCurrFamsOnly"));
        QCOMPARE(ReadSetting(QStringLiteral("CurrFamsOnly1")), QStringLiteral("0"));
        tick(child<QCheckBox>(*f, "chkShowParent"));
        QCOMPARE(listed(*f), (QStringList{" - Tom Brown", "(Staff)"}));
        child<QPushButton>(*f, "cmdCopyList")->click();
        QCOMPARE(m_port->clipboard, QStringLiteral("\tTom Brown\r\n"));
    }

    // Tab runs down the list side, then through the record as it is laid out, then the buttons
    // from left to right; every specified control is there under its name.
    void tabOrderFollowsLayout()
    {
        frmMain w;
        w.show();
        QVERIFY(w.StartUp());
        frmFamilies *f = openEditor(w);
        QVERIFY(QTest::qWaitForWindowExposed(f));
        child<QPushButton>(*f, "cmdImport")->setEnabled(true); // visited once the import is offered
        QStringList chain;
        QWidget *start = child<QListWidget>(*f, "lvwFamilies");
        for (QWidget *wgt = start; chain.size() < 40; wgt = wgt->nextInFocusChain()) {
            if (wgt->focusPolicy() & Qt::TabFocus && wgt->isVisible() && !wgt->objectName().isEmpty())
                chain << wgt->objectName();
            if (wgt->nextInFocusChain() == start)
                break;
        }
        const QStringList expected{"lvwFamilies", "chkShowParent", "chkShowCurrFamsOnly", "txtFirstName", "txtLastName",
                                   "txtParent", "chkCurrent", "chkNoUploadToWeb", "chkNoCopyToCd",
                                   "chkFamDaysMam", "chkFamDaysTam", "chkFamDaysWam", "chkFamDaysTHam", "chkFamDaysFam",
                                   "chkFamDaysMpm", "chkFamDaysTpm", "chkFamDaysWpm", "chkFamDaysTHpm", "chkFamDaysFpm",
                                   "chkFamDaysOverride", "txtStartDate", "txtEndDate", "cmdCopyList", "cmdImport",
                                   "cmdAdd", "cmdSave", "cmdDelete", "cmdCancel"};
        QCOMPARE(chain, expected);
    }

    void leavingChangedLastNameWarns()
    {
        frmMain w;
        w.show();
        QVERIFY(w.StartUp());
        frmFamilies *f = openEditor(w);
        QVERIFY(QTest::qWaitForWindowExposed(f));
        auto *last = child<QLineEdit>(*f, "txtLastName");
        last->setFocus();
        QTRY_VERIFY(last->hasFocus());
        QTest::keyClick(last, Qt::Key_Backspace);
        QTest::keyClick(last, Qt::Key_Tab);
        QCOMPARE(m_port->lastText(), QStringLiteral("Warning: if you are trying to add a NEW family, do not simply rename an old one. "
                                                    "Start a new entry instead."));
        QCOMPARE(last->text(), QStringLiteral("Brow")); // the edit is kept
        QCOMPARE(child<QPushButton>(*f, "cmdCancel")->text(), QStringLiteral("&Cancel"));
        m_port->answer(true); // closing the main window asks before the edits go
    }

    void deleteFromWindow()
    {
        QDir().mkpath(m_env->tgtDir() + QStringLiteral("/Tom Brown"));
        frmMain w;
        w.show();
        QVERIFY(w.StartUp());
        frmFamilies *f = openEditor(w);
        QVERIFY(QTest::qWaitForWindowExposed(f));
        m_port->choose(QStringLiteral("yes"));
        QTest::mouseClick(child<QPushButton>(*f, "cmdDelete"), Qt::LeftButton);
        QCOMPARE(listed(*f), QStringList{"(Staff)"});
        QVERIFY(!QDir(m_env->tgtDir() + QStringLiteral("/Tom Brown")).exists());
        QCOMPARE(mainFamilies(w), QStringList{"(Staff)"});
        QVERIFY(child<QPushButton>(*f, "cmdAdd")->hasFocus());
    }

    // The main window's list filtered to the photo's session follows the editor at once: a family
    // given that session appears beside the one already listed, and the indicator stays on it.
    void dayFilterFollowsEditedAttendance()
    {
        {
            FamilyDatabase db;
            QVERIFY(db.OpenDatabase());
            db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName, FamDaysTam) VALUES (3,'Ann','Lee',True)"));
        }
        QImage image(40, 30, QImage::Format_RGB32);
        image.fill(Qt::darkBlue);
        const QString photo = m_env->srcDir() + QStringLiteral("/IMG_1.jpg");
        QVERIFY(image.save(photo, "JPG"));
        lib_SetFileDate(photo, QLatin1Char('M'), QDateTime(QDate(2024, 3, 5), QTime(9, 0))); // a Tuesday morning
        frmMain w;
        w.resize(1100, 760);
        w.show();
        QVERIFY(w.StartUp());
        auto *photos = w.findChild<QListView *>(QStringLiteral("lvwSrcFiles"));
        QTRY_COMPARE(photos->model()->rowCount(), 1);
        const QModelIndex first = photos->model()->index(0, 0);
        QTest::mouseClick(photos->viewport(), Qt::LeftButton, {}, photos->visualRect(first).center());
        QTRY_COMPARE(mainFamilies(w), QStringList{"Ann Lee"});

        frmFamilies *f = openEditor(w);
        QVERIFY(QTest::qWaitForWindowExposed(f));
        QCOMPARE(child<QLineEdit>(*f, "txtFirstName")->text(), QStringLiteral("Ann"));
        auto *list = child<QListWidget>(*f, "lvwFamilies");
        list->setCurrentRow(1); // Tom Brown
        QCOMPARE(child<QLineEdit>(*f, "txtFirstName")->text(), QStringLiteral("Tom"));
        tick(child<QCheckBox>(*f, "chkFamDaysTam"));
        QTest::mouseClick(child<QPushButton>(*f, "cmdSave"), Qt::LeftButton);
        QCOMPARE(mainFamilies(w), (QStringList{"Ann Lee", "Tom Brown"}));
        QVERIFY(w.findChild<QCheckBox *>(QStringLiteral("chkFilterFamsTam"))->isChecked());
    }

    void clickAfterAddShowsTheEntryAgain()
    {
        frmMain w;
        w.show();
        QVERIFY(w.StartUp());
        frmFamilies *f = openEditor(w);
        QVERIFY(QTest::qWaitForWindowExposed(f));
        QTest::mouseClick(child<QPushButton>(*f, "cmdAdd"), Qt::LeftButton);
        QVERIFY(child<QLineEdit>(*f, "txtFirstName")->text().isEmpty());
        auto *list = child<QListWidget>(*f, "lvwFamilies");
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(0)).center());
        QCOMPARE(child<QLineEdit>(*f, "txtFirstName")->text(), QStringLiteral("Tom"));
        QVERIFY(child<QPushButton>(*f, "cmdDelete")->isEnabled());
    }
};

QTEST_MAIN(TestFamiliesWindow)
#include "tst_familieswindow.moc"

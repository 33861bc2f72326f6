// The family editor window, opened from the main window as a user does, against a real database;
// with it the attendance import run from the editor (a family selected, Import, a workbook chosen).
#include "../families/attendancesheets.h"

#include "families/workbook.h"
#include "lib/fileutils.h"
#include "ui/frmfamilies.h"
#include "uitest.h"

#include <QListWidget>
#include <QSignalSpy>

#include <memory>

using namespace quillet;
using namespace quillet::test;

class TestFamiliesWindow : public HomeTest
{
    Q_OBJECT

    std::unique_ptr<frmMain> m_w;
    frmFamilies *m_f = nullptr;

    QStringList mainFamilies() const { return rowTexts(child<QListView>(*m_w, "lstFamilies")); }
    QStringList listed() const { return rowTexts(child<QListWidget>(m_f, "lvwFamilies")); }

    // Clicks a check box on its box, as a user does.
    static void tick(QCheckBox *box) { QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2)); }

    // The main window (of this size, if any) shown and started.
    bool startMain(const QSize &size = QSize())
    {
        m_w = std::make_unique<frmMain>();
        if (size.isValid())
            m_w->resize(size);
        return started(*m_w);
    }
    // The family editor opened from Settings > Families, the main window started first if need be.
    bool openEditor()
    {
        if (!m_w && !startMain())
            return false;
        m_w->menus().mnuFamilies->trigger();
        m_f = m_w->findChild<frmFamilies *>();
        return m_f && QTest::qWaitForWindowExposed(m_f);
    }

private Q_SLOTS:
    void init()
    {
        HomeTest::init();
        QVERIFY(m_env->makeInstallation());
        QVERIFY(addFamilies({"INSERT INTO tblFamilies (FamilyID, FirstName, LastName) VALUES (1,'Tom','Brown')",
                             "INSERT INTO tblFamilies (FamilyID, FirstName) VALUES (2,'(Staff)')"}));
    }
    void cleanup()
    {
        m_w.reset();
        m_f = nullptr;
        QCOMPARE(m_port->unexpectedQuestions, 0);
        HomeTest::cleanup();
    }

    void addFamilyByTypingAppearsInMainWindow()
    {
        QVERIFY(startMain());
        QVERIFY(m_w->menus().mnuFamilies->isEnabled());
        QCOMPARE(mainFamilies(), (QStringList{"Tom Brown", "(Staff)"}));
        QVERIFY(openEditor());
        QCOMPARE(listed(), (QStringList{"Tom Brown", "(Staff)"}));
        QCOMPARE(child<QLabel>(m_f, "lblFamiliesCnt")->text(), QStringLiteral("1 families, 1 children"));
        QCOMPARE(child<QLineEdit>(m_f, "txtFirstName")->text(), QStringLiteral("Tom")); // the first entry is shown
        QVERIFY(child<QPushButton>(m_f, "cmdImport")->isEnabled());

        QTest::mouseClick(child<QPushButton>(m_f, "cmdAdd"), Qt::LeftButton);
        auto *first = child<QLineEdit>(m_f, "txtFirstName");
        QVERIFY(first->text().isEmpty());
        QVERIFY(child<QCheckBox>(m_f, "chkCurrent")->isChecked());
        QVERIFY(!child<QPushButton>(m_f, "cmdDelete")->isEnabled());
        QTRY_VERIFY(first->hasFocus());
        // The key filter drops what cannot be part of a folder name.
        QTest::keyClicks(first, QStringLiteral("Ann/ & Jo:e"));
        QCOMPARE(first->text(), QStringLiteral("Ann & Joe"));
        QVERIFY(!child<QListWidget>(m_f, "lvwFamilies")->isEnabled());
        QVERIFY(!child<QPushButton>(m_f, "cmdAdd")->isEnabled());
        QCOMPARE(child<QPushButton>(m_f, "cmdCancel")->text(), QStringLiteral("&Cancel"));
        QTest::keyClicks(child<QLineEdit>(m_f, "txtLastName"), QStringLiteral("O'Brien"));
        tick(child<QCheckBox>(m_f, "chkFamDaysTHpm"));
        QTest::mouseClick(child<QPushButton>(m_f, "cmdSave"), Qt::LeftButton);

        QCOMPARE(child<QLabel>(m_f, "lblMsg")->text(), QStringLiteral("Saved"));
        QCOMPARE(child<QPushButton>(m_f, "cmdCancel")->text(), QStringLiteral("&Close"));
        QCOMPARE(listed(), (QStringList{"Ann & Joe O'Brien", "Tom Brown", "(Staff)"}));
        QCOMPARE(child<QListWidget>(m_f, "lvwFamilies")->currentRow(), 0);
        QCOMPARE(child<QLabel>(m_f, "lblFamiliesCnt")->text(), QStringLiteral("2 families, 3 children"));
        QVERIFY(!child<QLineEdit>(m_f, "txtFamilyID")->text().isEmpty());
        QVERIFY(child<QCheckBox>(m_f, "chkFamDaysTHpm")->isChecked()); // shown again from the saved row
        // At once in the main window, while the editor is still open.
        QCOMPARE(mainFamilies(), (QStringList{"Ann & Joe O'Brien", "Tom Brown", "(Staff)"}));

        QTest::mouseClick(child<QPushButton>(m_f, "cmdCancel"), Qt::LeftButton);
        QTRY_VERIFY(!m_w->findChild<frmFamilies *>());
        QCOMPARE(mainFamilies(), (QStringList{"Ann & Joe O'Brien", "Tom Brown", "(Staff)"}));
    }

    void cancelDiscardsEditsAndCurrentOnlyIsStored()
    {
        QVERIFY(openEditor());
        auto *first = child<QLineEdit>(m_f, "txtFirstName");
        first->setFocus();
        QTest::keyClicks(first, QStringLiteral("my"));
        QCOMPARE(first->text(), QStringLiteral("Tommy"));
        QTest::keyClick(first, Qt::Key_Escape); // Esc is the Cancel button
        QCOMPARE(first->text(), QStringLiteral("Tom"));
        QCOMPARE(child<QPushButton>(m_f, "cmdCancel")->text(), QStringLiteral("&Close"));
        QVERIFY(m_f->isVisible());

        // Closing the window over unsaved edits asks first; No keeps the window and the edits.
        QTest::keyClicks(first, QStringLiteral("my"));
        m_port->answer(false);
        m_f->close();
        QVERIFY(m_f->isVisible());
        QCOMPARE(first->text(), QStringLiteral("Tommy"));
        QCOMPARE(m_port->lastText(), QStringLiteral("The changes to this family are not saved. Close and lose them?"));
        QTest::keyClick(first, Qt::Key_Escape);

        // Current families only is on by default; turning it off is remembered.
        QVERIFY(child<QCheckBox>(m_f, "chkShowCurrFamsOnly")->isChecked());
        tick(child<QCheckBox>(m_f, "chkShowCurrFamsOnly"));
        QCOMPARE(ReadSetting(QStringLiteral("CurrFamsOnly1")), QStringLiteral("0"));
        tick(child<QCheckBox>(m_f, "chkShowParent"));
        QCOMPARE(listed(), (QStringList{" - Tom Brown", "(Staff)"}));
        child<QPushButton>(m_f, "cmdCopyList")->click();
        QCOMPARE(m_port->clipboard, QStringLiteral("\tTom Brown\r\n"));
    }

    // Tab runs down the list side, then through the record as it is laid out, then the buttons
    // from left to right; every control is there under its name.
    void tabOrderFollowsLayout()
    {
        QVERIFY(openEditor());
        child<QPushButton>(m_f, "cmdImport")->setEnabled(true); // visited once the import is offered
        QStringList chain;
        QWidget *start = child<QListWidget>(m_f, "lvwFamilies");
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
        QVERIFY(openEditor());
        auto *last = child<QLineEdit>(m_f, "txtLastName");
        last->setFocus();
        QTRY_VERIFY(last->hasFocus());
        QTest::keyClick(last, Qt::Key_Backspace);
        QTest::keyClick(last, Qt::Key_Tab);
        QCOMPARE(m_port->lastText(), QStringLiteral("Warning: if you are trying to add a NEW family, do not simply rename an old one. "
                                                    "Start a new entry instead."));
        QCOMPARE(last->text(), QStringLiteral("Brow")); // the edit is kept
        QCOMPARE(child<QPushButton>(m_f, "cmdCancel")->text(), QStringLiteral("&Cancel"));
        m_port->answer(true); // closing the main window asks before the edits go
    }

    void deleteFromWindow()
    {
        QDir().mkpath(m_env->tgtDir() + QStringLiteral("/Tom Brown"));
        QVERIFY(openEditor());
        m_port->choose(QStringLiteral("yes"));
        QTest::mouseClick(child<QPushButton>(m_f, "cmdDelete"), Qt::LeftButton);
        QCOMPARE(listed(), QStringList{"(Staff)"});
        QVERIFY(!QDir(m_env->tgtDir() + QStringLiteral("/Tom Brown")).exists());
        QCOMPARE(mainFamilies(), QStringList{"(Staff)"});
        QVERIFY(child<QPushButton>(m_f, "cmdAdd")->hasFocus());
    }

    // The main window's list filtered to the photo's session follows the editor at once: a family
    // given that session appears beside the one already listed, and the indicator stays on it.
    void dayFilterFollowsEditedAttendance()
    {
        QVERIFY(addFamilies({"INSERT INTO tblFamilies (FamilyID, FirstName, LastName, FamDaysTam) VALUES (3,'Ann','Lee',True)"}));
        const QString photo = m_env->srcDir() + QStringLiteral("/IMG_1.jpg");
        QVERIFY(savePhoto(photo, QSize(40, 30)));
        lib_SetFileDate(photo, QLatin1Char('M'), QDateTime(QDate(2024, 3, 5), QTime(9, 0))); // a Tuesday morning
        QVERIFY(startMain(QSize(1100, 760)));
        auto *photos = child<QListView>(*m_w, "lvwSrcFiles");
        QTRY_COMPARE(photos->model()->rowCount(), 1);
        clickRow(photos, 0);
        QTRY_COMPARE(mainFamilies(), QStringList{"Ann Lee"});

        QVERIFY(openEditor());
        QCOMPARE(child<QLineEdit>(m_f, "txtFirstName")->text(), QStringLiteral("Ann"));
        auto *list = child<QListWidget>(m_f, "lvwFamilies");
        list->setCurrentRow(1); // Tom Brown
        QCOMPARE(child<QLineEdit>(m_f, "txtFirstName")->text(), QStringLiteral("Tom"));
        tick(child<QCheckBox>(m_f, "chkFamDaysTam"));
        QTest::mouseClick(child<QPushButton>(m_f, "cmdSave"), Qt::LeftButton);
        QCOMPARE(mainFamilies(), (QStringList{"Ann Lee", "Tom Brown"}));
        QVERIFY(child<QCheckBox>(*m_w, "chkFilterFamsTam")->isChecked());
    }

    void clickAfterAddShowsTheEntryAgain()
    {
        QVERIFY(openEditor());
        QTest::mouseClick(child<QPushButton>(m_f, "cmdAdd"), Qt::LeftButton);
        QVERIFY(child<QLineEdit>(m_f, "txtFirstName")->text().isEmpty());
        auto *list = child<QListWidget>(m_f, "lvwFamilies");
        clickRow(list, 0);
        QCOMPARE(child<QLineEdit>(m_f, "txtFirstName")->text(), QStringLiteral("Tom"));
        QVERIFY(child<QPushButton>(m_f, "cmdDelete")->isEnabled());
    }

    void importFromTheEditorShowsTheNewDays()
    {
        QVERIFY(addFamilies({"UPDATE tblFamilies SET FamDaysFpm=True WHERE FamilyID=1",
                             "INSERT INTO tblFamilies (FamilyID, FirstName, LastName) VALUES (3,'Ann & Jo','O''Lee')"}));
        const QString path = m_env->writeFile(
            QStringLiteral("days.xlsx"),
            makeXlsx({{1, QStringLiteral("Child"), QString(), QStringLiteral("Found"), QString()},
                      {2, QStringLiteral("Tom Brown"), QStringLiteral("1100000000"), QString(), QString()},
                      {3, QStringLiteral("Jo O'Lee"), QStringLiteral("0000000010"), QString(), QString()},
                      {4, QStringLiteral("Zed Unknown"), QStringLiteral("1111111111"), QString(), QString()}}));
        QVERIFY(openEditor());
        auto *list = child<QListWidget>(m_f, "lvwFamilies");
        QCOMPARE(list->item(1)->text(), QStringLiteral("Tom Brown"));
        list->setCurrentRow(1);
        QCOMPARE(child<QLineEdit>(m_f, "txtFirstName")->text(), QStringLiteral("Tom"));
        auto *import = child<QPushButton>(m_f, "cmdImport");
        QVERIFY(import->isEnabled());

        QSignalSpy changed(m_f, &frmFamilies::familiesChanged);
        m_port->choose(path);
        m_port->answer(false); // not now: the workbook stays closed
        QTest::mouseClick(import, Qt::LeftButton);

        // The selected family is shown again with the sheet's days.
        QCOMPARE(child<QLineEdit>(m_f, "txtFirstName")->text(), QStringLiteral("Tom"));
        QVERIFY(child<QCheckBox>(m_f, "chkFamDaysMam")->isChecked());
        QVERIFY(child<QCheckBox>(m_f, "chkFamDaysMpm")->isChecked());
        QVERIFY(!child<QCheckBox>(m_f, "chkFamDaysFpm")->isChecked());
        QCOMPARE(child<QLabel>(m_f, "lblMsg")->text(), QStringLiteral("Days imported for 2 families"));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(m_port->clipboard, QStringLiteral("Zed Unknown\r\n"));
        QVERIFY(m_port->lastText().startsWith(QStringLiteral("Open the workbook")));
        std::unique_ptr<Workbook> book = Workbook::forFileName(path);
        book->load(path);
        QCOMPARE(book->text(2, 13), QStringLiteral("y"));
        QCOMPARE(book->text(3, 13), QStringLiteral("y"));
        QCOMPARE(book->text(4, 13), QString());

        // Unsaved edits would be lost by the reload: the command waits for Save or Cancel.
        QTest::keyClicks(child<QLineEdit>(m_f, "txtFirstName"), QStringLiteral("my"));
        QVERIFY(!import->isEnabled());
        QTest::mouseClick(child<QPushButton>(m_f, "cmdCancel"), Qt::LeftButton);
        QVERIFY(import->isEnabled());
    }
};

QTEST_MAIN(TestFamiliesWindow)
#include "tst_familieswindow.moc"

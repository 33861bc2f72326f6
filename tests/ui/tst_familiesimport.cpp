// The attendance import run from the family editor window, as a user does: Settings > Families,
// a family selected, Import, a workbook chosen.
#include "../families/attendancesheets.h"

#include "app/familydatabase.h"
#include "families/workbook.h"
#include "support/findchild.h"
#include "support/hometest.h"
#include "ui/frmfamilies.h"
#include "ui/frmmain.h"
#include "ui/mainmenus.h"

#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace quillet;
using namespace quillet::test;

class TestFamiliesImport : public HomeTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        HomeTest::init();
        QVERIFY(m_env->makeInstallation());
        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName, FamDaysFpm) VALUES (1, ?, ?, True)"),
                {QStringLiteral("Tom"), QStringLiteral("Brown")});
        db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName) VALUES (2, ?, ?)"),
                {QStringLiteral("Ann & Jo"), QStringLiteral("O'Lee")});
        db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName) VALUES (3, '(Staff)')"));
    }

    void cleanup()
    {
        QCOMPARE(m_port->unexpectedQuestions, 0);
        HomeTest::cleanup();
    }

    void importFromTheEditorShowsTheNewDays()
    {
        const QString path = m_env->writeFile(
            QStringLiteral("days.xlsx"),
            makeXlsx({{1, QStringLiteral("Child"), QString(), QStringLiteral("Found"), QString()},
                      {2, QStringLiteral("Tom Brown"), QStringLiteral("1100000000"), QString(), QString()},
                      {3, QStringLiteral("Jo O'Lee"), QStringLiteral("0000000010"), QString(), QString()},
                      {4, QStringLiteral("Zed Unknown"), QStringLiteral("1111111111"), QString(), QString()}}));
        frmMain w;
        w.show();
        QVERIFY(w.StartUp());
        w.menus().mnuFamilies->trigger();
        frmFamilies *f = w.findChild<frmFamilies *>();
        QVERIFY(f);
        QVERIFY(QTest::qWaitForWindowExposed(f));
        auto *list = child<QListWidget>(*f, "lvwFamilies");
        QCOMPARE(list->item(1)->text(), QStringLiteral("Tom Brown"));
        list->setCurrentRow(1);
        QCOMPARE(child<QLineEdit>(*f, "txtFirstName")->text(), QStringLiteral("Tom"));
        auto *import = child<QPushButton>(*f, "cmdImport");
        QVERIFY(import->isEnabled());

        QSignalSpy changed(f, &frmFamilies::familiesChanged);
        m_port->choose(path);
        m_port->answer(false); // not now: the workbook stays closed
        QTest::mouseClick(import, Qt::LeftButton);

        // The selected family is shown again with the sheet's days.
        QCOMPARE(child<QLineEdit>(*f, "txtFirstName")->text(), QStringLiteral("Tom"));
        QVERIFY(child<QCheckBox>(*f, "chkFamDaysMam")->isChecked());
        QVERIFY(child<QCheckBox>(*f, "chkFamDaysMpm")->isChecked());
        QVERIFY(!child<QCheckBox>(*f, "chkFamDaysFpm")->isChecked());
        QCOMPARE(child<QLabel>(*f, "lblMsg")->text(), QStringLiteral("Days imported for 2 families"));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(m_port->clipboard, QStringLiteral("Zed Unknown\r\n"));
        QVERIFY(m_port->lastText().startsWith(QStringLiteral("Open the workbook")));
        std::unique_ptr<Workbook> book = Workbook::forFileName(path);
        book->load(path);
        QCOMPARE(book->text(2, 13), QStringLiteral("y"));
        QCOMPARE(book->text(3, 13), QStringLiteral("y"));
        QCOMPARE(book->text(4, 13), QString());

        // Unsaved edits would be lost by the reload: the command waits for Save or Cancel.
        QTest::keyClicks(child<QLineEdit>(*f, "txtFirstName"), QStringLiteral("my"));
        QVERIFY(!import->isEnabled());
        QTest::mouseClick(child<QPushButton>(*f, "cmdCancel"), Qt::LeftButton);
        QVERIFY(import->isEnabled());
    }
};

QTEST_MAIN(TestFamiliesImport)
#include "tst_familiesimport.moc"

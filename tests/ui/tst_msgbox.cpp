#include "lib/appstate.h"
#include "lib/errorhandler.h"
#include "support/findchild.h"
#include "ui/frmmsgbox.h"

#include <QApplication>
#include <QLabel>
#include <QTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QTest>
#include <QTimer>

using namespace quillet;
using namespace quillet::test;

namespace {

// The message box currently running modally, if any.
frmMsgBox *runningBox()
{
    return qobject_cast<frmMsgBox *>(QApplication::activeModalWidget());
}

} // namespace

class TestMsgBox : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        // A failed test must not leave a modal box behind for the next one.
        if (frmMsgBox *box = runningBox())
            box->done(0);
    }

    void styleShowsItsIconAndButtons_data()
    {
        QTest::addColumn<QString>("style");
        QTest::addColumn<QString>("icon");
        QTest::addColumn<bool>("question");
        QTest::addColumn<QString>("focused");
        QTest::newRow("1 error") << "1" << "picCritical" << false << "cmdOk";
        QTest::newRow("2 warning") << "2" << "picExclamation" << false << "cmdOk";
        QTest::newRow("3 information") << "3" << "picInformation" << false << "cmdOk";
        QTest::newRow("4 Yes default") << "4" << "picQuestion" << true << "cmdYes";
        QTest::newRow("5 No default") << "5" << "picQuestion" << true << "cmdNo";
    }

    void styleShowsItsIconAndButtons()
    {
        QFETCH(QString, style);
        QFETCH(QString, icon);
        QFETCH(bool, question);
        QFETCH(QString, focused);
        frmMsgBox box(style + QStringLiteral("   0Message"), false);
        box.show();
        QVERIFY(QTest::qWaitForWindowExposed(&box));

        for (const char *name : {"picCritical", "picExclamation", "picInformation", "picQuestion"})
            QCOMPARE(child<QLabel>(box, name)->isVisible(), icon == QLatin1String(name));
        QVERIFY(!child<QLabel>(box, "picQuestion")->pixmap().isNull());
        QCOMPARE(child<QPushButton>(box, "cmdOk")->isVisible(), !question);
        QCOMPARE(child<QPushButton>(box, "cmdYes")->isVisible(), question);
        QCOMPARE(child<QPushButton>(box, "cmdNo")->isVisible(), question);
        QVERIFY(child<QPushButton>(box, "cmdPrint")->isVisible());
        QCOMPARE(box.focusWidget()->objectName(), focused);
        QVERIFY(child<QPushButton>(box, qPrintable(focused))->isDefault());
        QVERIFY(!child<QLabel>(box, "lblCountDown")->isVisible());
        QVERIFY(!child<QTimer>(box, "timTimer")->isActive());
    }

    // The buttons and their keyboard accelerators set the answer; OK leaves it as it was.
    void buttonsSetTheAnswer_data()
    {
        QTest::addColumn<QString>("request");
        QTest::addColumn<bool>("before");
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("after");
        QTest::newRow("Yes on a No-default question") << "5   0Go?" << false << "cmdYes" << true;
        QTest::newRow("No on a Yes-default question") << "4   0Go?" << true << "cmdNo" << false;
        QTest::newRow("OK keeps true") << "3   0Hi" << true << "cmdOk" << true;
        QTest::newRow("OK keeps false") << "1   0Hi" << false << "cmdOk" << false;
        QTest::newRow("Alt+N answers No") << "4   0Go?" << true << "Alt+N" << false;
    }

    void buttonsSetTheAnswer()
    {
        QFETCH(QString, request);
        QFETCH(bool, before);
        QFETCH(QString, button);
        QFETCH(bool, after);
        frmMsgBox box(request, before);
        box.show();
        QVERIFY(QTest::qWaitForWindowExposed(&box));
        if (button.startsWith(QLatin1String("Alt+"))) {
            box.activateWindow();
            QTRY_VERIFY(box.isActiveWindow());
            QTest::keyClick(&box, Qt::Key(button.back().unicode()), Qt::AltModifier);
        } else {
            QTest::mouseClick(child<QPushButton>(box, qPrintable(button)), Qt::LeftButton);
        }
        QTRY_VERIFY(!box.isVisible());
        QCOMPARE(box.answer(), after);
    }

    void actionButtonRunsAndKeepsTheQuestion()
    {
        // The extra button runs its action (here stopping a countdown that would answer No) and
        // the question stays for the user to answer; without an action there is no such button.
        int runs = 0;
        frmMsgBox box(QStringLiteral("5   3Copy now?"), true);
        QVERIFY(!child<QPushButton>(box, "cmdAction")->isVisibleTo(&box));
        box.setAction({QStringLiteral("Pre&view..."), [&runs] { ++runs; }});
        box.show();
        QVERIFY(QTest::qWaitForWindowExposed(&box));
        auto *action = child<QPushButton>(box, "cmdAction");
        QVERIFY(action->isVisible());
        QCOMPARE(action->text(), QStringLiteral("Pre&view..."));
        QTest::mouseClick(action, Qt::LeftButton);
        QTest::mouseClick(action, Qt::LeftButton);
        QCOMPARE(runs, 2);
        QVERIFY(box.isVisible());
        QVERIFY(!child<QTimer>(box, "timTimer")->isActive());
        QTest::mouseClick(child<QPushButton>(box, "cmdYes"), Qt::LeftButton);
        QVERIFY(!box.isVisible());
        QVERIFY(box.answer());
    }

    void informationCountdownClosesItself()
    {
        frmMsgBox box(QStringLiteral("3   2Saved"), false);
        box.show();
        auto *countdown = child<QLabel>(box, "lblCountDown");
        QVERIFY(child<QLabel>(box, "picInformation")->isVisible());
        QVERIFY(child<QPushButton>(box, "cmdOk")->isVisible());
        QVERIFY(!child<QPushButton>(box, "cmdYes")->isVisible());
        QCOMPARE(child<QTextEdit>(box, "txtMessage")->toPlainText(), QStringLiteral("Saved"));
        QVERIFY(countdown->isVisible());
        QCOMPARE(countdown->text(), QStringLiteral("2"));
        QVERIFY(child<QTimer>(box, "timTimer")->isActive());
        QCOMPARE(child<QTimer>(box, "timTimer")->interval(), 1000);
        QTRY_COMPARE(countdown->text(), QStringLiteral("1"));
        QTRY_VERIFY(!box.isVisible());
        QCOMPARE(countdown->text(), QStringLiteral("0"));
    }

    void escapeStopsTheCountdownAndKeepsTheBox()
    {
        frmMsgBox box(QStringLiteral("5   2Delete?"), false);
        box.show();
        QVERIFY(QTest::qWaitForWindowExposed(&box));
        QTest::keyClick(box.focusWidget(), Qt::Key_Escape);
        QVERIFY(!child<QTimer>(box, "timTimer")->isActive());
        QVERIFY(!child<QLabel>(box, "lblCountDown")->isVisible());
        QVERIFY(box.isVisible());
        QTest::mouseClick(child<QPushButton>(box, "cmdYes"), Qt::LeftButton);
        QVERIFY(!box.isVisible());
        QVERIFY(box.answer());
    }

    void textAsShown_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<int>("lines");
        QTest::newRow("trailing tag cut") << "Photo saved@1234" << "Photo saved" << 1;
        QTest::newRow("@ joins two lines") << "Hello@World" << "Hello\nWorld" << 2;
        QTest::newRow("LF only") << "one\ntwo\n\nfour" << "one\ntwo\n\nfour" << 4;
        QTest::newRow("CR LF") << "one\r\ntwo\r\n\r\nfour" << "one\ntwo\n\nfour" << 4;
    }

    void textAsShown()
    {
        QFETCH(QString, text);
        QFETCH(QString, shown);
        QFETCH(int, lines);
        frmMsgBox box(QStringLiteral("3    ") + text, false);
        const auto *txt = child<QTextEdit>(box, "txtMessage");
        QVERIFY(txt->isReadOnly());
        QCOMPARE(txt->toPlainText(), shown);
        QCOMPARE(txt->document()->blockCount(), lines);
    }

    void boxGrowsWithItsTextThenScrolls()
    {
        const QString word = QStringLiteral("word ");
        frmMsgBox small(QStringLiteral("3    Short"), false);
        frmMsgBox medium(QStringLiteral("3    ") + word.repeated(120) + QStringLiteral("@end"), false);
        frmMsgBox huge(QStringLiteral("3    ") + QStringLiteral("line@").repeated(400), false);
        for (frmMsgBox *box : {&small, &medium, &huge}) {
            box->show();
            QVERIFY(QTest::qWaitForWindowExposed(box));
        }
        QVERIFY(medium.height() > small.height());
        QVERIFY(huge.height() > medium.height());

        // A text that fits shows whole; one that cannot is capped to the screen and scrolls.
        const auto *mediumText = child<QTextEdit>(medium, "txtMessage");
        QCOMPARE(mediumText->verticalScrollBar()->maximum(), 0);
        const auto *hugeText = child<QTextEdit>(huge, "txtMessage");
        QVERIFY(hugeText->verticalScrollBar()->maximum() > 0);
        QVERIFY(huge.height() <= huge.screen()->availableGeometry().height());
    }

    void titleIsTheMainWindowsCapped()
    {
        QWidget main;
        main.setObjectName(QStringLiteral("frmMain"));
        main.setWindowTitle(QStringLiteral("T").repeated(250));
        main.show();
        frmMsgBox box(QStringLiteral("3    Hi"), false);
        QCOMPARE(box.windowTitle(), QStringLiteral("T").repeated(200));

        main.setWindowTitle(QStringLiteral("Quillet - Room 3"));
        frmMsgBox second(QStringLiteral("3    Hi"), false);
        QCOMPARE(second.windowTitle(), QStringLiteral("Quillet - Room 3"));
    }

    // The normal pointer is shown while the box is up, and the busy one is back afterwards.
    void showsTheNormalPointerWhileUp()
    {
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
        {
            frmMsgBox box(QStringLiteral("3    Hi"), false);
            box.show();
            QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::ArrowCursor);
            box.accept();
            QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
        }
        QGuiApplication::restoreOverrideCursor();
        QVERIFY(!QGuiApplication::overrideCursor());
    }
};

QTEST_MAIN(TestMsgBox)
#include "tst_msgbox.moc"

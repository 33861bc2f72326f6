#include "lib/appstate.h"
#include "lib/errorhandler.h"
#include "support/findchild.h"
#include "ui/frmmsgbox.h"
#include "ui/frmprogressrpt.h"
#include "ui/widgetprompt.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QInputDialog>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QTextEdit>
#include <QTimer>
#include <functional>

using namespace quillet;
using namespace quillet::test;

namespace {

// Runs `act` on the next modal dialog of type T, from inside the dialog's own event loop.
template <typename T>
void onModal(std::function<void(T *)> act)
{
    auto *poll = new QTimer(qApp);
    poll->setInterval(10);
    QObject::connect(poll, &QTimer::timeout, poll, [poll, act] {
        if (auto *dialog = qobject_cast<T *>(QApplication::activeModalWidget())) {
            poll->stop();
            poll->deleteLater();
            act(dialog);
        }
    });
    poll->start();
}

QString shownText(const frmMsgBox *box)
{
    return child<QTextEdit>(box, "txtMessage")->toPlainText();
}

} // namespace

class TestWidgetPrompt : public QObject
{
    Q_OBJECT

    WidgetPrompt *m_port = nullptr;

private Q_SLOTS:
    void init()
    {
        m_port = new WidgetPrompt;
        appState().cancel = false;
    }
    void cleanup()
    {
        delete m_port;
        appState().cancel = false;
    }

    void installsItselfAsThePort()
    {
        QCOMPARE(&prompt(), static_cast<UserPrompt *>(m_port));
        delete m_port;
        m_port = nullptr;
        QVERIFY(dynamic_cast<WidgetPrompt *>(&prompt()) == nullptr);
        m_port = new WidgetPrompt;
    }

    void progressCountsAndEstimates()
    {
        frmProgressRpt window;
        window.show();
        auto *bar = child<QProgressBar>(&window, "pbr1");
        auto *line1 = child<QLabel>(&window, "lblMsg1");
        auto *line2 = child<QLabel>(&window, "lblMsg2");
        line1->setText(QStringLiteral("left over"));
        window.ProgressBarInit(4);
        QCOMPARE(bar->minimum(), 1);
        QCOMPARE(bar->maximum(), 4);
        QVERIFY(line1->text().isEmpty());

        window.ProgressBarUpdate(2, 0);
        QCOMPARE(bar->value(), 2);
        QCOMPARE(line1->text(), QStringLiteral("Processing 2 of 4"));
        QVERIFY(line2->text().isEmpty());

        window.ProgressBarUpdate(2, 1);
        const QString estimate = line2->text();
        QVERIFY2(QRegularExpression(QStringLiteral("^Expected completion in \\d\\d:\\d\\d$")).match(estimate).hasMatch(),
                 qPrintable(estimate));
        line2->setText(QStringLiteral("Expected completion in 42:00"));
        window.ProgressBarUpdate(3, 0);
        QCOMPARE(line1->text(), QStringLiteral("Processing 3 of 4"));
        QCOMPARE(line2->text(), QStringLiteral("Expected completion in 42:00"));

        // A single item leaves the bar's range as it was.
        window.ProgressBarInit(1);
        QCOMPARE(bar->maximum(), 4);
    }

    void closingTheProgressWindowCancels_data()
    {
        QTest::addColumn<QString>("how");
        QTest::newRow("close button") << "close";
        QTest::newRow("Escape") << "escape";
        QTest::newRow("caller hides it") << "hide";
    }

    void closingTheProgressWindowCancels()
    {
        QFETCH(QString, how);
        m_port->progressShow(QStringLiteral("Copying photos"));
        frmProgressRpt *window = m_port->progressWindow();
        QVERIFY(window && window->isVisible());
        QCOMPARE(window->windowTitle(), QStringLiteral("Copying photos"));
        m_port->progressInit(3);
        m_port->progressUpdate(1, 1);
        QCOMPARE(child<QLabel>(window, "lblMsg1")->text(), QStringLiteral("Processing 1 of 3"));

        if (how == QLatin1String("close"))
            window->close();
        else if (how == QLatin1String("escape"))
            QTest::keyClick(window, Qt::Key_Escape);
        else
            m_port->progressHide();
        QVERIFY(!window->isVisible());
        QCOMPARE(bool(appState().cancel), how != QLatin1String("hide"));
    }

    void yesNoQuestionIsAskedInTheBox_data()
    {
        QTest::addColumn<bool>("defaultYes");
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("result");
        QTest::newRow("No against a Yes default") << true << "cmdNo" << false;
        QTest::newRow("Yes against a No default") << false << "cmdYes" << true;
    }

    void yesNoQuestionIsAskedInTheBox()
    {
        QFETCH(bool, defaultYes);
        QFETCH(QString, button);
        QFETCH(bool, result);
        QString seen;
        QString focused;
        onModal<frmMsgBox>([&](frmMsgBox *box) {
            seen = shownText(box);
            focused = box->focusWidget()->objectName();
            child<QPushButton>(box, qPrintable(button))->click();
        });
        QCOMPARE(lib_MsgYesNo(QStringLiteral("Delete 3 photos?@17"), 0, defaultYes), result);
        QCOMPARE(seen, QStringLiteral("Delete 3 photos?"));
        QCOMPARE(focused, defaultYes ? QStringLiteral("cmdYes") : QStringLiteral("cmdNo"));
    }

    void unansweredQuestionReturnsTheDefault()
    {
        QVERIFY(!lib_MsgYesNo(QStringLiteral("Overwrite?"), 1, false));
        QVERIFY(lib_MsgYesNo(QStringLiteral("Overwrite?"), 1, true));
    }

    void longMessageShowsInTwoBoxes()
    {
        const QString text = QStringLiteral("x").repeated(500) + QLatin1Char(' ') + QStringLiteral("y").repeated(800);
        QStringList seen;
        onModal<frmMsgBox>([&](frmMsgBox *first) {
            seen << shownText(first);
            onModal<frmMsgBox>([&](frmMsgBox *second) {
                seen << shownText(second);
                child<QPushButton>(second, "cmdOk")->click();
            });
            child<QPushButton>(first, "cmdOk")->click();
        });
        lib_MsgInfo(text);
        QCOMPARE(seen.size(), 2);
        QCOMPARE(seen.at(0), text.left(501) + QStringLiteral("...(contd)"));
        QCOMPARE(seen.at(1), QStringLiteral("y").repeated(800));
    }

    void fileChoosersUseFilterAndTitle_data()
    {
        QTest::addColumn<bool>("save");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("shownTitle");
        QTest::addColumn<QString>("extensions");
        QTest::addColumn<QString>("filter");
        QTest::newRow("open, no title") << false << "" << "Open" << "xlsx" << "Workbooks (*.xlsx)";
        QTest::newRow("save, no title") << true << "" << "Save As" << "xlsx" << "Workbooks (*.xlsx)";
        QTest::newRow("open with title") << false << "Choose a workbook" << "Choose a workbook" << "xlsx"
                                         << "Workbooks (*.xlsx)";
        QTest::newRow("several types") << false << "Select import file" << "Select import file"
                                       << "xlsx xls ods csv" << "Workbooks (*.xlsx *.xls *.ods *.csv)";
    }

    void fileChoosersUseFilterAndTitle()
    {
        QFETCH(bool, save);
        QFETCH(QString, title);
        QFETCH(QString, shownTitle);
        QFETCH(QString, extensions);
        QFETCH(QString, filter);
        QString seenTitle;
        QStringList seenFilters;
        onModal<QFileDialog>([&](QFileDialog *dialog) {
            seenTitle = dialog->windowTitle();
            seenFilters = dialog->nameFilters();
            dialog->reject();
        });
        const QString chosen = save
            ? m_port->saveFileDialog(QStringLiteral("Workbooks"), extensions, QDir::tempPath(), title)
            : m_port->openFileDialog(QStringLiteral("Workbooks"), extensions, QDir::tempPath(), title);
        QVERIFY(chosen.isEmpty());
        QCOMPARE(seenTitle, shownTitle);
        QCOMPARE(seenFilters, QStringList{filter});
    }

    void typedTextReturnsWhatWasTypedOrNothing_data()
    {
        QTest::addColumn<bool>("accept");
        QTest::addColumn<QString>("result");
        QTest::newRow("OK") << true << "DELETE";
        QTest::newRow("Cancel") << false << "";
    }

    void typedTextReturnsWhatWasTypedOrNothing()
    {
        QFETCH(bool, accept);
        QFETCH(QString, result);
        QString seenLabel;
        onModal<QInputDialog>([&](QInputDialog *dialog) {
            seenLabel = dialog->labelText();
            dialog->setTextValue(QStringLiteral("DELETE"));
            accept ? dialog->accept() : dialog->reject();
        });
        QCOMPARE(m_port->typedText(QStringLiteral("Type DELETE to confirm"), QString()), result);
        QCOMPARE(seenLabel, QStringLiteral("Type DELETE to confirm"));
    }

    void waitsForAWindowByItsTitle()
    {
        QWidget editor;
        editor.setWindowTitle(QStringLiteral("quilletDebug1.txt - Text Editor"));
        QTimer::singleShot(50, &editor, &QWidget::show);
        QVERIFY(m_port->waitForWindow(QStringLiteral("*QUILLETDEBUG1.TXT*"), 5000));
        QVERIFY(!m_port->waitForWindow(QStringLiteral("*other.txt*"), 200));
    }

    void busyPointerNests()
    {
        m_port->setBusy(true);
        m_port->setBusy(true);
        QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
        m_port->setBusy(false);
        QVERIFY(QGuiApplication::overrideCursor());
        m_port->setBusy(false);
        QVERIFY(!QGuiApplication::overrideCursor());
        // An unmatched "off" must not take someone else's pointer away.
        QGuiApplication::setOverrideCursor(Qt::CrossCursor);
        m_port->setBusy(false);
        QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::CrossCursor);
        QGuiApplication::restoreOverrideCursor();
    }

    void clipboardAndMinimisedMainWindow()
    {
        m_port->setClipboardText(QStringLiteral("K17"));
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("K17"));

        QWidget main;
        main.setObjectName(QStringLiteral("frmMain"));
        main.showMinimized();
        QVERIFY(main.isMinimized());
        m_port->restoreActiveWindow();
        QVERIFY(!main.isMinimized());
    }
};

QTEST_MAIN(TestWidgetPrompt)
#include "tst_widgetprompt.moc"

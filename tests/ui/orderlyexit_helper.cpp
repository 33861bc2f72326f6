// The program as it starts for real (RunQuillet with the application's own windows), plus one
// command driven once it has started, so the orderly-exit test can send its signal while that
// command waits for an answer:
//   orderlyexit_helper save   selects every photo and family 12, then presses Save.
//   orderlyexit_helper replay  answers Yes to the start-up questions of a waiting batchfile (process
//                              it, reprocess it), so that its replay runs.
//   orderlyexit_helper refresh declines the batchfile at start-up, then chooses Refresh and
//                              answers Yes, so that it is replayed from the main window.
// Without arguments it is the program itself.
#include "lib/debuglog.h"
#include "ui/frmmain.h"
#include "ui/orderlyexit.h"
#include "ui/widgetprompt.h"
#include "workspace/workspace.h"

#include <QApplication>
#include <QPushButton>
#include <QTextEdit>
#include <QTimer>

using namespace quillet;

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Quillet"));
    WidgetPrompt userPrompt;
    const QByteArray command = argc > 1 ? QByteArray(argv[1]) : QByteArray();
    // The batchfile questions: answered Yes in "replay", No during start-up and Yes on the
    // Refresh in "refresh".
    static bool answerYes = command == "replay";
    if (command == "replay" || command == "refresh") {
        auto *answering = new QTimer(&app);
        QObject::connect(answering, &QTimer::timeout, [] {
            QWidget *box = QApplication::activeModalWidget();
            auto *text = box ? box->findChild<QTextEdit *>(QStringLiteral("txtMessage")) : nullptr;
            auto *button = box ? box->findChild<QPushButton *>(answerYes ? QStringLiteral("cmdYes") : QStringLiteral("cmdNo"))
                               : nullptr;
            if (!text || !button || !button->isVisible())
                return;
            const QString question = text->toPlainText();
            if (!question.contains(QLatin1String("Process it now?")) && !question.contains(QLatin1String("reprocess it?")))
                return;
            DebugLog(QStringLiteral("orderlyexit_helper: answering ") + (answerYes ? QStringLiteral("Yes") : QStringLiteral("No"))
                     + QStringLiteral(" to the batchfile question"));
            button->click();
        });
        answering->start(100);
    }
    return RunQuillet([command](frmMain &window) {
        if (command == "refresh") {
            QTimer::singleShot(0, &window, [&window] {
                answerYes = true;
                DebugLog(QStringLiteral("orderlyexit_helper: choosing Refresh"));
                window.Refresh();
            });
        }
        if (command != "save")
            return;
        QTimer::singleShot(0, &window, [&window] {
            SourceListModel &photos = window.workspace().sourceList();
            for (int i = 0; i < photos.rowCount(); ++i)
                photos.setSelected(i, true);
            FamilyListModel &families = window.workspace().familyList();
            families.setSelected(families.positionOfId(12), true);
            DebugLog(QStringLiteral("orderlyexit_helper: pressing Save"));
            window.findChild<QPushButton *>(QStringLiteral("cmdSave"))->click();
        });
    });
}

// The program as it starts for real (RunQuillet with the application's own windows), plus one
// command driven once it has started, so the orderly-exit test can send its signal while that
// command waits for an answer:
//   orderlyexit_helper save   selects every photo and family 12, then presses Save.
// Without arguments it is the program itself.
#include "lib/debuglog.h"
#include "ui/frmmain.h"
#include "ui/orderlyexit.h"
#include "ui/widgetprompt.h"
#include "workspace/workspace.h"

#include <QApplication>
#include <QPushButton>
#include <QTimer>

using namespace quillet;

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Quillet"));
    WidgetPrompt userPrompt;
    const bool save = argc > 1 && QByteArray(argv[1]) == "save";
    return RunQuillet([save](frmMain &window) {
        if (!save)
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

#include "lib/apppaths.h"
#include "lib/terminationsignals.h"
#include "ui/frmmain.h"
#include "ui/widgetprompt.h"

#include <QApplication>
#include <QIcon>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Quillet"));
    QApplication::setApplicationVersion(QStringLiteral(QUILLET_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("org.quillet.Quillet"));
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("quillet"),
                                                 QIcon(quillet::AppPaths::resourceFile(QStringLiteral("quillet.png")))));

    // Every question and message of the core is shown by the application's own windows.
    quillet::WidgetPrompt userPrompt;
    quillet::frmMain window;
    quillet::TerminationSignals signals;
    QObject::connect(&signals, &quillet::TerminationSignals::terminationRequested, &window, &QWidget::close);
    window.show();
    if (!window.StartUp())
        return 1;
    return app.exec();
}

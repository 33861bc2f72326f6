#include "ui/orderlyexit.h"
#include "ui/widgetprompt.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Quillet"));
    QApplication::setApplicationVersion(QStringLiteral(QUILLET_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("quillet"));

    // Every question and message of the core is shown by the application's own windows.
    quillet::WidgetPrompt userPrompt;
    return quillet::RunQuillet();
}

#include "lib/apppaths.h"
#include "ui/orderlyexit.h"
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
    return quillet::RunQuillet();
}

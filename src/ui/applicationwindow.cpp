#include "applicationwindow.h"

#include <QApplication>
#include <QWidget>

namespace quillet {

QWidget *applicationWindow()
{
    QWidget *hiddenMain = nullptr;
    for (QWidget *w : QApplication::topLevelWidgets()) {
        if (w->objectName() != QLatin1String("frmMain"))
            continue;
        if (w->isVisible())
            return w;
        hiddenMain = w;
    }
    return hiddenMain ? hiddenMain : QApplication::activeWindow();
}

QWidget *dialogParent()
{
    if (QWidget *modal = QApplication::activeModalWidget())
        return modal;
    if (QWidget *active = QApplication::activeWindow())
        return active;
    return applicationWindow();
}

QString applicationWindowTitle()
{
    const QWidget *main = applicationWindow();
    QString title = main ? main->windowTitle() : QString();
    if (title.isEmpty())
        title = QGuiApplication::applicationDisplayName();
    return title.left(200);
}

} // namespace quillet

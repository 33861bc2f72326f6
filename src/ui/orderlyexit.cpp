#include "orderlyexit.h"

#include "frmmain.h"
#include "lib/appstate.h"
#include "lib/debuglog.h"
#include "lib/terminationsignals.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QDialog>
#include <QThread>
#include <QTimer>

namespace quillet {

namespace {
constexpr int kTickMs = 40;
}

OrderlyExit::OrderlyExit(frmMain &window, QObject *parent)
    : QObject(parent)
    , m_window(&window)
{
}

void OrderlyExit::request(int signalNumber)
{
    if (m_requested)
        return;
    m_requested = true;
    DebugLog(QStringLiteral("OrderlyExit: signal %1, ending the session").arg(signalNumber));
    m_timer = new QTimer(this);
    m_timer->setInterval(kTickMs);
    connect(m_timer, &QTimer::timeout, this, &OrderlyExit::tick);
    m_timer->start();
    if (QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance())
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this, &OrderlyExit::onAboutToBlock);
    tick();
}

void OrderlyExit::tick()
{
    appState().cancel = true;
    // Hiding, not closing: a dialog's own close handling may ask a question (drop the edits?),
    // and hiding ends its modal loop just the same.
    for (QWidget *w : QApplication::topLevelWidgets()) {
        if (w == m_window || !w->isVisible() || !qobject_cast<QDialog *>(w))
            continue;
        if (w->objectName() == QLatin1String("frmLargePic"))
            continue;
        w->hide();
    }
}

void OrderlyExit::onAboutToBlock()
{
    // Only the main loop about to wait means that no command is running below us: a command that
    // lets events run between files does so without blocking, and a modal box has a loop of its own.
    if (!m_mainLoop || m_closing || QThread::currentThread()->loopLevel() != 1 || QApplication::activeModalWidget())
        return;
    m_closing = true;
    QMetaObject::invokeMethod(this, [this] {
        if (m_window)
            m_window->close();
        QCoreApplication::quit();
    }, Qt::QueuedConnection);
}

int RunQuillet(const std::function<void(frmMain &)> &afterStartUp)
{
    frmMain window;
    TerminationSignals signals;
    OrderlyExit exit(window);
    QObject::connect(&signals, &TerminationSignals::terminationRequested, &exit, &OrderlyExit::request);
    window.show();
    const bool started = window.StartUp();
    if (exit.requested()) {
        window.close();
        return 0;
    }
    if (!started)
        return 1;
    if (afterStartUp)
        afterStartUp(window);
    exit.mainLoopStarting();
    return QApplication::exec();
}

} // namespace quillet

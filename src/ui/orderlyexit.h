#pragma once

#include <QObject>
#include <QPointer>
#include <functional>

class QTimer;

namespace quillet {

class frmMain;

// Ends the program in order when the session asks (SIGTERM at logout, SIGINT), whatever is open.
//
// From the request on, every tick raises the cancel flag (a load, Save or replay stops at its next
// file, as a cancel does) and hides every dialog that is up: message boxes take their default answer,
// choosers return nothing, the settings dialog drops its edits without asking, the progress window
// goes. The large picture window is left to the shutdown, which records that it was open. The main
// window is closed, running the orderly shutdown (window rectangle, undo file), only once no command
// is on the stack: when the main event loop is about to wait for events. A request during start-up
// is finished by the caller when StartUp returns (see requested()).
class OrderlyExit : public QObject
{
    Q_OBJECT
public:
    explicit OrderlyExit(frmMain &window, QObject *parent = nullptr);

    bool requested() const { return m_requested; }
    // The main event loop is about to run: from now on the window is closed from the loop.
    void mainLoopStarting() { m_mainLoop = true; }

public Q_SLOTS:
    void request(int signalNumber);

private:
    void tick();
    void onAboutToBlock();

    QPointer<frmMain> m_window;
    QTimer *m_timer = nullptr;
    bool m_requested = false;
    bool m_mainLoop = false;
    bool m_closing = false;
};

// Starts the main window and runs the application until it ends: StartUp, then the event loop,
// with SIGTERM and SIGINT turned into an orderly exit. `afterStartUp` runs once the window has
// started (test programs use it to drive a command). Returns the process's exit code.
int RunQuillet(const std::function<void(frmMain &)> &afterStartUp = {});

} // namespace quillet

#pragma once

#include <QDateTime>
#include <atomic>

namespace quillet {

// The few flags the whole process shares. Everything else is owned by the session and passed
// to whoever needs it.
struct AppState
{
    // Raised when the user closes the progress window or chooses to cancel after a failed copy;
    // long loops clear it before they start and stop when they see it raised.
    std::atomic<bool> cancel{false};
    // When false, a shown error report is replaced by a generic text. Start-up sets it first.
    std::atomic<bool> showErrorDetails{false};
    // True once start-up has finished; timing lines go to the debug log only before that.
    std::atomic<bool> systemLoaded{false};
    // True once a settings read found the administrator ini file; never reset.
    std::atomic<bool> isPortableCopy{false};
    // The moment the main window began loading.
    QDateTime startTime;
    // The system's reason when lib_MakePath could not create a folder.
    QString lastSystemError;
};

AppState &appState();

} // namespace quillet

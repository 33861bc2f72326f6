#pragma once

#include <QString>

class QDateTime;

namespace quillet {

// Receives a status line (the main window's lblMsg, a title bar). Set by the windows.
using StatusSink = void (*)(void *context, const QString &text);

// Writes one log line: Source and ", " when Source is given, the "dd/mm/yy, HH:nn:ss, " stamp when
// withTimestamp, then the text; to standard error when toDebugger, appended to logFile when given.
// Lets pending events run once afterwards. A failure to write the file throws Error.
void lib_LogLine(const QString &text, bool toDebugger, const QString &logFile, bool withTimestamp,
                 const QString &source = QString());

// The line lib_LogLine writes, for a given moment.
QString lib_FormatLogLine(const QString &text, bool withTimestamp, const QString &source,
                          const QDateTime &now);

// Appends a line to the debug log (debugger output, timestamped, no source).
void DebugLog(const QString &text);
// Start-up timing line "<name>: \t<elapsed>" from the stopwatch (command 5), only while the system
// has not finished loading.
void DebugLogTiming(const QString &procName);

QString GetDebugLogPath();
QString GetDebugViewPath();

// Shows a text in the desktop's editor: with an empty path the text is written to the debug view
// file first. When the editor's window appears the file goes to the trash; otherwise the user is
// told "Sorry, could not find debug text window".
void ShowDebugText(const QString &text, const QString &path = QString());

// The global stopwatch: 1 start, 2 stop and accumulate, 3 restart keeping the total, 4 peek,
// 5 stop, accumulate and return the total; other commands return 0.
qint32 lib_Stopwatch(int command);

} // namespace quillet

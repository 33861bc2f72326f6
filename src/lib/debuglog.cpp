#include "debuglog.h"

#include "apppaths.h"
#include "appstate.h"
#include "error.h"
#include "errorhandler.h"
#include "fileutils.h"
#include "texthelpers.h"
#include "userprompt.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <cstdio>

namespace quillet {

QString lib_FormatLogLine(const QString &text, bool withTimestamp, const QString &source, const QDateTime &now)
{
    QString line;
    if (!source.isEmpty())
        line = source + QStringLiteral(", ");
    if (withTimestamp)
        line += now.toString(QStringLiteral("dd/MM/yy, HH:mm:ss, "));
    return line + text;
}

void lib_LogLine(const QString &text, bool toDebugger, const QString &logFile, bool withTimestamp,
                 const QString &source)
{
    const QString line = lib_FormatLogLine(text, withTimestamp, source, QDateTime::currentDateTime());
    if (toDebugger)
        std::fprintf(stderr, "%s\n", qPrintable(line));
    if (!logFile.isEmpty()) {
        QFile f(logFile);
        if (!f.open(QIODevice::Append | QIODevice::WriteOnly))
            throw Error(kErrPathFileAccess, QStringLiteral("Lib09.lib_LogLine"),
                        QStringLiteral("Cannot write the log file ") + logFile + QStringLiteral(": ")
                            + f.errorString());
        f.write((line + QStringLiteral("\r\n")).toUtf8());
    }
    prompt().processEvents();
}

void DebugLog(const QString &text)
{
    try {
        lib_LogLine(text, true, GetDebugLogPath(), true);
    } catch (const Error &) {
        // A debug line that cannot be written (data folder gone, disk full) must not stop the work.
    }
}

void DebugLogTiming(const QString &procName)
{
    const qint32 ms = lib_Stopwatch(5);
    if (!appState().systemLoaded)
        DebugLog(procName + QStringLiteral(": \t") + lib_FormatElapsed(9, ms));
}

QString GetDebugLogPath() { return AppPaths::debugLog(); }
QString GetDebugViewPath() { return AppPaths::debugView(); }

void ShowDebugText(const QString &text, const QString &path)
{
    QString file = path;
    if (file.isEmpty()) {
        file = GetDebugViewPath();
        QFile f(file);
        if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            lib_MsgError(QStringLiteral("Cannot write ") + file + QStringLiteral(": ") + f.errorString());
            return;
        }
        f.write(text.toUtf8());
    }
    // The desktop opens the file in the user's editor. Other programs' windows cannot be watched
    // from here, so the view file is not trashed afterwards; the next view overwrites it.
    if (!prompt().openWithDefaultProgram(file))
        lib_MsgInfo(QStringLiteral("Sorry, could not find debug text window"));
}

namespace {

struct Stopwatch
{
    QElapsedTimer clock;
    qint64 startTicks = 0;
    qint64 stopTicks = 0;
    qint32 accumulatedMs = 0;

    qint64 now()
    {
        if (!clock.isValid())
            clock.start();
        return clock.elapsed();
    }
};

Stopwatch g_watch;

} // namespace

qint32 lib_Stopwatch(int command)
{
    switch (command) {
    case 1:
        g_watch.startTicks = g_watch.now();
        g_watch.accumulatedMs = 0;
        return 0;
    case 2:
        g_watch.stopTicks = g_watch.now();
        g_watch.accumulatedMs += qint32(g_watch.stopTicks - g_watch.startTicks);
        return 0;
    case 3:
        g_watch.startTicks = g_watch.now();
        return 0;
    case 4:
        g_watch.stopTicks = g_watch.now();
        return g_watch.accumulatedMs + qint32(g_watch.stopTicks - g_watch.startTicks);
    case 5:
        lib_Stopwatch(2);
        return g_watch.accumulatedMs;
    default:
        return 0;
    }
}

} // namespace quillet

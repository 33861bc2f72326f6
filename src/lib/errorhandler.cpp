#include "errorhandler.h"

#include "appstate.h"
#include "userprompt.h"

#include <QLocale>
#include <QTime>

namespace quillet {

namespace {

bool g_answer = false;

qint64 relativeCode(qint32 errNumber)
{
    return qint64(errNumber) - qint64(kObjectErrorBase);
}

QString hexOf(qint32 number)
{
    return QString::number(quint32(number), 16).toUpper();
}

QString timeText(const QTime &t)
{
    // The system's long time format, without the time-zone field a QTime cannot fill.
    QString format = QLocale::system().timeFormat(QLocale::LongFormat);
    format.remove(QLatin1Char('t'));
    return QLocale::system().toString(t, format.trimmed());
}

} // namespace

QString lib_ErrorKind(qint32 errNumber)
{
    if (errNumber == 0)
        return QStringLiteral("Sys");
    const qint64 r = relativeCode(errNumber);
    if (r < 1000)
        return QStringLiteral("Sql");
    if (r < 65536)
        return QStringLiteral("App");
    return QStringLiteral("Sys");
}

QString lib_BuildErrorReport(const QString &procName, qint32 errNumber, const QString &errDescription,
                             const QString &extraInfo, const QTime &timeOfDay)
{
    QString report = timeText(timeOfDay) + QStringLiteral(" An error has occurred in ") + procName
        + QStringLiteral("\r\n\r\n");
    if (errNumber != 0) {
        const qint64 r = relativeCode(errNumber);
        const QString kind = lib_ErrorKind(errNumber);
        if (kind == QLatin1String("Sql"))
            report += QStringLiteral("(&H") + hexOf(errNumber) + QStringLiteral(")(SQL ") + QString::number(r)
                + QStringLiteral(") ");
        else if (kind == QLatin1String("App"))
            report += QStringLiteral("(&H") + hexOf(errNumber) + QStringLiteral(")(AppDef ")
                + QString::number(r) + QStringLiteral(") ");
        else
            report += QLatin1Char('(') + QString::number(errNumber) + QStringLiteral(") ");
    }
    report += errDescription;
    if (!extraInfo.isEmpty())
        report += QStringLiteral("\r\n") + extraInfo;
    return report;
}

void lib_ErrorHandler(const QString &procName, qint32 errNumber, const QString &errDescription,
                      bool showMessage, const QString &extraInfo, int timeout)
{
    try {
        const QTime now = QTime::currentTime();
        QString report = lib_BuildErrorReport(procName, errNumber, errDescription, extraInfo, now);
        if (!showMessage)
            return;
        if (!appState().showErrorDetails)
            report = timeText(now) + QStringLiteral(" The application has encountered an error");
        const bool asWarning =
            lib_ErrorKind(errNumber) == QLatin1String("App") && relativeCode(errNumber) > 1000;
        if (asWarning)
            lib_MsgWarning(report, timeout);
        else
            lib_MsgError(report, timeout);
    } catch (...) {
        // The reporter is called from error traps and must never fail itself.
    }
}

void lib_ErrorHandler(const QString &procName, const Error &error, bool showMessage,
                      const QString &extraInfo, int timeout)
{
    lib_ErrorHandler(procName, error.number(), error.description(), showMessage, extraInfo, timeout);
}

QString lib_PackMessageRequest(const QString &style, int timeout, const QString &text)
{
    return style.left(1) + QString::number(timeout).rightJustified(4, QLatin1Char(' '), true) + text;
}

QStringList lib_SplitLongMessage(const QString &text)
{
    if (text.size() < 1250)
        return {text};
    // Positions are 1-based as the message box counts them.
    int split = 0;
    for (int pos = 990; pos >= 1; --pos) {
        const QChar c = text.at(pos - 1);
        if (c == QLatin1Char(' ') || c == QLatin1Char('\r') || c == QLatin1Char('\n')) {
            split = pos;
            break;
        }
    }
    if (split == 0)
        split = 1240;
    return {text.left(split) + QStringLiteral("...(contd)"), text.mid(split)};
}

void lib_ShowMessage(const QString &style, const QString &text, int timeout)
{
    UserPrompt &port = prompt();
    port.restoreActiveWindow();
    for (const QString &part : lib_SplitLongMessage(text))
        g_answer = port.showMessage(lib_PackMessageRequest(style, timeout, part), g_answer);
}

void lib_MsgError(const QString &text, int timeout)
{
    prompt().beep();
    lib_ShowMessage(QStringLiteral("1"), text, timeout);
}

void lib_MsgWarning(const QString &text, int timeout)
{
    prompt().beep();
    lib_ShowMessage(QStringLiteral("2"), text, timeout);
}

void lib_MsgInfo(const QString &text, int timeout)
{
    lib_ShowMessage(QStringLiteral("3"), text, timeout);
}

bool lib_MsgYesNo(const QString &text, int timeout, bool defaultYes)
{
    g_answer = defaultYes;
    lib_ShowMessage(defaultYes ? QStringLiteral("4") : QStringLiteral("5"), text, timeout);
    return g_answer;
}

bool lib_MsgAnswer()
{
    return g_answer;
}

} // namespace quillet

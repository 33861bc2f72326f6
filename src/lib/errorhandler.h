#pragma once

#include "error.h"

#include <QString>
#include <QStringList>
#include <QTime>

namespace quillet {

// Builds the one report text of a failure: the time of day, " An error has occurred in ", the
// procedure, two line breaks, the code part by kind, the description and the extra information.
QString lib_BuildErrorReport(const QString &procName, qint32 errNumber, const QString &errDescription,
                             const QString &extraInfo, const QTime &timeOfDay);

// "Sql", "App" or "Sys" for an error number (0 counts as "Sys" but shows no code part).
QString lib_ErrorKind(qint32 errNumber);

// Reports a failure; when showMessage is true the report is shown, as a warning for "App" errors
// whose relative code is above 1000 and as an error otherwise. Never throws.
void lib_ErrorHandler(const QString &procName, qint32 errNumber, const QString &errDescription,
                      bool showMessage = true, const QString &extraInfo = QString(), int timeout = 0);
// The same for a caught Error: its number and description.
void lib_ErrorHandler(const QString &procName, const Error &error, bool showMessage = true,
                      const QString &extraInfo = QString(), int timeout = 0);

// The four message requests. Error and warning sound the beep first.
void lib_MsgError(const QString &text, int timeout = 0);
void lib_MsgWarning(const QString &text, int timeout = 0);
void lib_MsgInfo(const QString &text, int timeout = 0);
// Returns true for Yes; when the countdown closes the box, the default stands.
bool lib_MsgYesNo(const QString &text, int timeout = 0, bool defaultYes = true);

// The request string for the message box: style character, countdown in a 4-character field,
// text.
QString lib_PackMessageRequest(const QString &style, int timeout, const QString &text);
// Splits a text of 1250 characters or more into the two boxes that show it; a shorter text is
// returned whole as the only part.
QStringList lib_SplitLongMessage(const QString &text);
// The common front door: packs and shows the message once, or twice for a long text.
void lib_ShowMessage(const QString &style, const QString &text, int timeout);

// The application-wide answer of the last Yes/No box.
bool lib_MsgAnswer();

} // namespace quillet

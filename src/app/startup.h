#pragma once

#include <QRect>
#include <QString>

namespace quillet {

// The parts of start-up and shutdown that are rules rather than windows.
namespace Startup {

// Window rectangles are stored as their four edges "bottom;left;right;top". An empty, short or
// non-numeric text gives an invalid rectangle.
QString FormatFormRect(const QRect &rect);
QRect ParseFormRect(const QString &text);

// The title line: the application title, and " ('Portable' copy)" on a portable copy.
QString TitleLine(bool portable);
// The version line: "v" and the version number.
QString VersionLine();

// True when this is the first start on this account: the data folder does not exist yet.
bool IsFreshInstallation();
// Makes the data folder (a fresh installation's database is provisioned by the family database).
bool MakeDataFolder();
// Deletes the previous session's debug log, so each session starts a fresh one.
void DeleteDebugLog();

// The main window rectangle to store at shutdown, or an empty text when it must stay as it was
// (a minimised window reports edges off the screen).
QString RectToStore(const QRect &frame, bool minimised);

} // namespace Startup
} // namespace quillet

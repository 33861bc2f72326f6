#pragma once

#include <QString>

class QWidget;

namespace quillet {

// The application's main window: the top-level widget named "frmMain" (a shown one first), else
// the active window; nullptr before any window exists.
QWidget *applicationWindow();
// The window a dialog should sit over: an open modal dialog, else the active window, else the
// main window.
QWidget *dialogParent();
// The title the application's own boxes carry: the main window's title, else the application's
// name; at most 200 characters.
QString applicationWindowTitle();

} // namespace quillet

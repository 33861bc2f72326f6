#pragma once

#include <QWidget>

class QLabel;
class QPushButton;

namespace quillet {

class Workspace;
class WorkspaceController;

// The maintenance window for support staff: reset the stored window positions, the debug list of
// the source scan, the source-file table to the clipboard, and modified dates set from EXIF dates.
// The tools themselves live in MaintenanceTools; this window asks, runs and shows the result.
class frmDebug : public QWidget
{
    Q_OBJECT
public:
    frmDebug(Workspace &workspace, WorkspaceController &controller, QWidget *mainWindow);

    // Places the window beside the main window (to its right when the screen has room, else to
    // its left), so that both can be seen.
    void placeBeside(const QWidget *mainWindow);

Q_SIGNALS:
    // The stored window positions were cleared: the program must end now, without storing them
    // again.
    void endRequested();

private:
    void resetForms();
    void srcFilesDebug();
    void srcFilesToClipboard();
    void syncDatesMfromE();
    void setStatus(const QString &text);

    Workspace &m_ws;
    WorkspaceController &m_controller;
    QLabel *m_lblMsg = nullptr;
};

} // namespace quillet

#pragma once

#include "mainmenus.h"
#include "app/familydatabase.h"
#include "workspace/workspace.h"

#include <memory>
#include "mainwindowlayout.h"

#include <QMainWindow>
#include <functional>

namespace quillet {

// The main window owns the session: StartUp runs when it loads, ShutDown when it closes (through
// the close button, File > Exit, the Exit button or SIGTERM/SIGINT alike).
class frmMain : public QMainWindow
{
    Q_OBJECT
public:
    explicit frmMain(QWidget *parent = nullptr);
    ~frmMain() override;

    // Runs the start-up sequence. False when a fatal error means the program must end.
    bool StartUp();
    // Stores the window rectangle and releases the session. Runs once; later calls do nothing.
    void ShutDown();
    // Validates the settings and loads the lists. False when the settings are not valid: the
    // settings dialog is then open for the user to fix them.
    bool InitData();
    // Checks the settings through the settings dialog's rules; on failure shows the dialog.
    bool ValidateSettings();
    // Settings > Options: the settings dialog, and what follows a change.
    void openSettings();
    // Settings > Families: the family editor; the family list follows every change it makes.
    void openFamilies();
    // The initial availability of the commands.
    void InitButtons();

    const MainWindowLayout &controls() const { return m_ui; }
    const MainMenus &menus() const { return m_menus; }
    FamilyDatabase &database() { return m_db; }
    Workspace &workspace() { return *m_ws; }
    class WorkspaceController &controller() { return *m_controller; }
    class AllocationCommands &allocation() { return *m_allocation; }
    // The settings dialog while it is open, else nullptr.
    class frmSettings *settingsDialog() const { return m_settings; }

    // Shows a text in the status line at once.
    void setStatus(const QString &text);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    // Runs one start-up step; an unexpected error is reported under the step's label and start-up
    // goes on.
    void runStep(const QString &label, const std::function<void()> &step);
    void restoreWindowRect();
    void wireCommands();
    void onExitClicked();
    void showAbout();

    void afterSettingsSaved();

    FamilyDatabase m_db;
    std::unique_ptr<Workspace> m_ws;
    class WorkspaceController *m_controller = nullptr;
    class AllocationCommands *m_allocation = nullptr;
    class frmSettings *m_settings = nullptr;
    MainWindowLayout m_ui;
    MainMenus m_menus;
    QSize m_picOriginalSize;
    bool m_shutDown = false;
    bool m_fatal = false;
};

} // namespace quillet

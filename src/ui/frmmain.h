#pragma once

#include "mainmenus.h"
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
    // Validates the settings and loads the lists.
    void InitData();
    // The initial availability of the commands.
    void InitButtons();

    const MainWindowLayout &controls() const { return m_ui; }
    const MainMenus &menus() const { return m_menus; }

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

    MainWindowLayout m_ui;
    MainMenus m_menus;
    QSize m_picOriginalSize;
    bool m_shutDown = false;
};

} // namespace quillet

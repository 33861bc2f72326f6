#pragma once

class QAction;
class QMainWindow;

namespace quillet {

// The main window's menu bar. Each entry is a QAction with an object name of its own ("mnu...");
// the Action entries follow their buttons' availability, which frmMain keeps in step.
struct MainMenus
{
    QAction *mnuExit = nullptr;

    QAction *mnuSave = nullptr;
    QAction *mnuRepeatnSave = nullptr;
    QAction *mnuRepeatSelect = nullptr;
    QAction *mnuRotateLeft = nullptr;
    QAction *mnuRotateRight = nullptr;
    QAction *mnuUndo = nullptr;
    QAction *mnuMoveToTemp = nullptr;
    QAction *mnuDelete = nullptr;
    QAction *mnuRefresh = nullptr;
    QAction *mnuFamsBothDays = nullptr;

    QAction *mnuExportUnalloc = nullptr;
    QAction *mnuImportUnalloc = nullptr;
    QAction *mnuExportBatchfiles = nullptr;
    QAction *mnuImportBatchfiles = nullptr;
    QAction *mnuImportFromPortableCopy = nullptr;
    QAction *mnuPrepWebUpload = nullptr;
    QAction *mnuPrepCopyToCD = nullptr;

    QAction *mnuFamilies = nullptr;
    QAction *mnuOptions = nullptr;

    QAction *mnuHelp = nullptr;
    QAction *mnuCheckUpdates = nullptr;
    QAction *mnuAbout = nullptr;

    void build(QMainWindow *window);
};

} // namespace quillet

#pragma once

#include "workspace/photooperations.h"

#include <QObject>
#include <memory>

class QWidget;

namespace quillet {

class AllocationSave;
class Workspace;
class WorkspaceController;
struct MainMenus;
struct MainWindowLayout;

// Binds Save, Repeat select, Repeat and save, Undo and the five review buttons (with their menu
// entries) to the workspace's save and undo store, and shows the undo label. The rules live in
// AllocationSave and clsUndos; this class only wires and shows.
class AllocationCommands : public QObject
{
    Q_OBJECT
public:
    AllocationCommands(Workspace &workspace, MainWindowLayout &ui, MainMenus &menus, WorkspaceController &controller,
                       QWidget *window);

    AllocationSave &save() { return *m_save; }
    // Binds the label and the display requests of the current undo store (after it was replaced).
    void bindUndos();

private:
    void onUndo();
    void review(bool next, bool toEnd);
    void stopReview();
    void ReselectSrcFile();
    void showUndoLevels(const QString &text, bool reviewing, bool undoEnabled);
    void afterSave();
    void displayAndScroll();
    void rotate(bool clockwise);
    void removePhotos(bool putAside);
    void clearPhotoDisplay();

    Workspace &m_ws;
    MainWindowLayout &m_ui;
    MainMenus &m_menus;
    WorkspaceController &m_controller;
    AllocationSave *m_save = nullptr;
    std::unique_ptr<PhotoOperations> m_operations;
    int m_rememberedRow = 0;
};

} // namespace quillet

#pragma once

#include "frmlargepic.h"
#include "workspace/workspace.h"

#include <QObject>
#include <QPersistentModelIndex>
#include <QPointer>

namespace quillet {

struct MainMenus;
struct MainWindowLayout;
class SelectionMirror;

// Binds the main window's controls to the workspace: the two lists show its models, the check
// boxes change its options, clicks run its rules, and the picture, labels and indicator boxes show
// what it says. Layout stays in MainWindowLayout; rules stay in Workspace.
class WorkspaceController : public QObject
{
    Q_OBJECT
public:
    WorkspaceController(Workspace &workspace, MainWindowLayout &ui, MainMenus &menus, QWidget *window);

    // Sets the option boxes from the workspace's options (without reloading anything).
    void showOptions();
    // Rebuilds the photo list (covered by "Loading..." while it runs). False when the program
    // must end (the thumbnail placeholder is missing).
    bool LoadSource();
    // What the status line keeps saying after the last load: that it was stopped part-way, else "".
    const QString &loadNote() const { return m_loadNote; }
    // Shows the selected photo, its name and date; sets the photo commands.
    void DisplaySrcFile(bool ignoreReviewingUndo = false);
    // Enables Save and its menu entry when the selections allow it.
    void updateSaveState();
    // The photo commands after a display or a change of selection.
    void updatePhotoCommands();
    void setSaveMade(bool made) { m_saveMade = made; }
    void closeLargePicture(bool shuttingDown);
    // Opens the large picture window (at start when it was open last time).
    void largePictureOpen() { openLargePicture(); }
    frmLargePic *largePicture() const { return m_largePic; }

Q_SIGNALS:
    // The placeholder picture is missing: the program cannot go on.
    void fatal();
    // The user ticked or cleared a family (mouse or keys).
    void familiesChosen();

private:
    void configureSourceView();
    void onSourceClicked(const QModelIndex &index);
    void onSourceSelectionChanged();
    void onSourceOptionToggled(const char *key, bool reloadKeepsSelection);
    void onFamilyOptionToggled(const char *key);
    void onFamilyClicked();
    void showFamiliesBothDays();
    void showIndicators();
    void openLargePicture();
    QString fitName(const QString &text) const;

    Workspace &m_ws;
    MainWindowLayout &m_ui;
    MainMenus &m_menus;
    QWidget *m_window;
    SelectionMirror *m_sourceMirror = nullptr;
    class ThumbnailDelegate *m_thumbnailDelegate = nullptr;
    class QStyledItemDelegate *m_textDelegate = nullptr;
    SelectionMirror *m_familyMirror = nullptr;
    QPointer<frmLargePic> m_largePic;
    QPersistentModelIndex m_shownBySelection; // shown when the selection changed, before its click
    bool m_saveMade = false;
    bool m_loading = false;
    QString m_loadNote;
};

} // namespace quillet

#pragma once

#include <QObject>

class QAbstractButton;
class QAction;
class QKeySequence;
class QListView;
class QMainWindow;

namespace quillet {

struct MainMenus;
struct MainWindowLayout;
class WorkspaceController;

// The keys of the main window's commands, so that a photo can be allocated without the mouse:
// move to the photo (arrows, Home/End, Page keys), F6 to the families, type a name, Space to tick
// it, Ctrl+S to save. Each key is shown in its menu entry and in its button's tooltip.
//
//   Save Ctrl+S, Repeat and save Ctrl+Shift+S, Repeat selection Ctrl+T, Undo Ctrl+Z,
//   Delete the Delete key, Put aside Ctrl+M, Rotate left Ctrl+L, Rotate right Ctrl+R,
//   review first/previous/next/last Alt+Home/Alt+Left/Alt+Right/Alt+End, stop reviewing Escape,
//   F6 / Shift+F6 between the photo list and the family list.
//
// In the photo list Space selects (and shows) the current photo and Return opens the large
// picture; in the family list Space ticks only the current entry (or, while a name is being typed,
// is part of the name) and Return saves when Save is available, as a double click does.
class KeyboardCommands : public QObject
{
    Q_OBJECT
public:
    KeyboardCommands(MainWindowLayout &ui, MainMenus &menus, WorkspaceController &controller, QMainWindow *window);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void assignMenuKeys();
    void addButtonKey(QAbstractButton *button, const QKeySequence &key);
    void switchLists();
    bool photoListKey(class QKeyEvent *key);
    bool familyListKey(class QKeyEvent *key);

    MainWindowLayout &m_ui;
    MainMenus &m_menus;
    WorkspaceController &m_controller;
    QMainWindow *m_window;
    qint64 m_lastTyped = -1; // when a letter was last typed into the family list (type-ahead)
};

// "tooltip (key)": the key in the system's own notation.
QString withKey(const QString &tip, const QKeySequence &key);

} // namespace quillet

#include "keyboardcommands.h"

#include "mainmenus.h"
#include "mainwindowlayout.h"
#include "workspacecontroller.h"

#include <QAction>
#include <QApplication>
#include <QDateTime>
#include <QKeyEvent>
#include <QListView>
#include <QMainWindow>
#include <QPushButton>

namespace quillet {

namespace {

qint64 now()
{
    return QDateTime::currentMSecsSinceEpoch();
}

bool plain(const QKeyEvent *key)
{
    return (key->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
}

} // namespace

QString withKey(const QString &tip, const QKeySequence &key)
{
    return tip + QStringLiteral(" (") + key.toString(QKeySequence::NativeText) + QLatin1Char(')');
}

KeyboardCommands::KeyboardCommands(MainWindowLayout &ui, MainMenus &menus, WorkspaceController &controller,
                                   QMainWindow *window)
    : QObject(window)
    , m_ui(ui)
    , m_menus(menus)
    , m_controller(controller)
    , m_window(window)
{
    assignMenuKeys();
    addButtonKey(m_ui.cmdReviewUndoLA, QKeySequence(Qt::ALT | Qt::Key_Home));
    addButtonKey(m_ui.cmdReviewUndoL1, QKeySequence(Qt::ALT | Qt::Key_Left));
    addButtonKey(m_ui.cmdReviewUndoR1, QKeySequence(Qt::ALT | Qt::Key_Right));
    addButtonKey(m_ui.cmdReviewUndoRA, QKeySequence(Qt::ALT | Qt::Key_End));
    addButtonKey(m_ui.cmdReviewUndoNew, QKeySequence(Qt::Key_Escape));

    auto *lists = new QAction(window);
    lists->setObjectName(QStringLiteral("actSwitchLists"));
    lists->setShortcuts({QKeySequence(Qt::Key_F6), QKeySequence(Qt::SHIFT | Qt::Key_F6)});
    window->addAction(lists);
    connect(lists, &QAction::triggered, this, &KeyboardCommands::switchLists);

    m_ui.lvwSrcFiles->installEventFilter(this);
    m_ui.lstFamilies->installEventFilter(this);
    m_ui.lvwSrcFiles->setToolTip(QStringLiteral("Photos to allocate: arrows move, Space shows, Return opens the large "
                                                "picture; F6 goes to the families"));
    m_ui.lstFamilies->setToolTip(QStringLiteral("Type a name to find a family, Space ticks it, Ctrl+S saves; F6 goes "
                                                "to the photos"));
}

void KeyboardCommands::assignMenuKeys()
{
    const struct
    {
        QAction *action;
        QAbstractButton *button;
        QKeySequence key;
    } keys[] = {
        {m_menus.mnuSave, m_ui.cmdSave, QKeySequence::Save},
        {m_menus.mnuRepeatnSave, m_ui.cmdRepeatnSave, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S)},
        {m_menus.mnuRepeatSelect, m_ui.cmdRepeatSelect, QKeySequence(Qt::CTRL | Qt::Key_T)},
        {m_menus.mnuUndo, m_ui.cmdUndo, QKeySequence::Undo},
        {m_menus.mnuDelete, m_ui.cmdDelete, QKeySequence(Qt::Key_Delete)},
        {m_menus.mnuMoveToTemp, m_ui.cmdMoveToTemp, QKeySequence(Qt::CTRL | Qt::Key_M)},
        {m_menus.mnuRotateLeft, m_ui.cmdRotateLeft, QKeySequence(Qt::CTRL | Qt::Key_L)},
        {m_menus.mnuRotateRight, m_ui.cmdRotateRight, QKeySequence(Qt::CTRL | Qt::Key_R)},
    };
    for (const auto &k : keys) {
        // The menu entry carries the key (and shows it); a disabled entry ignores it, as its
        // button would.
        k.action->setShortcut(k.key);
        k.action->setShortcutContext(Qt::WindowShortcut);
        k.button->setToolTip(withKey(k.button->toolTip(), k.key));
    }
}

void KeyboardCommands::addButtonKey(QAbstractButton *button, const QKeySequence &key)
{
    auto *action = new QAction(m_window);
    action->setObjectName(QStringLiteral("act") + button->objectName());
    action->setShortcut(key);
    m_window->addAction(action);
    connect(action, &QAction::triggered, button, [button] {
        if (button->isEnabled())
            button->click();
    });
    button->setToolTip(withKey(button->toolTip(), key));
}

void KeyboardCommands::switchLists()
{
    QListView *to = m_ui.lvwSrcFiles->hasFocus() ? m_ui.lstFamilies : m_ui.lvwSrcFiles;
    to->setFocus(Qt::ShortcutFocusReason);
}

bool KeyboardCommands::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return false;
    auto *key = static_cast<QKeyEvent *>(event);
    if (watched == m_ui.lvwSrcFiles)
        return photoListKey(key);
    if (watched == m_ui.lstFamilies)
        return familyListKey(key);
    return false;
}

bool KeyboardCommands::photoListKey(QKeyEvent *key)
{
    QListView *view = m_ui.lvwSrcFiles;
    QItemSelectionModel *selection = view->selectionModel();
    const bool space = key->key() == Qt::Key_Space;
    const bool enter = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
    QModelIndex current = view->currentIndex();
    if (!current.isValid() && (space || enter) && view->model()->rowCount() > 0) {
        current = view->model()->index(0, 0); // no entry current yet: the first photo
        selection->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
    }
    if (!plain(key) || !current.isValid())
        return false;
    if (!space && !enter) {
        // The list puts its current entry on the first photo when it gets the focus, without
        // selecting it: the first key then shows that photo rather than step past it unseen.
        static const Qt::Key moves[] = {Qt::Key_Up, Qt::Key_Down, Qt::Key_Left, Qt::Key_Right, Qt::Key_PageUp,
                                        Qt::Key_PageDown, Qt::Key_Home, Qt::Key_End};
        if (!selection->selectedIndexes().isEmpty() || std::find(std::begin(moves), std::end(moves), key->key()) == std::end(moves))
            return false;
        const int last = view->model()->rowCount() - 1;
        if ((key->key() == Qt::Key_Home && current.row() != 0) || (key->key() == Qt::Key_End && current.row() != last))
            return false;
    }
    // The current photo alone becomes the selection, which shows it (as a click would).
    if (!selection->isSelected(current) || selection->selectedIndexes().size() != 1)
        selection->select(current, QItemSelectionModel::ClearAndSelect);
    if (enter)
        m_controller.largePictureOpen();
    view->scrollTo(current);
    return true;
}

bool KeyboardCommands::familyListKey(QKeyEvent *key)
{
    QListView *view = m_ui.lstFamilies;
    const bool typing = m_lastTyped >= 0 && now() - m_lastTyped < QApplication::keyboardInputInterval();
    const QString text = key->text();
    const bool printable = !text.isEmpty() && text.at(0).isPrint()
        && !(key->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    if (key->key() == Qt::Key_Space && plain(key) && !typing) {
        // Only the current entry changes, the privacy marker included only when it is current.
        if (view->currentIndex().isValid())
            view->selectionModel()->select(view->currentIndex(), QItemSelectionModel::Toggle);
        return true;
    }
    if (printable) {
        // Typing a name ("Anna Smith", blank included) moves to it and ticks nothing: the list's
        // own search would select what it finds in a multi-selection list, so its selection is
        // put back as it was.
        QItemSelectionModel *selection = view->selectionModel();
        const QItemSelection before = selection->selection();
        view->keyboardSearch(text);
        if (selection->selection() != before)
            selection->select(before, QItemSelectionModel::ClearAndSelect);
        m_lastTyped = now();
        return true;
    }
    m_lastTyped = -1;
    if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) && plain(key)) {
        if (m_ui.cmdSave->isEnabled())
            m_ui.cmdSave->click();
        return true;
    }
    return false;
}

} // namespace quillet

#pragma once

#include "workspace/commandrules.h"

#include <QHash>
#include <QPointer>
#include <QString>

class QAction;
class QPushButton;
class QWidget;

namespace quillet {

// Applies the command rules to the main window's buttons and menu entries, found by their object
// names. The settings the External entries depend on are read by InitButtons (at start, on Refresh
// and after the settings dialog saved) and kept until the next InitButtons.
class CommandStates
{
public:
    explicit CommandStates(QWidget *window);

    // The availability at start and on Refresh: photo commands and both repeat commands off, the
    // setting-dependent entries by their settings.
    void InitButtons();
    // The availability after a photo was displayed or a selection changed.
    void apply(bool photoSelected, bool saveMade, bool saveAllowed);
    // Only Save and its menu entry, after a change of the family selection.
    void applySave(bool saveAllowed);

private:
    struct Controls
    {
        const CommandRules::Command *command = nullptr;
        QPointer<QPushButton> button;
        QPointer<QAction> menu;
    };
    void applyFacts(const CommandRules::Facts &facts, bool saveOnly);
    void setEnabled(const Controls &controls, bool enabled);

    QWidget *m_window;
    QList<Controls> m_controls;
    QHash<QString, QString> m_settings;
};

} // namespace quillet

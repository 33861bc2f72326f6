#include "commandstates.h"

#include "app/settingsstore.h"

#include <QAction>
#include <QPushButton>
#include <QWidget>

namespace quillet {

CommandStates::CommandStates(QWidget *window)
    : m_window(window)
{
    for (const CommandRules::Command &c : CommandRules::Table()) {
        Controls controls;
        controls.command = &c;
        if (!c.button.isEmpty())
            controls.button = window->findChild<QPushButton *>(c.button);
        if (!c.menu.isEmpty())
            controls.menu = window->findChild<QAction *>(c.menu);
        m_controls << controls;
    }
}

void CommandStates::InitButtons()
{
    m_settings.clear();
    for (const CommandRules::Command &c : CommandRules::Table()) {
        if (c.rule == CommandRules::Rule::SettingSet && !m_settings.contains(c.setting))
            m_settings.insert(c.setting, ReadSetting(c.setting));
    }
    applyFacts(CommandRules::InitialFacts([this](const QString &key) { return m_settings.value(key); }), false);
}

void CommandStates::apply(bool photoSelected, bool saveMade, bool saveAllowed)
{
    CommandRules::Facts facts;
    facts.photoSelected = photoSelected;
    facts.saveMade = saveMade;
    facts.saveAllowed = saveAllowed;
    facts.setting = [this](const QString &key) { return m_settings.value(key); };
    applyFacts(facts, false);
}

void CommandStates::applySave(bool saveAllowed)
{
    CommandRules::Facts facts;
    facts.saveAllowed = saveAllowed;
    applyFacts(facts, true);
}

void CommandStates::applyFacts(const CommandRules::Facts &facts, bool saveOnly)
{
    for (const Controls &controls : std::as_const(m_controls)) {
        if (saveOnly && controls.command->rule != CommandRules::Rule::SaveAllowed)
            continue;
        setEnabled(controls, CommandRules::IsAvailable(*controls.command, facts));
    }
}

void CommandStates::setEnabled(const Controls &controls, bool enabled)
{
    if (QPushButton *b = controls.button) {
        // A disabled button cannot keep the focus: it moves to Exit first, so the keyboard still
        // reaches the window.
        if (!enabled && b->hasFocus()) {
            if (auto *exit = m_window->findChild<QPushButton *>(QStringLiteral("cmdExit")))
                exit->setFocus();
        }
        b->setEnabled(enabled);
    }
    if (QAction *a = controls.menu)
        a->setEnabled(enabled);
}

} // namespace quillet

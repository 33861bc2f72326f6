#pragma once

#include <QList>
#include <QString>
#include <functional>

namespace quillet {

// When the main window's commands are available: one rule per command, written once. The window
// applies the table at start and on Refresh (InitButtons) and again whenever a photo is displayed
// or a selection changes. The undo and review controls are not here: they follow the undo store's
// label (SetUndoLevelsCntLbl), which knows the levels.
namespace CommandRules {

enum class Rule {
    Always,                   // Exit, Refresh, Options, Help, About, Select All, Clear All
    PhotoSelected,            // at least one photo selected (and displayed)
    SaveMade,                 // a Save has been made in this session
    SaveMadeAndPhotoSelected, // both
    SaveAllowed,              // a real family selected and no allocated photo selected
    SettingSet,               // the named setting is not empty
};

// Whether the work behind a command is part of this build. A command whose work is not built
// stays disabled whatever its rule says, rather than offering something that does nothing.
enum class Work { Built, NotBuilt };

struct Command
{
    QString button;  // the button's object name, or empty
    QString menu;    // the menu entry's object name, or empty
    Rule rule = Rule::Always;
    QString setting; // for Rule::SettingSet
    Work work = Work::Built;
};

// What the rules look at.
struct Facts
{
    bool photoSelected = false;
    bool saveMade = false;
    bool saveAllowed = false;
    // Reads a setting; only consulted for Rule::SettingSet.
    std::function<QString(const QString &key)> setting;
};

// Every command of the main window with its rule.
const QList<Command> &Table();
// The command whose button or menu entry has that object name, or nullptr.
const Command *Find(const QString &objectName);
// Whether a command is available under these facts.
bool IsAvailable(const Command &command, const Facts &facts);
// The facts right after start and Refresh: no photo displayed yet, so no photo command and
// neither repeat command is available.
Facts InitialFacts(std::function<QString(const QString &key)> setting);

} // namespace CommandRules
} // namespace quillet

#include "commandrules.h"

namespace quillet::CommandRules {

namespace {

Command command(const char *button, const char *menu, Rule rule, const char *setting = nullptr,
                Work work = Work::Built)
{
    return Command{QLatin1String(button), QLatin1String(menu), rule, QLatin1String(setting), work};
}

} // namespace

const QList<Command> &Table()
{
    // The "work" column says which commands this build can run. Each External entry comes with its
    // own piece of work; until that is part of the program the entry stays disabled even when its
    // setting is filled in.
    static const QList<Command> table = {
        command("cmdSave", "mnuSave", Rule::SaveAllowed),
        command("cmdRepeatSelect", "mnuRepeatSelect", Rule::SaveMade),
        command("cmdRepeatnSave", "mnuRepeatnSave", Rule::SaveMadeAndPhotoSelected),
        command("cmdRotateLeft", "mnuRotateLeft", Rule::PhotoSelected),
        command("cmdRotateRight", "mnuRotateRight", Rule::PhotoSelected),
        command("cmdDelete", "mnuDelete", Rule::PhotoSelected),
        command("cmdMoveToTemp", "mnuMoveToTemp", Rule::PhotoSelected),
        command("", "mnuFamsBothDays", Rule::PhotoSelected),
        command("cmdSelectAll", "", Rule::Always),
        command("cmdClearAll", "", Rule::Always),
        command("cmdExit", "mnuExit", Rule::Always),
        command("", "mnuRefresh", Rule::Always),
        command("", "mnuExportUnalloc", Rule::SettingSet, "BatchXfrDir"),
        command("", "mnuImportUnalloc", Rule::SettingSet, "BatchXfrDir"),
        command("", "mnuExportBatchfiles", Rule::SettingSet, "BatchXfrDir"),
        command("", "mnuImportBatchfiles", Rule::SettingSet, "BatchXfrDir"),
        command("", "mnuImportFromPortableCopy", Rule::SettingSet, "PortableCopyXfrDir"),
        command("", "mnuPrepWebUpload", Rule::SettingSet, "WebTgtDir"),
        command("", "mnuPrepCopyToCD", Rule::SettingSet, "CdTgtDir"),
        command("", "mnuFamilies", Rule::Always),
        command("", "mnuOptions", Rule::Always),
        command("", "mnuHelp", Rule::Always),
        command("", "mnuCheckUpdates", Rule::Always),
        command("", "mnuAbout", Rule::Always),
    };
    return table;
}

const Command *Find(const QString &objectName)
{
    for (const Command &c : Table()) {
        if (objectName == c.button || objectName == c.menu)
            return &c;
    }
    return nullptr;
}

bool IsAvailable(const Command &command, const Facts &facts)
{
    if (command.work == Work::NotBuilt)
        return false;
    switch (command.rule) {
    case Rule::Always:
        return true;
    case Rule::PhotoSelected:
        return facts.photoSelected;
    case Rule::SaveMade:
        return facts.saveMade;
    case Rule::SaveMadeAndPhotoSelected:
        return facts.saveMade && facts.photoSelected;
    case Rule::SaveAllowed:
        return facts.saveAllowed;
    case Rule::SettingSet:
        return facts.setting && !facts.setting(command.setting).isEmpty();
    }
    return false;
}

Facts InitialFacts(std::function<QString(const QString &key)> setting)
{
    Facts facts;
    facts.setting = std::move(setting);
    return facts;
}

} // namespace quillet::CommandRules

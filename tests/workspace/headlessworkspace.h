#pragma once

// What the Save, transfer and crash tests (and the crash tests' helper programs) share: settings
// written in one go, and a workspace without windows on the family database.
#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "workspace/workspace.h"

#include <QList>
#include <QPair>
#include <memory>

namespace quillet::test {

inline void writeSettings(const QList<QPair<QString, QString>> &settings)
{
    for (const auto &[key, value] : settings)
        WriteSetting(key, value);
}

// The workspace as the main window makes it, less the thumbnails and the day filter of the
// family list: session settings read, undo table ready.
inline std::unique_ptr<Workspace> headlessWorkspace(FamilyDatabase &db)
{
    auto ws = std::make_unique<Workspace>(db, PhotoServices::Default());
    ws->ReadSessionSettings();
    ws->options().thumbnails = false;
    ws->options().filterByDay = false;
    ws->CreateUndos();
    return ws;
}

} // namespace quillet::test

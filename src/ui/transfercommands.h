#pragma once

#include <QObject>
#include <functional>

namespace quillet {

class FamilyDatabase;
class Workspace;
struct MainMenus;

// Binds External > Export unallocated files, Import unallocated files and Import From Portable
// Copy to the transfers of src/sync. Each handler catches at its boundary and shows the summary in
// the status line; the rules live in UnallocatedTransfer and PortableCopyImport.
class TransferCommands : public QObject
{
    Q_OBJECT
public:
    // `refresh` is the main window's Refresh; `status` shows a text in its status line.
    TransferCommands(FamilyDatabase &db, Workspace &workspace, MainMenus &menus, std::function<void()> refresh,
                     std::function<void(const QString &)> status, QObject *parent);

    void mnuExportUnalloc();
    void mnuImportUnalloc();
    void mnuImportFromPortableCopy();

private:
    void run(const QString &procName, const std::function<QString()> &command);

    FamilyDatabase &m_db;
    Workspace &m_ws;
    std::function<void()> m_refresh;
    std::function<void(const QString &)> m_status;
};

} // namespace quillet

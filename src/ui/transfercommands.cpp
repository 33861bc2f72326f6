#include "transfercommands.h"

#include "mainmenus.h"

#include "lib/error.h"
#include "lib/errorhandler.h"
#include "sync/portablecopyimport.h"
#include "sync/unallocatedtransfer.h"

#include <QAction>

namespace quillet {

TransferCommands::TransferCommands(FamilyDatabase &db, Workspace &workspace, MainMenus &menus,
                                   std::function<void()> refresh, std::function<void(const QString &)> status,
                                   QObject *parent)
    : QObject(parent)
    , m_db(db)
    , m_ws(workspace)
    , m_refresh(std::move(refresh))
    , m_status(std::move(status))
{
    connect(menus.mnuExportUnalloc, &QAction::triggered, this, &TransferCommands::mnuExportUnalloc);
    connect(menus.mnuImportUnalloc, &QAction::triggered, this, &TransferCommands::mnuImportUnalloc);
    connect(menus.mnuImportFromPortableCopy, &QAction::triggered, this, &TransferCommands::mnuImportFromPortableCopy);
}

void TransferCommands::run(const QString &procName, const std::function<QString()> &command)
{
    try {
        const QString summary = command();
        // The status line keeps one line (a second one would push the lists up): the summary's
        // line break becomes "; " there; the message box shows it as written.
        if (!summary.isEmpty() && m_status)
            m_status(QString(summary).replace(QStringLiteral("\r\n"), QStringLiteral("; ")));
    } catch (const Error &e) {
        lib_ErrorHandler(procName, e);
    } catch (const std::exception &e) {
        lib_ErrorHandler(procName, 0, QString::fromLocal8Bit(e.what()));
    }
}

void TransferCommands::mnuExportUnalloc()
{
    run(QStringLiteral("mnuExportUnalloc_Click()"), [this] {
        UnallocatedTransfer transfer(m_db, m_refresh);
        return transfer.ExportUnalloc(UnallocatedTransfer::UnallocatedPhotos(m_ws));
    });
}

void TransferCommands::mnuImportUnalloc()
{
    run(QStringLiteral("mnuImportUnalloc_Click()"), [this] {
        UnallocatedTransfer transfer(m_db, m_refresh);
        return transfer.ImportUnalloc();
    });
}

void TransferCommands::mnuImportFromPortableCopy()
{
    run(QStringLiteral("mnuImportFromPortableCopy_Click()"), [this] {
        PortableCopyImport import(m_refresh, &m_db);
        return import.ImportFromPortableCopy();
    });
}

} // namespace quillet

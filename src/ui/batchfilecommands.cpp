#include "batchfilecommands.h"

#include "frmmain.h"
#include "sync/batchfiletransfer.h"
#include "sync/databasetransfer.h"
#include "lib/error.h"
#include "lib/errorhandler.h"

#include <QAction>

namespace quillet {

namespace {

template<typename F>
void guarded(const char *procName, F &&command)
{
    try {
        command();
    } catch (const Error &e) {
        lib_ErrorHandler(QLatin1String(procName), e);
    } catch (const std::exception &e) {
        lib_ErrorHandler(QLatin1String(procName), 0, QString::fromLocal8Bit(e.what()));
    }
}

} // namespace

BatchfileCommands::BatchfileCommands(frmMain &window)
    : QObject(&window)
    , m_window(window)
{
    connect(window.menus().mnuExportBatchfiles, &QAction::triggered, this, &BatchfileCommands::mnuExportBatchfiles);
    connect(window.menus().mnuImportBatchfiles, &QAction::triggered, this, &BatchfileCommands::mnuImportBatchfiles);
}

void BatchfileCommands::mnuExportBatchfiles()
{
    guarded("mnuExportBatchfiles_Click()", [this] {
        BatchfileTransfer transfer;
        transfer.status = [this](const QString &text) { m_window.setStatus(text); };
        transfer.exportDatabase = [this] { return ExportFamilyDatabase(m_window.database()); };
        transfer.ExportBatchfiles();
    });
}

void BatchfileCommands::mnuImportBatchfiles()
{
    guarded("mnuImportBatchfiles_Click()", [this] {
        BatchfileTransfer transfer;
        transfer.status = [this](const QString &text) { m_window.setStatus(text); };
        transfer.refresh = [this] { m_window.Refresh(); };
        transfer.importDatabase = [this] { return ImportFamilyDatabase(m_window.database()); };
        transfer.ImportBatchfiles();
    });
}

} // namespace quillet

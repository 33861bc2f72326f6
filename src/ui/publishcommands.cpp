#include "publishcommands.h"

#include "mainmenus.h"

#include "lib/error.h"
#include "lib/errorhandler.h"
#include "publish/publishrun.h"

#include <QAction>

namespace quillet {

PublishCommands::PublishCommands(FamilyDatabase &db, const MainMenus &menus,
                                 std::function<void(const QString &)> status, QObject *parent)
    : QObject(parent)
    , m_db(db)
    , m_status(std::move(status))
{
    connect(menus.mnuPrepWebUpload, &QAction::triggered, this, [this] { prepare(PublishNames::web()); });
    connect(menus.mnuPrepCopyToCD, &QAction::triggered, this, [this] { prepare(PublishNames::cd()); });
}

void PublishCommands::prepare(const PublishNames &names)
{
    try {
        PublishRun(names, m_db, m_status).run();
    } catch (const Error &e) {
        lib_ErrorHandler(names.command, e);
    } catch (const std::exception &e) {
        lib_ErrorHandler(names.command, 0, QString::fromLocal8Bit(e.what()));
    }
}

} // namespace quillet

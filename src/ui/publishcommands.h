#pragma once

#include <QObject>
#include <functional>

namespace quillet {

class FamilyDatabase;
struct MainMenus;
struct PublishNames;

// Binds External > "Prep files for &web upload" and "Prep files for copy to &CD" to the one
// preparation routine with their names; errors end at this boundary in an error report.
class PublishCommands : public QObject
{
    Q_OBJECT
public:
    PublishCommands(FamilyDatabase &db, const MainMenus &menus, std::function<void(const QString &)> status,
                    QObject *parent);

private:
    void prepare(const PublishNames &names);

    FamilyDatabase &m_db;
    std::function<void(const QString &)> m_status;
};

} // namespace quillet

#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QVariant>

namespace quillet {

// What the family database offers the settings: the shared parameters (the same on every PC
// that shares the database) and the list of current families for the resize exclusion. Declared
// here, beside the database, so that the settings depend on the application core and not the
// other way round.
class SettingsDatabase
{
public:
    virtual ~SettingsDatabase() = default;
    // Null when the parameter is empty.
    virtual QVariant ReadParam(const QString &name) = 0;
    // Writes only when the value differs (Null taken as "").
    virtual void WriteParam(const QString &name, const QVariant &value) = 0;
    // Current families as (display name, FamilyID), in the family-list order.
    virtual QList<QPair<QString, int>> CurrentFamilies() = 0;
};

} // namespace quillet

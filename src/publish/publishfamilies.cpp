#include "publishfamilies.h"

#include "app/familydatabase.h"
#include "lib/texthelpers.h"

#include <QRegularExpression>
#include <QSqlRecord>

namespace quillet {

PublishFamilies::PublishFamilies(FamilyDatabase &db, const QString &exclusionField)
    : m_db(db)
    , m_exclusionField(exclusionField)
{
}

const PublishFamily *PublishFamilies::find(const QString &element)
{
    static const QRegularExpression number(QStringLiteral("^[0-9]{1,9}$"));
    if (!number.match(element).hasMatch())
        return nullptr;
    const int id = element.toInt();
    if (const auto it = m_cache.find(id); it != m_cache.end())
        return it->second ? &*it->second : nullptr;
    const QList<QSqlRecord> rows = m_db.select(QStringLiteral("SELECT FamilyID, FirstName, LastName, ") + m_exclusionField
                                               + QStringLiteral(" FROM tblFamilies WHERE FamilyID=")
                                               + QString::number(id));
    std::optional<PublishFamily> &slot = m_cache[id];
    if (rows.isEmpty())
        return nullptr;
    const QSqlRecord &row = rows.first();
    PublishFamily &family = slot.emplace();
    family.id = id;
    family.folderName = row.value(QStringLiteral("FirstName")).toString();
    if (!row.value(QStringLiteral("LastName")).isNull())
        family.folderName += QLatin1Char(' ') + row.value(QStringLiteral("LastName")).toString();
    family.excluded = lib_ParseNumber(row.value(m_exclusionField)) != 0;
    return &family;
}

} // namespace quillet

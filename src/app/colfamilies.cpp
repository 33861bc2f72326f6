#include "colfamilies.h"

#include "lib/error.h"

namespace quillet {

namespace {

[[noreturn]] void invalid(const QString &what)
{
    throw Error(kObjectErrorBase + 1, QStringLiteral("colFamilies"), QStringLiteral("Invalid Index: ") + what);
}

} // namespace

clsFamily &colFamilies::Add(qint32 familyId, const QString &key)
{
    clsFamily f;
    f.FamilyID = familyId;
    append(f, key);
    return m_items.last();
}

void colFamilies::append(const clsFamily &family, const QString &key)
{
    if (!key.isEmpty() && m_keys.contains(key))
        throw Error(kObjectErrorBase + 1, QStringLiteral("colFamilies"), QStringLiteral("Key already used: ") + key);
    m_items.append(family);
    m_keys.append(key);
}

const clsFamily &colFamilies::item(int position) const
{
    if (position < 1 || position > m_items.size())
        invalid(QString::number(position));
    return m_items.at(position - 1);
}

const clsFamily &colFamilies::item(const QString &key) const
{
    const int i = key.isEmpty() ? -1 : int(m_keys.indexOf(key));
    if (i < 0)
        invalid(key);
    return m_items.at(i);
}

void colFamilies::Remove(int position)
{
    if (position < 1 || position > m_items.size())
        invalid(QString::number(position));
    m_items.removeAt(position - 1);
    m_keys.removeAt(position - 1);
}

void colFamilies::Clear()
{
    m_items.clear();
    m_keys.clear();
}

} // namespace quillet

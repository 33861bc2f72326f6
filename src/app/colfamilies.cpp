#include "colfamilies.h"

#include "lib/error.h"

namespace quillet {

namespace {

[[noreturn]] void invalid(const QString &what)
{
    throw Error(kObjectErrorBase + 1, QStringLiteral("colFamilies"), QStringLiteral("Invalid Index: ") + what);
}

} // namespace

int colFamilies::indexOfKey(const QString &key) const
{
    // Keys match without regard to letter case, as in the keyed collections the program grew up
    // with: "K12" and "k12" name the same record.
    if (key.isEmpty())
        return -1;
    for (int i = 0; i < m_keys.size(); ++i) {
        if (m_keys.at(i).compare(key, Qt::CaseInsensitive) == 0)
            return i;
    }
    return -1;
}

clsFamily &colFamilies::Add(qint32 familyId, const QString &key)
{
    clsFamily f;
    f.FamilyID = familyId;
    append(f, key);
    return m_items.last();
}

void colFamilies::append(const clsFamily &family, const QString &key)
{
    if (indexOfKey(key) >= 0)
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
    const int i = indexOfKey(key);
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

void colFamilies::Remove(const QString &key)
{
    const int i = indexOfKey(key);
    if (i < 0)
        invalid(key);
    Remove(i + 1);
}

void colFamilies::Clear()
{
    m_items.clear();
    m_keys.clear();
}

} // namespace quillet

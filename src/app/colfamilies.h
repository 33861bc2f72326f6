#pragma once

#include "clsfamily.h"

#include <QHash>
#include <QList>

namespace quillet {

// An ordered collection of family records, in the order they were added (the order of the query
// that filled it). Records may be added under a key; positions are 1-based as the list uses them.
class colFamilies
{
public:
    // The spare record that comes with the collection.
    clsFamily &spare() { return m_spare; }

    // Appends a record with this FamilyID (under `key` when not empty) and returns it for filling;
    // the reference holds until the collection next changes. A key already used (in any letter
    // case) throws Error.
    clsFamily &Add(qint32 familyId, const QString &key = QString());
    // Appends a filled record.
    void append(const clsFamily &family, const QString &key = QString());
    // The record at a 1-based position, or under a key (any letter case); throws Error when there
    // is none.
    const clsFamily &item(int position) const;
    const clsFamily &item(const QString &key) const;
    int Count() const { return int(m_items.size()); }
    void Remove(int position);
    void Remove(const QString &key);
    void Clear();

    // Iteration in insertion order.
    QList<clsFamily>::const_iterator begin() const { return m_items.cbegin(); }
    QList<clsFamily>::const_iterator end() const { return m_items.cend(); }

private:
    int indexOfKey(const QString &key) const;

    QList<clsFamily> m_items;
    QList<QString> m_keys;
    clsFamily m_spare;
};

} // namespace quillet

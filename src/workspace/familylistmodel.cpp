#include "familylistmodel.h"

namespace quillet {

FamilyListModel::FamilyListModel(QObject *parent)
    : QAbstractListModel(parent)
{
}

int FamilyListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_entries.size());
}

QVariant FamilyListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_entries.size())
        return {};
    const Entry &e = m_entries.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return e.text;
    case FamilyIdRole:
        return e.familyId;
    case SelectedRole:
        return e.selected;
    default:
        return {};
    }
}

void FamilyListModel::setEntries(const QList<Entry> &entries)
{
    beginResetModel();
    m_entries = entries;
    endResetModel();
    Q_EMIT selectionChanged();
}

int FamilyListModel::positionOfId(int familyId) const
{
    for (int i = 0; i < m_entries.size(); ++i) {
        if (m_entries.at(i).familyId == familyId)
            return i;
    }
    return -1;
}

void FamilyListModel::setSelected(int position, bool selected)
{
    if (position < 0 || position >= m_entries.size() || m_entries.at(position).selected == selected)
        return;
    m_entries[position].selected = selected;
    const QModelIndex i = index(position);
    Q_EMIT dataChanged(i, i, {SelectedRole});
    Q_EMIT selectionChanged();
}

void FamilyListModel::clearSelection()
{
    for (int i = 0; i < m_entries.size(); ++i)
        setSelected(i, false);
}

void FamilyListModel::selectAll()
{
    for (int i = 0; i < m_entries.size(); ++i) {
        if (!m_entries.at(i).text.trimmed().startsWith(QLatin1Char('(')))
            setSelected(i, true);
    }
}

QList<int> FamilyListModel::selectedPositions() const
{
    QList<int> out;
    for (int i = 0; i < m_entries.size(); ++i) {
        if (m_entries.at(i).selected)
            out << i;
    }
    return out;
}

bool FamilyListModel::anyRealFamilySelected() const
{
    for (const Entry &e : m_entries) {
        if (e.selected && e.familyId != kPrivacyMarkerId)
            return true;
    }
    return false;
}

} // namespace quillet

#include "sourcelistmodel.h"

#include <QColor>
#include <QPixmap>

namespace quillet {

namespace {

QColor colourOf(const QString &colour)
{
    if (colour == QLatin1String("BLUE"))
        return QColor(0x1f, 0x5f, 0xbf);
    if (colour == QLatin1String("RED"))
        return QColor(0xc0, 0x20, 0x20);
    if (colour == QLatin1String("BLKWHT"))
        return QColor(0x70, 0x70, 0x70);
    return QColor(0x10, 0x10, 0x10);
}

QImage swatch(const QString &colour)
{
    QImage image(12, 12, QImage::Format_ARGB32);
    image.fill(colour == QLatin1String("BLKWHT") ? Qt::white : colourOf(colour));
    if (colour == QLatin1String("BLKWHT")) {
        // Half black, half white: the second colour of the alternating groups.
        for (int y = 0; y < 12; ++y)
            for (int x = 0; x < 12; ++x)
                if (x + y < 12)
                    image.setPixelColor(x, y, Qt::black);
    }
    return image;
}

} // namespace

SourceListModel::SourceListModel(QObject *parent)
    : QAbstractListModel(parent)
{
}

void SourceListModel::setThumbnailView(bool on)
{
    if (m_thumbnails == on)
        return;
    beginResetModel();
    m_thumbnails = on;
    endResetModel();
}

int SourceListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_entries.size());
}

QVariant SourceListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_entries.size())
        return {};
    const Entry &e = m_entries.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return m_thumbnails ? QVariant() : QVariant(e.text);
    case Qt::ToolTipRole:
        return e.text;
    case Qt::DecorationRole:
        return m_thumbnails ? QVariant(e.thumbnail) : QVariant(swatch(e.colour));
    case Qt::ForegroundRole:
        // The group shows in the small icon; the text keeps one colour per state.
        return e.ghosted ? QVariant(QColor(Qt::gray)) : QVariant(colourOf(e.tag));
    case KeyRole:
        return KeyOf(e.row);
    case RowRole:
        return e.row;
    case TagRole:
        return e.tag;
    case ColourRole:
        return e.colour;
    case SelectedRole:
        return e.selected;
    case GhostedRole:
        return e.ghosted;
    case ThumbnailReadyRole:
        return !e.thumbnail.isNull();
    default:
        return {};
    }
}

void SourceListModel::clear()
{
    beginResetModel();
    m_entries.clear();
    endResetModel();
    Q_EMIT selectionChanged();
}

void SourceListModel::append(const Entry &entry)
{
    const int n = int(m_entries.size());
    beginInsertRows(QModelIndex(), n, n);
    m_entries.append(entry);
    endInsertRows();
}

void SourceListModel::insertByName(const Entry &entry, const std::function<QString(int)> &nameOfRow)
{
    const QString name = nameOfRow(entry.row);
    int position = int(m_entries.size());
    if (!m_entries.isEmpty() && name.compare(nameOfRow(m_entries.last().row), Qt::CaseInsensitive) <= 0) {
        for (int i = 0; i < m_entries.size(); ++i) {
            if (nameOfRow(m_entries.at(i).row).compare(name, Qt::CaseInsensitive) > 0) {
                position = i;
                break;
            }
        }
    }
    beginInsertRows(QModelIndex(), position, position);
    m_entries.insert(position, entry);
    endInsertRows();
}

void SourceListModel::removeAt(int position)
{
    if (position < 0 || position >= m_entries.size())
        return;
    const bool wasSelected = m_entries.at(position).selected;
    beginRemoveRows(QModelIndex(), position, position);
    m_entries.removeAt(position);
    endRemoveRows();
    if (wasSelected)
        Q_EMIT selectionChanged();
}

int SourceListModel::positionOfRow(int row) const
{
    for (int i = 0; i < m_entries.size(); ++i) {
        if (m_entries.at(i).row == row)
            return i;
    }
    return -1;
}

void SourceListModel::emitChanged(int position, const QList<int> &roles)
{
    const QModelIndex i = index(position);
    Q_EMIT dataChanged(i, i, roles);
}

void SourceListModel::setTag(int position, const QString &tag, const QString &colour)
{
    m_entries[position].tag = tag;
    m_entries[position].colour = colour;
    emitChanged(position, {TagRole, ColourRole, Qt::DecorationRole, Qt::ForegroundRole});
}

void SourceListModel::setThumbnail(int position, const QImage &image)
{
    m_entries[position].thumbnail = image;
    emitChanged(position, {Qt::DecorationRole});
}

void SourceListModel::setGhosted(int position, bool ghosted)
{
    if (position < 0 || position >= m_entries.size() || m_entries.at(position).ghosted == ghosted)
        return;
    m_entries[position].ghosted = ghosted;
    emitChanged(position, {GhostedRole, Qt::ForegroundRole});
}

void SourceListModel::setSelected(int position, bool selected)
{
    if (position < 0 || position >= m_entries.size() || m_entries.at(position).selected == selected)
        return;
    m_entries[position].selected = selected;
    emitChanged(position, {SelectedRole});
    Q_EMIT selectionChanged();
}

void SourceListModel::clearSelection()
{
    bool any = false;
    for (int i = 0; i < m_entries.size(); ++i) {
        if (m_entries.at(i).selected) {
            m_entries[i].selected = false;
            emitChanged(i, {SelectedRole});
            any = true;
        }
    }
    if (any)
        Q_EMIT selectionChanged();
}

QList<int> SourceListModel::selectedPositions() const
{
    QList<int> out;
    for (int i = 0; i < m_entries.size(); ++i) {
        if (m_entries.at(i).selected)
            out << i;
    }
    return out;
}

QList<int> SourceListModel::selectedRows() const
{
    QList<int> out;
    for (const Entry &e : m_entries) {
        if (e.selected)
            out << e.row;
    }
    return out;
}

void SourceListModel::HighlightSourceSelections(bool highlight)
{
    for (int i = 0; i < m_entries.size(); ++i) {
        const bool ghost = highlight && m_entries.at(i).selected;
        if (m_entries.at(i).ghosted != ghost) {
            m_entries[i].ghosted = ghost;
            emitChanged(i, {GhostedRole, Qt::ForegroundRole});
        }
    }
}

} // namespace quillet

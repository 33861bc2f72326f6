#include "sourcelistmodel.h"

#include "thumbnailstore.h"

#include <QColor>
#include <QPixmap>
#include <QSet>

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
        return m_thumbnails ? QVariant(thumbnailAt(index.row())) : QVariant(swatch(e.colour));
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
        return !e.ownThumbnail || (m_store && m_store->has(e.row));
    case TakenRole:
        return e.taken;
    default:
        return {};
    }
}

void SourceListModel::setThumbnailSource(ThumbnailStore *store, std::function<QString(int)> pathOfRow)
{
    if (m_store)
        disconnect(m_store, nullptr, this, nullptr);
    m_store = store;
    m_pathOfRow = std::move(pathOfRow);
    if (m_store)
        connect(m_store, &ThumbnailStore::ready, this, &SourceListModel::thumbnailArrived);
}

QImage SourceListModel::thumbnailAt(int position) const
{
    const Entry &e = m_entries.at(position);
    if (e.ownThumbnail && m_store) {
        const QImage image = m_store->image(e.row);
        if (!image.isNull())
            return image;
    }
    return m_placeholder;
}

void SourceListModel::requestThumbnails(int first, int last, int ahead, int keep)
{
    if (!m_store || !m_thumbnails)
        return;
    const int n = int(m_entries.size());
    first = std::clamp(first, 0, n);
    last = std::clamp(last, first - 1, n - 1);
    QList<std::pair<int, QString>> wanted;
    auto want = [&](int position) {
        const Entry &e = m_entries.at(position);
        if (e.ownThumbnail)
            wanted.append({e.row, m_pathOfRow ? m_pathOfRow(e.row) : QString()});
    };
    // What is seen comes first, then the direction a reader scrolls, then back.
    for (int p = first; p <= last; ++p)
        want(p);
    for (int p = last + 1; p < std::min(n, last + 1 + ahead); ++p)
        want(p);
    for (int p = first - 1; p >= std::max(0, first - ahead / 2); --p)
        want(p);
    QSet<int> kept;
    for (int p = std::max(0, first - keep); p < std::min(n, last + 1 + keep); ++p)
        kept.insert(m_entries.at(p).row);
    m_store->retainOnly(kept);
    m_store->request(wanted);
}

void SourceListModel::thumbnailArrived(int row)
{
    const int position = positionOfRow(row);
    if (position >= 0 && m_thumbnails)
        emitChanged(position, {Qt::DecorationRole, ThumbnailReadyRole});
}

void SourceListModel::clear()
{
    beginResetModel();
    m_entries.clear();
    forgetPositions();
    endResetModel();
    Q_EMIT selectionChanged();
}

void SourceListModel::append(const Entry &entry)
{
    append(QList<Entry>{entry});
}

void SourceListModel::append(const QList<Entry> &entries)
{
    if (entries.isEmpty())
        return;
    const int n = int(m_entries.size());
    beginInsertRows(QModelIndex(), n, n + int(entries.size()) - 1);
    m_entries.append(entries);
    if (!m_positions.isEmpty()) {
        for (int i = n; i < m_entries.size(); ++i)
            m_positions.insert(m_entries.at(i).row, i);
    }
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
    forgetPositions();
    endInsertRows();
}

void SourceListModel::removeAt(int position)
{
    if (position < 0 || position >= m_entries.size())
        return;
    const bool wasSelected = m_entries.at(position).selected;
    beginRemoveRows(QModelIndex(), position, position);
    m_entries.removeAt(position);
    forgetPositions();
    endRemoveRows();
    if (wasSelected)
        Q_EMIT selectionChanged();
}

int SourceListModel::positionOfRow(int row) const
{
    if (m_positions.isEmpty() && !m_entries.isEmpty()) {
        m_positions.reserve(m_entries.size());
        for (int i = 0; i < m_entries.size(); ++i)
            m_positions.insert(m_entries.at(i).row, i);
    }
    return m_positions.value(row, -1);
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
    if (m_store)
        m_store->put(m_entries.at(position).row, image);
    emitChanged(position, {Qt::DecorationRole, ThumbnailReadyRole});
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

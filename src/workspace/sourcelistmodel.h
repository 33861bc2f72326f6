#pragma once

#include <QAbstractListModel>
#include <QHash>
#include <QDateTime>
#include <QImage>
#include <QList>
#include <functional>

namespace quillet {

class ThumbnailStore;

// The entries of the source photo list. Each entry stands for one row of the source file table and
// carries that row's key ("K" + row), its text, its colour state and its thumbnail. Selection and
// ghosting live here, so Save, Undo and Review work the same with or without a window; a view only
// mirrors them.
//
// Thumbnails are not held by the entries: a view asks for the entries it shows
// (requestThumbnails), the thumbnail store makes them on worker threads, and an entry shows the
// placeholder picture until its own arrives (ThumbnailReadyRole tells which).
class SourceListModel : public QAbstractListModel
{
    Q_OBJECT
public:
    enum Roles {
        KeyRole = Qt::UserRole + 1, // "K17"
        RowRole,                    // 17
        TagRole,                    // "BLACK", "BLUE" or "RED"
        ColourRole,                 // the small icon: "BLACK", "BLKWHT", "BLUE" or "RED"
        SelectedRole,
        GhostedRole,
        // bool: in thumbnail view, true once the entry's picture is final (the photo's own
        // thumbnail, or the placeholder when none can be made); false while the placeholder only
        // stands in for a thumbnail that is still being made or was released after scrolling far
        // away. A delegate may paint a "not yet" state from it; the decoration is always valid.
        ThumbnailReadyRole,
        TakenRole,                  // QDateTime the photo was taken (unallocated photos), else invalid
    };

    struct Entry
    {
        int row = 0;
        QString text;
        QString tag;
        QString colour;
        // False: the placeholder stands for this photo for good (an undo photo brought back
        // without a thumbnail).
        bool ownThumbnail = true;
        bool selected = false;
        bool ghosted = false;
        QDateTime taken; // the date that placed the photo in its day/session group
    };

    explicit SourceListModel(QObject *parent = nullptr);

    // Thumbnail view shows pictures only; text view shows the name with a colour icon.
    bool thumbnailView() const { return m_thumbnails; }
    void setThumbnailView(bool on);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;

    // Where thumbnails come from: the store, the current path of a table row, and the picture
    // shown until a thumbnail is ready.
    void setThumbnailSource(ThumbnailStore *store, std::function<QString(int row)> pathOfRow);
    void setPlaceholder(const QImage &placeholder) { m_placeholder = placeholder; }
    // Asks for the thumbnails of the entries at positions first..last (those in view), then of
    // `ahead` entries after them and half as many before; releases those further than
    // `keep` entries from the view. Nothing happens in text view.
    void requestThumbnails(int first, int last, int ahead, int keep);
    // The picture an entry shows in thumbnail view.
    QImage thumbnailAt(int position) const;

    void clear();
    void append(const Entry &entry);
    // Appends many at once (one insertion for the view, which then lays out once).
    void append(const QList<Entry> &entries);
    // Inserts keeping thumbnail view's name order (entries added back by review go between others).
    void insertByName(const Entry &entry, const std::function<QString(int row)> &nameOfRow);
    void removeAt(int position);
    // Position of the entry of a table row, or -1.
    int positionOfRow(int row) const;
    static QString KeyOf(int row) { return QStringLiteral("K") + QString::number(row); }
    static int RowOfKey(const QString &key) { return key.mid(1).toInt(); }

    const Entry &at(int position) const { return m_entries.at(position); }
    void setTag(int position, const QString &tag, const QString &colour);
    // Holds a freshly made thumbnail for the entry (after a rotation); null: none can be made.
    void setThumbnail(int position, const QImage &image);
    void setGhosted(int position, bool ghosted);

    void setSelected(int position, bool selected);
    void clearSelection();
    QList<int> selectedPositions() const;
    QList<int> selectedRows() const;
    // Ghosting mirrors selection while the focus is elsewhere, so the selection stays visible.
    void HighlightSourceSelections(bool highlight);

Q_SIGNALS:
    void selectionChanged();

private:
    void emitChanged(int position, const QList<int> &roles);
    void thumbnailArrived(int row);
    void forgetPositions() { m_positions.clear(); }

    QList<Entry> m_entries;
    bool m_thumbnails = true;
    ThumbnailStore *m_store = nullptr;
    std::function<QString(int)> m_pathOfRow;
    QImage m_placeholder;
    // Position by table row, built on first use after a change that moves entries.
    mutable QHash<int, int> m_positions;
};

} // namespace quillet

#pragma once

#include <QAbstractListModel>
#include <QImage>
#include <QList>
#include <functional>

namespace quillet {

// The entries of the source photo list. Each entry stands for one row of the source file table and
// carries that row's key ("K" + row), its text, its colour state and its thumbnail. Selection and
// ghosting live here, so Save, Undo and Review work the same with or without a window; a view only
// mirrors them.
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
    };

    struct Entry
    {
        int row = 0;
        QString text;
        QString tag;
        QString colour;
        QImage thumbnail;
        bool selected = false;
        bool ghosted = false;
    };

    explicit SourceListModel(QObject *parent = nullptr);

    // Thumbnail view shows pictures only; text view shows the name with a colour icon.
    bool thumbnailView() const { return m_thumbnails; }
    void setThumbnailView(bool on);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;

    void clear();
    void append(const Entry &entry);
    // Inserts keeping thumbnail view's name order (entries added back by review go between others).
    void insertByName(const Entry &entry, const std::function<QString(int row)> &nameOfRow);
    void removeAt(int position);
    // Position of the entry of a table row, or -1.
    int positionOfRow(int row) const;
    static QString KeyOf(int row) { return QStringLiteral("K") + QString::number(row); }
    static int RowOfKey(const QString &key) { return key.mid(1).toInt(); }

    const Entry &at(int position) const { return m_entries.at(position); }
    void setTag(int position, const QString &tag, const QString &colour);
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

    QList<Entry> m_entries;
    bool m_thumbnails = true;
};

} // namespace quillet

#pragma once

#include <QStyledItemDelegate>

namespace quillet {

// Paints the thumbnail view of the photo list so that it tells what the text view tells, and more:
// each day/session group lies on a band of its own colour (the two colours alternate as the text
// view's icons do, and a group's first photo carries a bar at its left edge and its day), every
// photo shows the time it was taken, allocated photos (when shown) and photos under review are
// framed and marked, and selected photos are framed in the highlight colour, dimmed-framed while
// the focus is in the family list. It reads the model's roles only: DecorationRole (the picture),
// ColourRole (the group), TagRole (the state), TakenRole, SelectedRole and GhostedRole.
class ThumbnailDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    static constexpr int kPicture = 96; // the thumbnails' box
    static constexpr int kCellWidth = kPicture + 12;

    explicit ThumbnailDelegate(QObject *parent = nullptr);

    // The cell: the picture with its margin, and a line for the time below it.
    static QSize cellSize(const QFontMetrics &metrics);
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    // The band colour of a group colour ("BLACK" or "BLKWHT"); allocated and review entries lie
    // on the plain background.
    static QColor bandColour(const QString &colour, const QPalette &palette);
    // The caption under a photo: "09:41", or "Tue 05 09:41" for the first photo of a group.
    static QString caption(const QDateTime &taken, bool firstOfGroup);

private:
    void paintMarks(QPainter *painter, const QRect &picture, const QModelIndex &index, const QPalette &palette) const;
};

} // namespace quillet

#include "thumbnaildelegate.h"

#include "workspace/sourcelistmodel.h"

#include <QApplication>
#include <QPainter>
#include <QPainterPath>

namespace quillet {

namespace {

bool startsGroup(const QModelIndex &index)
{
    const QString colour = index.data(SourceListModel::ColourRole).toString();
    if (colour == QLatin1String("BLUE") || colour == QLatin1String("RED"))
        return false;
    // Allocated entries between two photos of one group do not break it (as in the text view).
    for (int row = index.row() - 1; row >= 0; --row) {
        const QString before = index.siblingAtRow(row).data(SourceListModel::ColourRole).toString();
        if (before == QLatin1String("BLACK") || before == QLatin1String("BLKWHT"))
            return before != colour;
    }
    return true;
}

} // namespace

ThumbnailDelegate::ThumbnailDelegate(QObject *parent)
    : QStyledItemDelegate(parent)
{
}

QSize ThumbnailDelegate::cellSize(const QFontMetrics &metrics)
{
    return QSize(kCellWidth, kPicture + 10 + metrics.height() + 4);
}

QSize ThumbnailDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const
{
    return cellSize(option.fontMetrics);
}

QColor ThumbnailDelegate::bandColour(const QString &colour, const QPalette &palette)
{
    if (colour == QLatin1String("BLACK"))
        return QColor(0xdd, 0xe8, 0xf5); // cool
    if (colour == QLatin1String("BLKWHT"))
        return QColor(0xf6, 0xe6, 0xcc); // warm
    return palette.color(QPalette::Base);
}

QString ThumbnailDelegate::caption(const QDateTime &taken, bool firstOfGroup)
{
    if (!taken.isValid())
        return QString();
    const QLocale locale;
    const QString time = locale.toString(taken.time(), QStringLiteral("HH:mm"));
    return firstOfGroup ? locale.toString(taken.date(), QStringLiteral("ddd dd")) + QLatin1Char(' ') + time : time;
}

void ThumbnailDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    painter->save();
    const QPalette &palette = option.palette;
    const QRect cell = option.rect;
    const QString colour = index.data(SourceListModel::ColourRole).toString();
    const bool first = startsGroup(index);
    painter->fillRect(cell, bandColour(colour, palette));
    if (first) // where a group begins, also in the middle of a row
        painter->fillRect(QRect(cell.left(), cell.top(), 4, cell.height()), bandColour(colour, palette).darker(160));

    QRect picture(cell.left() + (cell.width() - kPicture) / 2, cell.top() + 5, kPicture, kPicture);
    const QImage image = index.data(Qt::DecorationRole).value<QImage>();
    if (!image.isNull()) {
        const QSize fitted = image.size().scaled(picture.size(), Qt::KeepAspectRatio);
        const QRect target(picture.left() + (picture.width() - fitted.width()) / 2,
                           picture.top() + (picture.height() - fitted.height()) / 2, fitted.width(), fitted.height());
        painter->drawImage(target, image);
        picture = target;
    }
    paintMarks(painter, picture, index, palette);

    const QRect textArea(cell.left() + 2, cell.top() + kPicture + 8, cell.width() - 4, option.fontMetrics.height());
    QFont font = option.font;
    font.setBold(first);
    painter->setFont(font);
    painter->setPen(QColor(0x20, 0x20, 0x20)); // on the light bands whatever the palette
    painter->drawText(textArea, Qt::AlignCenter,
                      caption(index.data(SourceListModel::TakenRole).toDateTime(), first));

    if (option.state & QStyle::State_HasFocus) {
        painter->setPen(QPen(palette.color(QPalette::Text), 1, Qt::DotLine));
        painter->drawRect(cell.adjusted(1, 1, -2, -2));
    }
    painter->restore();
}

void ThumbnailDelegate::paintMarks(QPainter *painter, const QRect &picture, const QModelIndex &index,
                                   const QPalette &palette) const
{
    const QString tag = index.data(SourceListModel::TagRole).toString();
    const bool selected = index.data(SourceListModel::SelectedRole).toBool();
    const bool ghosted = index.data(SourceListModel::GhostedRole).toBool();
    const QColor state = tag == QLatin1String("BLUE") ? QColor(0x1f, 0x5f, 0xd0)
        : tag == QLatin1String("RED")                 ? QColor(0xd0, 0x20, 0x20)
                                                      : QColor();
    painter->setRenderHint(QPainter::Antialiasing);
    if (state.isValid()) {
        // Allocated or under review: a frame and a corner badge in the state's colour.
        painter->setPen(QPen(state, 2));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(picture.adjusted(1, 1, -1, -1));
        const QRect badge(picture.right() - 17, picture.top() + 2, 16, 16);
        painter->setBrush(state);
        painter->setPen(Qt::NoPen);
        painter->drawEllipse(badge);
        painter->setPen(Qt::white);
        QFont font = painter->font();
        font.setBold(true);
        font.setPixelSize(11);
        painter->setFont(font);
        painter->drawText(badge, Qt::AlignCenter, tag == QLatin1String("BLUE") ? QStringLiteral("\u2713") : QStringLiteral("R"));
    }
    if (selected || ghosted) {
        // Plain to see with several selected: a thick frame round the picture and a tint over it.
        QColor highlight = palette.color(QPalette::Highlight);
        painter->setBrush(Qt::NoBrush);
        painter->setPen(QPen(highlight, 4, selected ? Qt::SolidLine : Qt::DashLine));
        painter->drawRect(picture.adjusted(-2, -2, 2, 2));
        highlight.setAlpha(selected ? 60 : 30);
        painter->fillRect(picture, highlight);
    }
}

} // namespace quillet

#include "ui/thumbnaildelegate.h"
#include "workspace/sourcelistmodel.h"

#include <QApplication>
#include <QListView>
#include <QTest>

using namespace quillet;

// The thumbnail view painted for real, offscreen: the groups, the marks and the selection must
// show in the pixels, not only in the model.
class TestThumbnailDelegate : public QObject
{
    Q_OBJECT

    static SourceListModel::Entry entry(int row, const char *tag, const char *colour, const QTime &time)
    {
        SourceListModel::Entry e;
        e.row = row;
        e.text = QStringLiteral("IMG_%1.jpg").arg(row);
        e.tag = QLatin1String(tag);
        e.colour = QLatin1String(colour);
        if (time.isValid())
            e.taken = QDateTime(QDate(2024, 3, 5), time);
        return e;
    }

    // The colour of the band at a cell's bottom-left corner, right of a group's start bar.
    static QColor band(const QImage &shot, const QRect &cell) { return shot.pixelColor(cell.left() + 8, cell.bottom() - 1); }

private Q_SLOTS:
    void groupsMarksAndSelectionShow()
    {
        SourceListModel model;
        // Without a thumbnail store every entry shows the model's stand-in picture.
        QImage picture(96, 72, QImage::Format_RGB32);
        picture.fill(Qt::darkGreen);
        model.setPlaceholder(picture);
        model.append(entry(1, "BLACK", "BLACK", QTime(8, 0)));
        model.append(entry(2, "BLUE", "BLUE", QTime()));     // allocated, shown: does not break the group
        model.append(entry(3, "BLACK", "BLACK", QTime(8, 30)));
        model.append(entry(4, "BLACK", "BLKWHT", QTime(13, 10)));
        model.append(entry(5, "RED", "RED", QTime()));
        model.setSelected(2, true);
        model.setSelected(3, true);
        QListView view;
        view.setModel(&model);
        ThumbnailDelegate delegate;
        view.setItemDelegate(&delegate);
        view.setViewMode(QListView::IconMode);
        view.setSpacing(0);
        view.setGridSize(ThumbnailDelegate::cellSize(view.fontMetrics()));
        view.resize(ThumbnailDelegate::kCellWidth * 5 + 40, 300);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        for (int p = 0; p < model.rowCount(); ++p) {
            if (model.at(p).selected)
                view.selectionModel()->select(model.index(p), QItemSelectionModel::Select);
        }
        const QImage shot = view.viewport()->grab().toImage();
        auto cell = [&](int p) { return view.visualRect(model.index(p)); };

        // One band per group; the second group's is another colour.
        QCOMPARE(band(shot, cell(0)), band(shot, cell(2)));
        QVERIFY(band(shot, cell(0)) != band(shot, cell(3)));
        QCOMPARE(band(shot, cell(0)), ThumbnailDelegate::bandColour(QStringLiteral("BLACK"), view.palette()));
        // A group's first photo has a bar at its left edge; the next of that group has none.
        QVERIFY(shot.pixelColor(cell(3).left() + 1, cell(3).center().y()) != band(shot, cell(3)));
        QCOMPARE(shot.pixelColor(cell(2).left() + 1, cell(2).center().y()), band(shot, cell(2)));

        // The selected photo is framed in the highlight colour; an unselected one is not.
        const QColor highlight = view.palette().color(QPalette::Highlight);
        auto framed = [&](int p, const QColor &colour) {
            const QRect c = cell(p);
            int hits = 0;
            for (int x = c.left(); x <= c.right(); ++x) {
                for (int y = c.top(); y < c.top() + ThumbnailDelegate::kPicture + 8; ++y)
                    hits += shot.pixelColor(x, y) == colour;
            }
            return hits > 100;
        };
        QVERIFY(framed(2, highlight));
        QVERIFY(framed(3, highlight));
        QVERIFY(!framed(0, highlight));
        // Allocated and review photos carry their state's frame.
        QVERIFY(framed(1, QColor(0x1f, 0x5f, 0xd0)));
        QVERIFY(framed(4, QColor(0xd0, 0x20, 0x20)));
        QVERIFY(!framed(0, QColor(0x1f, 0x5f, 0xd0)));
    }

    void captions_data()
    {
        QTest::addColumn<QDateTime>("taken");
        QTest::addColumn<bool>("first");
        QTest::addColumn<QString>("expected");
        const QDateTime tuesday(QDate(2024, 3, 5), QTime(9, 41));
        QTest::newRow("in a group") << tuesday << false << "09:41";
        QTest::newRow("first of a group") << tuesday << true << QLocale().toString(tuesday.date(), "ddd dd") + " 09:41";
        QTest::newRow("no date (review entry)") << QDateTime() << true << "";
    }
    void captions()
    {
        QFETCH(QDateTime, taken);
        QFETCH(bool, first);
        QFETCH(QString, expected);
        QCOMPARE(ThumbnailDelegate::caption(taken, first), expected);
    }
};

QTEST_MAIN(TestThumbnailDelegate)
#include "tst_thumbnaildelegate.moc"

#pragma once

#include <QModelIndexList>
#include <QObject>
#include <QTimer>

class QListView;

namespace quillet {

class SourceListModel;

// The view side of the photo list's thumbnails: whenever what the list shows may have changed
// (a scroll, a resize, entries added or removed, the view mode), asks the model for the
// thumbnails of the entries in view and a screenful ahead, and lets those far away go. Requests
// are coalesced, so a fast scroll asks once for where it stopped.
class ThumbnailFeeder : public QObject
{
    Q_OBJECT
public:
    // Screens of entries kept on either side of the view before their thumbnails are released.
    static constexpr int kKeepScreens = 3;

    // Lives as long as the view (its child).
    ThumbnailFeeder(QListView *view, SourceListModel *model);

    // The entries whose cells the viewport shows, at least in part, in model order.
    QModelIndexList positionsInView() const;

    // Asks now instead of after the coalescing delay.
    void feedNow();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void schedule();
    // First and last position shown, or {0, -1} when nothing is.
    std::pair<int, int> rangeInView() const;

    QListView *m_view;
    // The viewport as a plain object: its events still arrive while the view is being destroyed,
    // when the view may no longer be asked for it.
    QObject *m_viewport;
    SourceListModel *m_model;
    QTimer m_timer;
};

} // namespace quillet

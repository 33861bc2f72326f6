#include "thumbnailfeeder.h"

#include "workspace/sourcelistmodel.h"

#include <QEvent>
#include <QListView>
#include <QScrollBar>

namespace quillet {

namespace {

// Long enough to merge the steps of one scroll, short enough not to be seen.
constexpr int kCoalesceMs = 15;

} // namespace

ThumbnailFeeder::ThumbnailFeeder(QListView *view, SourceListModel *model)
    : QObject(view)
    , m_view(view)
    , m_viewport(view->viewport())
    , m_model(model)
{
    setObjectName(QStringLiteral("thumbnailFeeder"));
    m_timer.setSingleShot(true);
    m_timer.setInterval(kCoalesceMs);
    connect(&m_timer, &QTimer::timeout, this, &ThumbnailFeeder::feedNow);
    connect(view->verticalScrollBar(), &QScrollBar::valueChanged, this, &ThumbnailFeeder::schedule);
    connect(view->verticalScrollBar(), &QScrollBar::rangeChanged, this, &ThumbnailFeeder::schedule);
    connect(view->horizontalScrollBar(), &QScrollBar::valueChanged, this, &ThumbnailFeeder::schedule);
    connect(model, &QAbstractItemModel::rowsInserted, this, &ThumbnailFeeder::schedule);
    connect(model, &QAbstractItemModel::rowsRemoved, this, &ThumbnailFeeder::schedule);
    connect(model, &QAbstractItemModel::modelReset, this, &ThumbnailFeeder::schedule);
    connect(model, &QAbstractItemModel::layoutChanged, this, &ThumbnailFeeder::schedule);
    view->viewport()->installEventFilter(this);
}

bool ThumbnailFeeder::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_viewport && (event->type() == QEvent::Resize || event->type() == QEvent::Show))
        schedule();
    return QObject::eventFilter(watched, event);
}

void ThumbnailFeeder::schedule()
{
    if (!m_timer.isActive())
        m_timer.start();
}

std::pair<int, int> ThumbnailFeeder::rangeInView() const
{
    const int n = m_model->rowCount();
    const int height = m_view->viewport()->height();
    if (n == 0 || height <= 0 || m_view->model() != m_model)
        return {0, -1};
    // Both view modes place the entries in reading order, so their rectangles' tops never
    // decrease with the position: two binary searches find the band the viewport shows.
    auto rectAt = [this](int p) { return m_view->visualRect(m_model->index(p)); };
    int lo = 0, hi = n; // first position whose cell ends below the top edge
    while (lo < hi) {
        const int mid = (lo + hi) / 2;
        if (rectAt(mid).bottom() < 0)
            lo = mid + 1;
        else
            hi = mid;
    }
    const int first = lo;
    hi = n; // first position whose cell starts at or below the bottom edge
    while (lo < hi) {
        const int mid = (lo + hi) / 2;
        if (rectAt(mid).top() < height)
            lo = mid + 1;
        else
            hi = mid;
    }
    return {first, lo - 1};
}

QModelIndexList ThumbnailFeeder::positionsInView() const
{
    QModelIndexList out;
    const auto [first, last] = rangeInView();
    for (int p = first; p <= last; ++p)
        out << m_model->index(p);
    return out;
}

void ThumbnailFeeder::feedNow()
{
    m_timer.stop();
    const auto [first, last] = rangeInView();
    const int shown = std::max(1, last - first + 1);
    m_model->requestThumbnails(first, last, shown, kKeepScreens * shown);
}

} // namespace quillet

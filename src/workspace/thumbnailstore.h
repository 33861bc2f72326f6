#pragma once

#include <QHash>
#include <QImage>
#include <QList>
#include <QObject>
#include <QSet>
#include <QThreadPool>

#include <functional>
#include <utility>

namespace quillet {

// The thumbnails of the source list by table row ("K" + row), made on worker threads when asked
// for and held only while wanted. The list asks for the rows in view and a little ahead, and lets
// go of the rest, so memory follows the screen and not the folder; a released thumbnail is made
// again on demand, normally from the desktop thumbnail cache.
//
// A held result is either the photo's thumbnail or "none can be made" (a null image: the list
// shows its placeholder for good). Every call happens on the thread the store lives on; only the
// maker runs on the workers and must be reentrant.
class ThumbnailStore : public QObject
{
    Q_OBJECT
public:
    using Maker = std::function<QImage(const QString &path)>;

    explicit ThumbnailStore(Maker maker, QObject *parent = nullptr);
    // Waits for the thumbnails being made (each takes milliseconds).
    ~ThumbnailStore() override;

    // Whether a result is held for the row (its thumbnail, or the knowledge that none exists).
    bool has(int row) const { return m_images.contains(row); }
    // The held thumbnail; null when none is held or none can be made.
    QImage image(int row) const { return m_images.value(row); }
    int heldCount() const { return int(m_images.size()); }
    // Rows asked for whose thumbnails are queued or being made.
    int pendingCount() const { return int(m_queue.size() + m_inFlight.size()); }

    // Asks for thumbnails, most wanted first. Replaces what was queued before and is not started:
    // after a scroll, the rows that left the view are not made any more.
    void request(const QList<std::pair<int, QString>> &wanted);
    // Releases every held thumbnail whose row is not in `keep`.
    void retainOnly(const QSet<int> &keep);
    // Holds a thumbnail made elsewhere (the undo store, a rotation); a result still being made
    // for the row is dropped, as it may show the photo as it was.
    void put(int row, const QImage &image);
    // Forgets everything, also the results still being made (a new load reuses row numbers).
    void clear();

Q_SIGNALS:
    // A requested thumbnail arrived and is held.
    void ready(int row);

private:
    void startMore();
    void finished(int row, quint64 ticket, const QImage &image);

    Maker m_maker;
    QThreadPool m_pool;
    QHash<int, QImage> m_images;
    QList<std::pair<int, QString>> m_queue;
    QHash<int, quint64> m_inFlight; // row -> ticket of the job making it
    int m_running = 0;              // jobs on the workers, counted also when their result is dropped
    quint64 m_nextTicket = 1;
};

} // namespace quillet

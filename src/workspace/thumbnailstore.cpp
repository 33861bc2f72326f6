#include "thumbnailstore.h"

#include <QThread>

namespace quillet {

ThumbnailStore::ThumbnailStore(Maker maker, QObject *parent)
    : QObject(parent)
    , m_maker(std::move(maker))
{
    m_pool.setMaxThreadCount(std::max(1, QThread::idealThreadCount()));
}

ThumbnailStore::~ThumbnailStore()
{
    m_queue.clear();
    m_pool.waitForDone();
    // The results posted back meanwhile are discarded with this object's pending events.
}

void ThumbnailStore::request(const QList<std::pair<int, QString>> &wanted)
{
    m_queue.clear();
    for (const auto &item : wanted) {
        if (!m_images.contains(item.first) && !m_inFlight.contains(item.first))
            m_queue.append(item);
    }
    startMore();
}

void ThumbnailStore::retainOnly(const QSet<int> &keep)
{
    for (auto it = m_images.begin(); it != m_images.end();) {
        if (keep.contains(it.key()))
            ++it;
        else
            it = m_images.erase(it);
    }
}

void ThumbnailStore::put(int row, const QImage &image)
{
    m_inFlight.remove(row);
    m_images.insert(row, image);
}

void ThumbnailStore::clear()
{
    m_queue.clear();
    m_inFlight.clear();
    m_images.clear();
}

void ThumbnailStore::startMore()
{
    // One job per worker at a time, so that a scroll re-orders the queue before work starts.
    while (!m_queue.isEmpty() && m_running < m_pool.maxThreadCount()) {
        // Named copies rather than a structured binding: lambdas capture these below.
        const auto next = m_queue.takeFirst();
        const int row = next.first;
        const QString path = next.second;
        const quint64 ticket = m_nextTicket++;
        m_inFlight.insert(row, ticket);
        ++m_running;
        m_pool.start([this, maker = m_maker, row, path, ticket] {
            QImage image = maker ? maker(path) : QImage();
            QMetaObject::invokeMethod(
                this, [this, row, ticket, image] { finished(row, ticket, image); }, Qt::QueuedConnection);
        });
    }
}

void ThumbnailStore::finished(int row, quint64 ticket, const QImage &image)
{
    --m_running;
    if (m_inFlight.value(row) == ticket) {
        m_inFlight.remove(row);
        m_images.insert(row, image);
        Q_EMIT ready(row);
    }
    startMore();
}

} // namespace quillet

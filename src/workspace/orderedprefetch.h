#pragma once

#include <QEventLoop>
#include <QFuture>
#include <QFutureWatcher>
#include <QList>
#include <QThread>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>

#include <functional>

namespace quillet {

// Waits for a future while the event loop keeps running: timers, painting and window-system
// events are served, user input waits until the caller's loop lets it in (the caller's state is
// half built meanwhile).
template<typename T>
void AwaitServingEvents(const QFuture<T> &future)
{
    if (future.isFinished())
        return;
    QFutureWatcher<T> watcher;
    QEventLoop loop;
    QObject::connect(&watcher, &QFutureWatcher<T>::finished, &loop, &QEventLoop::quit);
    watcher.setFuture(future);
    if (!future.isFinished())
        loop.exec(QEventLoop::ExcludeUserInputEvents);
}

// Runs `work(i)` for items 0..count-1 on worker threads, a bounded window ahead of the consumer, and
// hands the results back strictly in order. While the consumer waits for an item the event loop
// keeps running, so the window stays responsive and a progress window can still be closed.
// `work` must be safe to run on several threads at once. At most `window` results are held.
template<typename Result>
class OrderedPrefetch
{
public:
    OrderedPrefetch(int count, std::function<Result(int)> work, int window = 0)
        : m_count(count)
        , m_work(std::move(work))
        , m_window(window > 0 ? window : std::max(4, QThread::idealThreadCount() * 4))
    {
        m_futures.resize(count);
    }

    ~OrderedPrefetch() { cancel(); }

    // The result of item i; items must be taken in increasing order.
    Result take(int i)
    {
        scheduleUpTo(std::min(m_count, i + m_window));
        QFuture<Result> future = m_futures[i];
        AwaitServingEvents(future);
        Result result = future.result();
        m_futures[i] = QFuture<Result>(); // release the result
        return result;
    }

    // Stops scheduling and waits for the work already started (it is short).
    void cancel()
    {
        for (int i = 0; i < m_scheduled; ++i) {
            if (m_futures[i].isValid())
                m_futures[i].waitForFinished();
        }
        m_futures.clear();
        m_count = 0;
        m_scheduled = 0;
    }

private:
    void scheduleUpTo(int end)
    {
        for (; m_scheduled < end; ++m_scheduled) {
            const int index = m_scheduled;
            m_futures[index] = QtConcurrent::run(QThreadPool::globalInstance(), [this, index] { return m_work(index); });
        }
    }

    int m_count;
    std::function<Result(int)> m_work;
    int m_window;
    int m_scheduled = 0;
    QList<QFuture<Result>> m_futures;
};

} // namespace quillet

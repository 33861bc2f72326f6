#pragma once

#include "workspace/sourcelistmodel.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

namespace quillet::test {

// Asks for the thumbnails of entries first..last, as a view showing them would, and waits until
// they are ready. False when they are not within the time limit.
inline bool waitForThumbnails(SourceListModel &list, int first, int last, int timeoutMs = 20000)
{
    const int n = list.rowCount();
    list.requestThumbnails(first, last, 0, n);
    QDeadlineTimer deadline(timeoutMs);
    for (;;) {
        bool all = true;
        for (int p = std::max(0, first); p <= std::min(last, n - 1) && all; ++p)
            all = list.data(list.index(p), SourceListModel::ThumbnailReadyRole).toBool();
        if (all)
            return true;
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
}

inline bool waitForAllThumbnails(SourceListModel &list, int timeoutMs = 20000)
{
    return waitForThumbnails(list, 0, list.rowCount() - 1, timeoutMs);
}

} // namespace quillet::test

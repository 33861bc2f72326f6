#include "deferredsync.h"

#include <QFile>
#include <QFileInfo>
#include <QFuture>
#include <QList>
#include <QMutex>
#include <QSet>
#include <QtConcurrent/QtConcurrentRun>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillet {

namespace {
thread_local int t_deferredDepth = 0;
thread_local QSet<QString> *t_deferredFolders = nullptr;
} // namespace

DeferredSync::DeferredSync()
{
    if (t_deferredDepth++ == 0)
        t_deferredFolders = new QSet<QString>;
}

namespace {

// Flushes the file systems holding these folders; runs on a worker thread.
void syncFolders(const QSet<QString> &folders)
{
    QSet<dev_t> synced;
    for (const QString &folder : folders) {
        const int fd = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY);
        if (fd < 0)
            continue;
        struct stat st {};
        if (::fstat(fd, &st) == 0 && !synced.contains(st.st_dev)) {
            ::syncfs(fd);
            synced.insert(st.st_dev);
        }
        ::close(fd);
    }
}

QMutex g_pendingLock;
QList<QFuture<void>> g_pending;

} // namespace

DeferredSync::~DeferredSync()
{
    if (--t_deferredDepth > 0)
        return;
    const QSet<QString> folders = *t_deferredFolders;
    delete t_deferredFolders;
    t_deferredFolders = nullptr;
    if (folders.isEmpty())
        return;
    // The user goes on while the disk catches up; the program waits for it before it ends.
    QMutexLocker lock(&g_pendingLock);
    g_pending.removeIf([](const QFuture<void> &f) { return f.isFinished(); });
    g_pending.append(QtConcurrent::run([folders] { syncFolders(folders); }));
}

void DeferredSync::waitForPending()
{
    QMutexLocker lock(&g_pendingLock);
    for (QFuture<void> &f : g_pending)
        f.waitForFinished();
    g_pending.clear();
}

bool DeferredSync::active()
{
    return t_deferredDepth > 0;
}

void DeferredSync::note(const QString &filePath)
{
    if (t_deferredFolders)
        t_deferredFolders->insert(QFileInfo(filePath).absolutePath());
}

} // namespace quillet

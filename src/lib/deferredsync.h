#pragma once

#include <QString>

namespace quillet {

// Copies are flushed to the disk before they take their name, so a power cut leaves the old file
// or the complete new one. A long run of copies (a Save) can instead flush once at its end: while
// a DeferredSync exists on this thread, copies and journal entries skip their own flush to the
// disk, and the scope's end has every file system written to synced on a worker thread, so the
// user does not wait for the disk. A crash of the program loses nothing either way (the operating
// system holds what was written); waitForPending() at shutdown makes it durable before the end.
class DeferredSync
{
public:
    DeferredSync();
    ~DeferredSync();
    DeferredSync(const DeferredSync &) = delete;
    DeferredSync &operator=(const DeferredSync &) = delete;

    static bool active();
    // Remembers the folder of a file written without its own flush.
    static void note(const QString &filePath);
    // Waits until every sync started by a finished scope is done.
    static void waitForPending();
};

} // namespace quillet

#pragma once

#include "lib/fileutils.h"

#include <QString>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace quillet {

// A SHA-256 fed a block at a time (for a digest taken while the bytes go by, as in a copy).
// Uses libcrypto where the build found it (several times faster than QCryptographicHash of
// Qt 6.4, which matters when a run hashes every photo it copies).
class Sha256
{
public:
    Sha256();
    ~Sha256();
    Sha256(const Sha256 &) = delete;
    Sha256 &operator=(const Sha256 &) = delete;

    void add(const char *data, qint64 size);
    // The digest of everything added, in lower-case hexadecimal; an empty text when the hash
    // failed. Ends the hash.
    QString hex();

private:
    struct State;
    std::unique_ptr<State> d;
};

// The SHA-256 of a copy, worked out on a thread of its own while the copy writes the bytes: the
// sink for lib_CopyFileThrough. One per run, for one copy after another.
class Sha256Worker : public CopySink
{
public:
    Sha256Worker();
    ~Sha256Worker() override;

    // Starts the digest of the next copy.
    void begin();
    void take(const char *data, qint64 size) override;
    void settle() override;
    // The digest of every block taken since begin().
    QString hex();

private:
    void work();

    std::unique_ptr<Sha256> m_sha;
    std::mutex m_lock;
    std::condition_variable m_changed;
    const char *m_data = nullptr;
    qint64 m_size = 0;
    bool m_busy = false;
    bool m_stop = false;
    std::thread m_thread;
};

} // namespace quillet

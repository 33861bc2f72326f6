#pragma once

#include <QString>

#include <memory>

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

} // namespace quillet

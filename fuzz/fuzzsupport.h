#pragma once

#include <QByteArray>
#include <QString>
#include <cstddef>
#include <cstdint>

// Shared by every fuzz target: the process is set up once (a core application, a private
// temporary home so the data folder, thumbnail cache and trash are the fuzzer's own, and a port
// that answers every question with its default without printing), and each input is handed over as
// bytes or as a file in a scratch folder.
namespace quillet::fuzz {

void setUp();
// The private home's scratch folder (created).
QString scratchDir();
// Writes the input into the scratch folder under `name` and returns the path.
QString writeScratch(const QString &name, const uint8_t *data, size_t size);
inline QByteArray bytes(const uint8_t *data, size_t size)
{
    return QByteArray(reinterpret_cast<const char *>(data), qsizetype(size));
}
// A broken promise of the code under test: aborts so that the fuzzer keeps the input.
[[noreturn]] void fail(const char *what);
inline void check(bool condition, const char *what)
{
    if (!condition)
        fail(what);
}

} // namespace quillet::fuzz

// Each target defines this instead of LLVMFuzzerTestOneInput; the macro adds the one-time set-up.
int QuilletFuzzOne(const uint8_t *data, size_t size);

#define QUILLET_FUZZ_TARGET                                                                                 \
    extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)                                \
    {                                                                                                       \
        quillet::fuzz::setUp();                                                                             \
        return QuilletFuzzOne(data, size);                                                                  \
    }

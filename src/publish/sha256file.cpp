#include "sha256file.h"

#include <QCryptographicHash>
#include <QFile>

#ifdef QUILLET_HAVE_LIBCRYPTO
#include <openssl/evp.h>
#include <memory>
#endif

namespace quillet {

namespace {

// Hands the file's contents to `add` a chunk at a time; false when a read fails.
template <typename Add>
bool readChunks(QFile &file, Add add)
{
    QByteArray buffer(1 << 20, Qt::Uninitialized);
    for (;;) {
        const qint64 n = file.read(buffer.data(), buffer.size());
        if (n < 0)
            return false;
        if (n == 0)
            return true;
        add(buffer.constData(), n);
    }
}

#ifdef QUILLET_HAVE_LIBCRYPTO
QString hash(QFile &file)
{
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> ctx(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    if (!ctx || EVP_DigestInit_ex(ctx.get(), EVP_sha256(), nullptr) != 1)
        return QString();
    if (!readChunks(file, [&](const char *data, qint64 n) { EVP_DigestUpdate(ctx.get(), data, size_t(n)); }))
        return QString();
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    if (EVP_DigestFinal_ex(ctx.get(), digest, &size) != 1)
        return QString();
    return QString::fromLatin1(QByteArray(reinterpret_cast<const char *>(digest), int(size)).toHex());
}
#else
QString hash(QFile &file)
{
    QCryptographicHash sha(QCryptographicHash::Sha256);
    if (!readChunks(file, [&](const char *data, qint64 n) { sha.addData(QByteArrayView(data, n)); }))
        return QString();
    return QString::fromLatin1(sha.result().toHex());
}
#endif

} // namespace

QString Sha256OfFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return QString();
    return hash(file);
}

} // namespace quillet

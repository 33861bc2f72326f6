#include "sha256file.h"

#include <QCryptographicHash>
#include <QFile>

#ifdef QUILLET_HAVE_LIBCRYPTO
#include <openssl/evp.h>
#include <memory>
#endif

namespace quillet {

namespace {

constexpr qint64 kChunk = 1 << 20;

#ifdef QUILLET_HAVE_LIBCRYPTO
QString hashWithLibcrypto(QFile &file)
{
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> ctx(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    if (!ctx || EVP_DigestInit_ex(ctx.get(), EVP_sha256(), nullptr) != 1)
        return QString();
    QByteArray buffer(kChunk, Qt::Uninitialized);
    for (;;) {
        const qint64 n = file.read(buffer.data(), buffer.size());
        if (n < 0)
            return QString();
        if (n == 0)
            break;
        EVP_DigestUpdate(ctx.get(), buffer.constData(), size_t(n));
    }
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    if (EVP_DigestFinal_ex(ctx.get(), digest, &size) != 1)
        return QString();
    return QString::fromLatin1(QByteArray(reinterpret_cast<const char *>(digest), int(size)).toHex());
}
#endif

} // namespace

QString Sha256OfFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return QString();
#ifdef QUILLET_HAVE_LIBCRYPTO
    return hashWithLibcrypto(file);
#else
    QCryptographicHash hash(QCryptographicHash::Sha256);
    QByteArray buffer(kChunk, Qt::Uninitialized);
    for (;;) {
        const qint64 n = file.read(buffer.data(), buffer.size());
        if (n < 0)
            return QString();
        if (n == 0)
            break;
        hash.addData(QByteArrayView(buffer.constData(), n));
    }
    return QString::fromLatin1(hash.result().toHex());
#endif
}

} // namespace quillet

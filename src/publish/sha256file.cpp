#include "sha256file.h"

#include <QCryptographicHash>

#ifdef QUILLET_HAVE_LIBCRYPTO
#include <openssl/evp.h>
#endif

namespace quillet {

#ifdef QUILLET_HAVE_LIBCRYPTO
struct Sha256::State
{
    State()
        : ctx(EVP_MD_CTX_new(), EVP_MD_CTX_free)
    {
        ok = ctx && EVP_DigestInit_ex(ctx.get(), EVP_sha256(), nullptr) == 1;
    }
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> ctx;
    bool ok = false;
};

void Sha256::add(const char *data, qint64 size)
{
    d->ok = d->ok && EVP_DigestUpdate(d->ctx.get(), data, size_t(size)) == 1;
}

QString Sha256::hex()
{
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    const bool ok = d->ok && EVP_DigestFinal_ex(d->ctx.get(), digest, &size) == 1;
    d->ok = false;
    return ok ? QString::fromLatin1(QByteArray(reinterpret_cast<const char *>(digest), int(size)).toHex()) : QString();
}
#else
struct Sha256::State
{
    QCryptographicHash sha{QCryptographicHash::Sha256};
    bool ok = true;
};

void Sha256::add(const char *data, qint64 size)
{
    d->sha.addData(QByteArrayView(data, size));
}

QString Sha256::hex()
{
    const bool ok = d->ok;
    d->ok = false;
    return ok ? QString::fromLatin1(d->sha.result().toHex()) : QString();
}
#endif

Sha256::Sha256()
    : d(std::make_unique<State>())
{
}

Sha256::~Sha256() = default;

} // namespace quillet

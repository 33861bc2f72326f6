#include "atomicwrite.h"

#include <QSaveFile>

#include <cerrno>
#include <cstring>

namespace quillet {

QString WriteFileAtomically(const QString &path, const QByteArray &bytes)
{
    QSaveFile out(path);
    if (!out.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return out.errorString();
    errno = 0;
    if (out.write(bytes) != bytes.size()) {
        const int error = errno;
        const QString reason = error != 0 ? QString::fromLocal8Bit(std::strerror(error)) : out.errorString();
        out.cancelWriting();
        return reason;
    }
    if (!out.commit())
        return out.errorString();
    return QString();
}

} // namespace quillet

#include "transfermove.h"

#include "lib/error.h"
#include "lib/fileutils.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace quillet {

namespace {

Error moveError(const QString &why, const QString &source, const QString &target)
{
    return Error(kErrPathFileAccess, QStringLiteral("TransferMoveFile"),
                 QStringLiteral("Could not move file\r\n") + why + QStringLiteral("\r\nSrc=") + source
                     + QStringLiteral("\r\nTgt=") + target);
}

} // namespace

void TransferMoveFile(const QString &source, const QString &target)
{
    const QByteArray from = QFile::encodeName(source);
    const QByteArray to = QFile::encodeName(target);
    if (::rename(from.constData(), to.constData()) == 0)
        return;
    if (errno != EXDEV)
        throw moveError(QString::fromLocal8Bit(std::strerror(errno)), source, target);
    const qint64 size = QFileInfo(source).size();
    lib_CopyFile(source, target, true);
    if (QFileInfo(target).size() != size)
        throw moveError(QStringLiteral("The copy is incomplete"), source, target);
    if (!QFile::remove(source))
        throw moveError(QStringLiteral("The file was copied but the original could not be deleted"), source, target);
}

QString TransferNameProblem(const QString &target)
{
    // The limits of the Linux file systems: 255 bytes a name, 4096 a path with its final NUL.
    constexpr int kNameMax = 255;
    constexpr int kPathMax = 4095;
    if (QFile::encodeName(target).size() > kPathMax)
        return QStringLiteral("the path is too long for the Source Dir");
    for (const QString &element : target.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        if (QFile::encodeName(element).size() > kNameMax)
            return QStringLiteral("the name is too long");
    }
    return QString();
}

} // namespace quillet

#include "thumbnailcache.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QSaveFile>
#include <QUrl>

namespace quillet {

namespace {

QString cacheRoot()
{
    QString base = qEnvironmentVariable("XDG_CACHE_HOME");
    if (base.isEmpty() || !QDir::isAbsolutePath(base))
        base = QDir::homePath() + QStringLiteral("/.cache");
    return base + QStringLiteral("/thumbnails");
}

QString entryName(const QString &path)
{
    const QByteArray md5 = QCryptographicHash::hash(ThumbnailCache::uriOf(path).toUtf8(), QCryptographicHash::Md5);
    return QString::fromLatin1(md5.toHex()) + QStringLiteral(".png");
}

QString mtimeText(const QFileInfo &info)
{
    return QString::number(info.lastModified().toSecsSinceEpoch());
}

} // namespace

QString ThumbnailCache::uriOf(const QString &path)
{
    return QString::fromLatin1(QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toEncoded());
}

QString ThumbnailCache::entryPath(const QString &path)
{
    return cacheRoot() + QStringLiteral("/normal/") + entryName(path);
}

QImage ThumbnailCache::read(const QString &path)
{
    const QFileInfo info(path);
    const QString entry = entryPath(path);
    if (!info.isFile() || !QFileInfo::exists(entry))
        return {};
    QImageReader reader(entry, "png");
    QImage image = reader.read();
    if (image.isNull() || image.text(QStringLiteral("Thumb::URI")) != uriOf(path)
        || image.text(QStringLiteral("Thumb::MTime")) != mtimeText(info))
        return {};
    const QString size = image.text(QStringLiteral("Thumb::Size"));
    if (!size.isEmpty() && size != QString::number(info.size()))
        return {};
    return image;
}

bool ThumbnailCache::write(const QString &path, const QImage &thumbnail)
{
    const QFileInfo info(path);
    if (thumbnail.isNull() || !info.isFile())
        return false;
    const QString dir = cacheRoot() + QStringLiteral("/normal");
    if (!QDir().mkpath(dir))
        return false;
    QFile::setPermissions(cacheRoot(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    QFile::setPermissions(dir, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);

    QImage image = thumbnail;
    image.setText(QStringLiteral("Thumb::URI"), uriOf(path));
    image.setText(QStringLiteral("Thumb::MTime"), mtimeText(info));
    image.setText(QStringLiteral("Thumb::Size"), QString::number(info.size()));
    image.setText(QStringLiteral("Software"), QStringLiteral("Quillet"));
    // Written under a temporary name and renamed, so a reader never sees half a PNG.
    QSaveFile file(dir + QLatin1Char('/') + entryName(path));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    if (!image.save(&file, "png"))
        return false;
    return file.commit();
}

void ThumbnailCache::forget(const QString &path)
{
    const QString name = entryName(path);
    for (const char *size : {"normal", "large", "x-large", "xx-large"})
        QFile::remove(cacheRoot() + QLatin1Char('/') + QLatin1String(size) + QLatin1Char('/') + name);
}

} // namespace quillet

#include "startup.h"

#include "lib/apppaths.h"
#include "lib/debuglog.h"
#include "lib/fileutils.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

namespace quillet::Startup {

QString FormatFormRect(const QRect &rect)
{
    // QRect's right/bottom are inclusive; the stored edges are the exclusive ones.
    return QString::number(rect.y() + rect.height()) + QLatin1Char(';') + QString::number(rect.x())
        + QLatin1Char(';') + QString::number(rect.x() + rect.width()) + QLatin1Char(';')
        + QString::number(rect.y());
}

QRect ParseFormRect(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char(';'));
    if (parts.size() != 4)
        return QRect();
    int edges[4];
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        edges[i] = parts[i].trimmed().toInt(&ok);
        if (!ok)
            return QRect();
    }
    const int bottom = edges[0], left = edges[1], right = edges[2], top = edges[3];
    if (right <= left || bottom <= top)
        return QRect();
    return QRect(left, top, right - left, bottom - top);
}

QString TitleLine(bool portable)
{
    QString title = QLatin1String(AppPaths::kTitle);
    if (portable)
        title += QStringLiteral(" ('Portable' copy)");
    return title;
}

QString VersionLine()
{
    return QStringLiteral("v") + QStringLiteral(QUILLET_VERSION);
}

bool IsFreshInstallation()
{
    return !QFileInfo(AppPaths::dataDir()).isDir();
}

bool MakeDataFolder()
{
    return lib_MakePath(AppPaths::dataDir());
}

void DeleteDebugLog()
{
    QFile::remove(GetDebugLogPath());
}

QString RectToStore(const QRect &frame, bool minimised)
{
    if (minimised || frame.x() < 0 || frame.y() < 0 || !frame.isValid())
        return QString();
    return FormatFormRect(frame);
}

} // namespace quillet::Startup

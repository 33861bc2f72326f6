#include "apppaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace quillet::AppPaths {

QString dataDir()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QLatin1Char('/')
        + QLatin1String(kTitle);
}

QString dataFile(const QString &name)
{
    return dataDir() + QLatin1Char('/') + name;
}

QString userIni() { return dataFile(QLatin1String(kExeBase) + QLatin1String(".ini")); }
QString adminIni() { return dataFile(QLatin1String(kExeBase) + QLatin1String("P.ini")); }
QString databaseFile() { return dataFile(QLatin1String(kExeBase) + QLatin1String("Data.db")); }
QString debugLog() { return dataFile(QLatin1String(kExeBase) + QLatin1String("Debug.txt")); }
QString debugView() { return dataFile(QLatin1String(kExeBase) + QLatin1String("Debug1.txt")); }

QString applicationDir()
{
    if (QCoreApplication::instance())
        return QCoreApplication::applicationDirPath();
    return QDir::currentPath();
}

namespace {
QString g_resourceDirForTests;
} // namespace

void setResourceDirForTests(const QString &dir)
{
    g_resourceDirForTests = dir;
}

QString resourceFile(const QString &name)
{
    if (!g_resourceDirForTests.isEmpty())
        return g_resourceDirForTests + QLatin1Char('/') + name;
    const QString beside = applicationDir() + QLatin1Char('/') + name;
    if (QFileInfo::exists(beside))
        return beside;
    const QString installed = QDir::cleanPath(applicationDir() + QLatin1Char('/') + QStringLiteral(QUILLET_DATA_FROM_BIN)
                                              + QLatin1Char('/') + name);
    return QFileInfo::exists(installed) ? installed : beside;
}

QString placeholderPicture()
{
    return resourceFile(QStringLiteral("ThumbnailPlaceholder.gif"));
}

QString helpPage()
{
    return resourceFile(QLatin1String(kExeBase) + QStringLiteral(".html"));
}

} // namespace quillet::AppPaths

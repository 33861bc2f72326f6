#include "testenv.h"

#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "lib/apppaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace quillet::test {

namespace {
const char *const kVars[4] = {"HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"};
}

TestEnv::TestEnv()
{
    for (int i = 0; i < 4; ++i)
        m_saved[i] = qgetenv(kVars[i]);
    const QString home = m_dir.path() + QStringLiteral("/home");
    QDir().mkpath(home + QStringLiteral("/.local/share"));
    QDir().mkpath(home + QStringLiteral("/.cache"));
    QDir().mkpath(home + QStringLiteral("/.config"));
    qputenv("HOME", home.toUtf8());
    qputenv("XDG_DATA_HOME", (home + QStringLiteral("/.local/share")).toUtf8());
    qputenv("XDG_CACHE_HOME", (home + QStringLiteral("/.cache")).toUtf8());
    qputenv("XDG_CONFIG_HOME", (home + QStringLiteral("/.config")).toUtf8());
}

TestEnv::~TestEnv()
{
    for (int i = 0; i < 4; ++i) {
        if (m_saved[i].isNull())
            qunsetenv(kVars[i]);
        else
            qputenv(kVars[i], m_saved[i]);
    }
}

QString TestEnv::path(const QString &relative) const
{
    return m_dir.path() + QLatin1Char('/') + relative;
}

QString TestEnv::dataDir() const
{
    const QString dir = AppPaths::dataDir();
    QDir().mkpath(dir);
    return dir;
}

bool TestEnv::makeInstallation() const
{
    dataDir();
    if (!FamilyDatabase::Provision(FamilyDatabase::DbPath()))
        return false;
    QDir().mkpath(srcDir());
    QDir().mkpath(tgtDir());
    WriteSetting(QStringLiteral("SrcDir"), srcDir());
    WriteSetting(QStringLiteral("TgtDir"), tgtDir());
    return true;
}

QString TestEnv::writeFile(const QString &relative, const QByteArray &bytes) const
{
    const QString p = path(relative);
    writeBytes(p, bytes);
    return p;
}

void writeBytes(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (f.open(QIODevice::WriteOnly))
        f.write(bytes);
}

QByteArray fileBytes(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

QString TestEnv::corpusDir()
{
    // QUILLET_CORPUS_DIR in the environment wins, so a clone kept elsewhere can still point at the
    // camera files; else the shared folder beside the checkout, as the build found it.
    const QString fromEnvironment = qEnvironmentVariable("QUILLET_CORPUS_DIR");
    const QString dir = fromEnvironment.isEmpty() ? QStringLiteral(QUILLET_CORPUS_DIR) : fromEnvironment;
    return QFileInfo::exists(dir + QStringLiteral("/MANIFEST.csv")) ? dir : QString();
}

QString TestEnv::corpusMissingMessage()
{
    return QStringLiteral("camera corpus not found: set QUILLET_CORPUS_DIR to the folder holding MANIFEST.csv "
                          "(looked in %1)")
        .arg(QStringLiteral(QUILLET_CORPUS_DIR));
}

} // namespace quillet::test

#include "fuzzsupport.h"

#include "lib/userprompt.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>

namespace quillet::fuzz {

namespace {

struct Process
{
    int argc = 1;
    char name[16] = "quillet-fuzz";
    char *argv[2] = {name, nullptr};
    QTemporaryDir home;
    // Nobody answers a fuzzer: every question takes its default, and nothing is printed, so that
    // the fuzzer's own output stays readable.
    QuietPrompt port{false};
    QCoreApplication *app = nullptr;

    Process()
    {
        const QString root = home.path();
        for (const char *sub : {"/.local/share", "/.cache", "/.config", "/scratch"})
            QDir().mkpath(root + QLatin1String(sub));
        qputenv("HOME", root.toUtf8());
        qputenv("XDG_DATA_HOME", (root + QStringLiteral("/.local/share")).toUtf8());
        qputenv("XDG_CACHE_HOME", (root + QStringLiteral("/.cache")).toUtf8());
        qputenv("XDG_CONFIG_HOME", (root + QStringLiteral("/.config")).toUtf8());
        app = new QCoreApplication(argc, argv);
        QCoreApplication::setApplicationName(QStringLiteral("Quillet"));
        setPrompt(&port);
    }
};

Process *g_process = nullptr;

} // namespace

void setUp()
{
    if (!g_process)
        g_process = new Process; // lives as long as the fuzzer; never torn down mid-run
}

QString scratchDir()
{
    setUp();
    return g_process->home.path() + QStringLiteral("/scratch");
}

QString writeScratch(const QString &name, const uint8_t *data, size_t size)
{
    const QString path = scratchDir() + QLatin1Char('/') + name;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        fail("cannot write the scratch file");
    file.write(reinterpret_cast<const char *>(data), qint64(size));
    return path;
}

void fail(const char *what)
{
    std::fprintf(stderr, "fuzz check failed: %s\n", what);
    std::abort();
}

} // namespace quillet::fuzz

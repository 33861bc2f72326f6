// A batchfile from another machine, any bytes: the reader takes it apart without ever failing,
// and when it can be replayed, every entry is applied to a Source Dir and Target Dir of this
// process's own. Whatever the operands say, nothing outside those two folders may change: a
// sentinel photo beside them, reached by "..", absolute paths or a symbolic link inside the
// Source Dir, must stay as it was.
#include "fuzzsupport.h"

#include "app/settingsstore.h"
#include "lib/appstate.h"
#include "sync/batchfilereader.h"
#include "sync/batchfilereplay.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QBuffer>
#include <QImage>

using namespace quillet;

namespace {

const QByteArray kSentinel = "sentinel photo, never to be touched";

QByteArray smallJpeg()
{
    static const QByteArray bytes = [] {
        QImage image(16, 8, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        QByteArray out;
        QBuffer buffer(&out);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "JPG");
        return out;
    }();
    return bytes;
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        fuzz::fail("cannot prepare the sandbox");
    f.write(bytes);
}

// The sandbox: src with photos, a sub-folder and a link to the outside, tgt with a family folder,
// and "outside" with the sentinel, next to both.
QString prepareSandbox()
{
    const QString root = fuzz::scratchDir() + QStringLiteral("/replay");
    QDir(root).removeRecursively();
    writeFile(root + QStringLiteral("/src/IMG_0001.jpg"), smallJpeg());
    writeFile(root + QStringLiteral("/src/sub/IMG_0002.jpg"), smallJpeg());
    writeFile(root + QStringLiteral("/tgt/Anna Smith/IMG_0001.jpg"), smallJpeg());
    writeFile(root + QStringLiteral("/outside/sentinel.jpg"), kSentinel);
    QFile::link(root + QStringLiteral("/outside"), root + QStringLiteral("/src/escape"));
    QFile::link(root + QStringLiteral("/outside/sentinel.jpg"), root + QStringLiteral("/tgt/Anna Smith/linked.jpg"));
    return root;
}

QStringList listing(const QString &dir)
{
    QStringList out;
    QDirIterator it(dir, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        out << it.next();
    out.sort();
    return out;
}

} // namespace

int QuilletFuzzOne(const uint8_t *data, size_t size)
{
    const BatchfileContent content = BatchfileReader::parse(fuzz::bytes(data, size));
    fuzz::check(content.ok() == content.problemText.isEmpty(), "a problem is described");
    if (!content.ok() || content.entries.size() > 64)
        return 0;

    const QString root = prepareSandbox();
    const QStringList outsideBefore = listing(root + QStringLiteral("/outside"));
    const QStringList rootBefore = QDir(root).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    ReplaySettings settings;
    settings.srcDir = root + QStringLiteral("/src");
    settings.tgtDir = root + QStringLiteral("/tgt");
    settings.pcName = QStringLiteral("Fuzz");
    ReplayOutcome outcome;
    BatchfileReplay replay(settings, outcome);
    appState().cancel = false;
    for (const BatchfileEntry &entry : content.entries) {
        const QString result = replay.apply(entry, false);
        fuzz::check(!result.isEmpty(), "every entry has a result");
    }

    QFile sentinel(root + QStringLiteral("/outside/sentinel.jpg"));
    fuzz::check(sentinel.open(QIODevice::ReadOnly) && sentinel.readAll() == kSentinel, "the sentinel is untouched");
    fuzz::check(listing(root + QStringLiteral("/outside")) == outsideBefore, "nothing appears or goes outside");
    fuzz::check(QDir(root).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot) == rootBefore,
                "nothing appears beside the two folders");
    return 0;
}

QUILLET_FUZZ_TARGET

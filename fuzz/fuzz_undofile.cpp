// The undo file after a crash or a hand edit: any bytes are read at start-up. A file that cannot
// be read is deleted and the session starts without levels; one that can is written back and
// read again to the same levels.
#include "fuzzsupport.h"

#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/error.h"
#include "workspace/clsundos.h"
#include "workspace/workspace.h"

#include <QDir>
#include <QFile>

using namespace quillet;

namespace {

struct Session
{
    FamilyDatabase db;
    std::unique_ptr<Workspace> ws;
    Session()
    {
        QDir().mkpath(AppPaths::dataDir());
        WriteSetting(QStringLiteral("PCname"), QStringLiteral("Fuzz"));
        WriteSetting(QStringLiteral("Thumbnails"), QStringLiteral("0"));
        ws = std::make_unique<Workspace>(db, PhotoServices::Default());
        ws->CreateUndos();
    }
};

} // namespace

int QuilletFuzzOne(const uint8_t *data, size_t size)
{
    static Session *session = new Session;
    clsUndos &undos = session->ws->undos();
    const QString path = clsUndos::FilePath();
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            fuzz::fail("cannot write the undo file");
        file.write(reinterpret_cast<const char *>(data), qint64(size));
    }
    undos.LoadFromFile();
    const int top = undos.UndoTop();
    const int levels = undos.UndoLevelMax();
    fuzz::check(top >= 0 && top <= clsUndos::kCapacity && levels >= 0 && levels <= top, "counts in range");
    if (top == 0) {
        fuzz::check(levels == 0, "no items, no levels");
        return 0;
    }
    fuzz::check(QFile::exists(path), "a readable file is kept");
    for (int i = 1; i <= top; ++i)
        fuzz::check(undos.ItemUndoLevel(i) >= 1 && undos.ItemUndoLevel(i) <= levels, "item levels in range");
    undos.SaveToFile();
    undos.LoadFromFile();
    fuzz::check(undos.UndoTop() == top && undos.UndoLevelMax() == levels, "written back and read again alike");
    return 0;
}

QUILLET_FUZZ_TARGET

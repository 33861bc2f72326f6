// Runs one Save of every listed photo to every family in the data folder of the environment it
// inherits, and kills itself (SIGKILL, no clean-up) once the given number of copies is made; 0
// runs to the end; -1 kills itself as soon as the Save has returned. The crash test checks what such a death leaves on disk.
#include "headlessworkspace.h"
#include "sync/batchfilejournal.h"
#include "workspace/allocationsave.h"

#include <QGuiApplication>
#include <csignal>

using namespace quillet;

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    const int killAfter = argc > 1 ? QByteArray(argv[1]).toInt() : 0;
    FamilyDatabase db;
    if (!db.OpenDatabase())
        return 2;
    Batchfile::InitBatchfile();
    const auto ws = quillet::test::headlessWorkspace(db);
    ws->LoadSource(true, false);
    ws->LoadFamilies(false, false, false, false, false);
    for (int i = 0; i < ws->sourceList().rowCount(); ++i)
        ws->sourceList().setSelected(i, true);
    for (int i = 0; i < ws->familyList().count(); ++i)
        ws->familyList().setSelected(i, true);
    int copies = 0;
    QObject::connect(ws.get(), &Workspace::statusText, [&](const QString &text) {
        if (text.contains(QLatin1String(" copied (of ")) && ++copies == killAfter)
            ::raise(SIGKILL);
    });
    AllocationSave save(*ws);
    save.Save();
    if (killAfter < 0)
        ::raise(SIGKILL); // nothing after the Save itself writes the undo file
    ws->undos().SaveToFile();
    return 0;
}

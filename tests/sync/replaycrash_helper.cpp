// Replays the batchfiles waiting in the data folder of the environment it inherits, answering Yes
// to every question, and kills itself (SIGKILL, no clean-up) once the given number of entries is
// replayed; 0 runs to the end. The crash test checks what such a death leaves on disk.
#include "support/killingprompt.h"
#include "sync/batchfilejournal.h"
#include "sync/batchfileprocessing.h"

#include <QGuiApplication>

using namespace quillet;
using namespace quillet::test;

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    KillingPrompt port;
    port.killAt = argc > 1 ? QByteArray(argv[1]).toInt() : 0;
    setPrompt(&port);
    Batchfile::InitBatchfile([] { BatchfileProcessing(nullptr).ProcessBatchfiles(); });
    setPrompt(nullptr);
    return 0;
}

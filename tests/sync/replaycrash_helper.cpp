// Replays the batchfiles waiting in the data folder of the environment it inherits, answering Yes
// to every question, and kills itself (SIGKILL, no clean-up) once the given number of entries is
// replayed; 0 runs to the end. The crash test checks what such a death leaves on disk.
#include "lib/userprompt.h"
#include "sync/batchfilejournal.h"
#include "sync/batchfileprocessing.h"

#include <QGuiApplication>
#include <csignal>

using namespace quillet;

namespace {

class YesPrompt final : public UserPrompt
{
public:
    int killAfter = 0;
    bool showMessage(const QString &, bool) override { return true; }
    void progressShow(const QString &) override {}
    void progressInit(int) override {}
    void progressUpdate(int position, int) override
    {
        if (killAfter > 0 && position == killAfter)
            ::raise(SIGKILL);
    }
    void progressHide() override {}
    QString browseForFolder(const QString &, const QString &) override { return {}; }
    QString openFileDialog(const QString &, const QString &, const QString &, const QString &) override { return {}; }
    QString saveFileDialog(const QString &, const QString &, const QString &, const QString &) override { return {}; }
    QString typedText(const QString &, const QString &) override { return {}; }
    bool openWithDefaultProgram(const QString &) override { return true; }
    bool waitForWindow(const QString &, int) override { return false; }
    void setClipboardText(const QString &) override {}
    void beep() override {}
    bool shiftHeld() override { return false; }
    void restoreActiveWindow() override {}
    void processEvents() override {}
    void setBusy(bool) override {}
};

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    YesPrompt port;
    port.killAfter = argc > 1 ? QByteArray(argv[1]).toInt() : 0;
    setPrompt(&port);
    Batchfile::InitBatchfile([] { BatchfileProcessing(nullptr).ProcessBatchfiles(); });
    setPrompt(nullptr);
    return 0;
}

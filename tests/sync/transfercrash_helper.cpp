// Runs one import in the data folder of the environment it inherits: "unalloc" imports the
// unallocated photos (with the database after them), "database" the database alone. With a count
// it kills itself (SIGKILL, no clean-up) when the progress reaches that many files; the crash test
// also kills it from outside at chosen moments. Every question is answered Yes.
#include "app/familydatabase.h"
#include "lib/userprompt.h"
#include "sync/databasetransfer.h"
#include "sync/unallocatedtransfer.h"

#include <QCoreApplication>
#include <csignal>

using namespace quillet;

namespace {

class KillingPrompt final : public UserPrompt
{
public:
    int killAt = 0;
    bool showMessage(const QString &, bool) override { return true; }
    void progressShow(const QString &) override {}
    void progressInit(int) override {}
    void progressUpdate(int position, int) override
    {
        if (killAt > 0 && position == killAt)
            ::raise(SIGKILL);
    }
    void progressHide() override {}
    QString browseForFolder(const QString &, const QString &) override { return {}; }
    QString openFileDialog(const QString &, const QString &, const QString &, const QString &) override { return {}; }
    QString saveFileDialog(const QString &, const QString &, const QString &, const QString &) override { return {}; }
    QString typedText(const QString &, const QString &) override { return {}; }
    bool openWithDefaultProgram(const QString &) override { return false; }
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
    QCoreApplication app(argc, argv);
    KillingPrompt port;
    port.killAt = argc > 2 ? QByteArray(argv[2]).toInt() : 0;
    setPrompt(&port);
    FamilyDatabase db;
    if (!db.OpenDatabase())
        return 2;
    if (argc > 1 && QByteArray(argv[1]) == "database") {
        ImportFamilyDatabase(db);
    } else {
        UnallocatedTransfer transfer(db, {});
        transfer.ImportUnalloc();
    }
    db.CloseDatabase();
    setPrompt(nullptr);
    return 0;
}

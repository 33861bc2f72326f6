// Runs one import in the data folder of the environment it inherits: "unalloc" imports the
// unallocated photos (with the database after them), "database" the database alone. With a count
// it kills itself (SIGKILL, no clean-up) when the progress reaches that many files; the crash test
// also kills it from outside at chosen moments. Every question is answered Yes.
#include "app/familydatabase.h"
#include "support/killingprompt.h"
#include "sync/databasetransfer.h"
#include "sync/unallocatedtransfer.h"

#include <QCoreApplication>

using namespace quillet;
using namespace quillet::test;

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

#include "transferfixture.h"

#include "lib/appstate.h"
#include "support/testjpeg.h"
#include "sync/batchfileprocessing.h"
#include "sync/batchfilejournal.h"
#include "sync/batchfiletransfer.h"
#include "sync/databasetransfer.h"
#include "sync/portablecopyimport.h"
#include "sync/unallocatedtransfer.h"
#include "workspace/clsundos.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QMap>
#include <QTest>

using namespace quillet;
using namespace quillet::test;

namespace {

// Every file below `root` with a digest of its bytes.
QMap<QString, QByteArray> tree(const QString &root)
{
    QMap<QString, QByteArray> out;
    QDirIterator it(root, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        out[QDir(root).relativeFilePath(path)] = QCryptographicHash::hash(fileBytes(path), QCryptographicHash::Sha1);
    }
    return out;
}

QStringList names(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files, QDir::Name);
}

QString importBatchfiles(FamilyDatabase &db)
{
    BatchfileTransfer transfer;
    transfer.importDatabase = [&db] { return ImportFamilyDatabase(db); };
    transfer.refresh = [&db] { BatchfileProcessing(&db).ProcessBatchfiles(); };
    return transfer.ImportBatchfiles();
}

} // namespace

// Work travelling between installations the way a centre uses them: unallocated photos and the
// families from A to B, B's allocations back to A through the journal; a portable copy's work
// through A to B.
class TestTransferRoundTrip : public QObject
{
    Q_OBJECT

    std::unique_ptr<TwoPcFixture> m_f;

    void photos(const QString &srcDir, int count)
    {
        for (int i = 1; i <= count; ++i) {
            TestJpeg want;
            want.size = QSize(48 + 16 * i, 48);
            want.seed = i;
            writeBytes(srcDir + QStringLiteral("/P%1.jpg").arg(i), encodeJpeg(testPicture(want.size, i), 85));
        }
    }

private Q_SLOTS:
    void init()
    {
        m_f = std::make_unique<TwoPcFixture>();
        QVERIFY(m_f->install());
        appState().cancel = false;
        appState().isPortableCopy = false;
        for (const PcHome *pc : {&m_f->b, &m_f->a}) {
            pc->activate();
            WriteSetting(QStringLiteral("CreateBatchs"), QStringLiteral("1"));
        }
    }
    void cleanup()
    {
        m_f.reset();
        appState().isPortableCopy = false;
        Batchfile::SetCurrentPath(QString());
    }

    void photosAllocatedOnBComeBackToA()
    {
        PcHome &a = m_f->a, &b = m_f->b;
        photos(a.src(), 3);
        {
            FamilyDatabase db;
            QVERIFY(db.OpenDatabase());
            addFamily(db, 3, QStringLiteral("Ann"));
            addFamily(db, 5, QStringLiteral("Bob"));
            UnallocatedTransfer transfer(db, {});
            QCOMPARE(transfer.ExportUnalloc({a.src() + "/P1.jpg", a.src() + "/P2.jpg", a.src() + "/P3.jpg"}),
                     QStringLiteral("3 files exported\r\nDatabase exported"));
        }
        b.activate();
        {
            FamilyDatabase db;
            QVERIFY(db.OpenDatabase());
            m_f->port.answer(true); // import the files
            QCOMPARE(UnallocatedTransfer(db, {}).ImportUnalloc(), QStringLiteral("3 files imported\r\nDatabase imported"));
            allocate(db, {{{"P1.jpg", "P2.jpg"}, 3}, {{"P3.jpg"}, 5}});
            m_f->port.answer(true); // create the transfer folder
            BatchfileTransfer transfer;
            transfer.exportDatabase = [&db] { return ExportFamilyDatabase(db); };
            QCOMPARE(transfer.ExportBatchfiles().section(QStringLiteral("\r\n"), 0, 0), QStringLiteral("1 file exported"));
        }
        a.activate();
        {
            FamilyDatabase db;
            QVERIFY(db.OpenDatabase());
            m_f->port.answer(true); // process B's batchfile
            QCOMPARE(importBatchfiles(db).section(QStringLiteral("\r\n"), 0, 0), QStringLiteral("1 file imported"));
        }
        QCOMPARE(tree(a.tgt()).keys(), (QStringList{"Ann/P1.jpg", "Ann/P2.jpg", "Bob/P3.jpg"}));
        QCOMPARE(tree(a.tgt()), tree(b.tgt()));
        QCOMPARE(names(a.src()), (QStringList{"P1(#3#).jpg", "P2(#3#).jpg", "P3(#5#).jpg"}));
        QCOMPARE(names(b.src()), names(a.src()));
        QCOMPARE(m_f->port.unexpectedQuestions, 0);
    }

    // A portable copy belonging to A takes the photos that A and B have on a trip, turns two and
    // allocates one of them; its work comes home to A, which sends it on to B. All three
    // installations end alike: the same target trees, the same names and bytes in the Source Dir.
    void portableCopyWorkReachesAllInstallations()
    {
        PcHome &a = m_f->a, &b = m_f->b;
        const QString device = m_f->env.path(QStringLiteral("device"));
        const QString originals = device + QStringLiteral("/Originals");
        photos(a.src(), 3);
        {
            FamilyDatabase db;
            QVERIFY(db.OpenDatabase());
            addFamily(db, 3, QStringLiteral("Ann"));
            UnallocatedTransfer transfer(db, {});
            QVERIFY(transfer.ExportUnalloc({a.src() + "/P1.jpg", a.src() + "/P2.jpg", a.src() + "/P3.jpg"})
                        .startsWith(QLatin1String("3 files exported")));
        }
        b.activate();
        {
            FamilyDatabase db;
            QVERIFY(db.OpenDatabase());
            m_f->port.answer(true); // import the files
            QVERIFY(UnallocatedTransfer(db, {}).ImportUnalloc().startsWith(QLatin1String("3 files imported")));
        }
        a.activate();
        const QString dbOfA = FamilyDatabase::DbPath();
        // The portable copy: its data folder on the device, its administrator file, A's families,
        // the same photos.
        qputenv("XDG_DATA_HOME", device.toUtf8());
        qputenv("HOME", (m_f->env.root() + "/P/home").toUtf8());
        QCOMPARE(AppPaths::dataDir(), device + QStringLiteral("/Quillet"));
        QVERIFY(QDir().mkpath(AppPaths::dataDir()));
        QVERIFY(QFile::copy(dbOfA, FamilyDatabase::DbPath()));
        writeBytes(AppPaths::adminIni(), "[Settings]\r\nPCname=A\r\nCreateBatchs=1\r\nPortCopyOrigCopyDir="
                                             + originals.toUtf8() + "\r\n");
        const QString pSrc = m_f->env.path(QStringLiteral("P/src")), pTgt = m_f->env.path(QStringLiteral("P/tgt"));
        QDir().mkpath(pTgt);
        for (const auto &[key, value] : QList<QPair<QString, QString>>{
                 {"SrcDir", pSrc}, {"TgtDir", pTgt}, {"Thumbnails", "0"}, {"SrcDirInclSubs", "1"}})
            WriteSetting(key, value);
        photos(pSrc, 3);
        QCOMPARE(ReadSetting(QStringLiteral("PCname")), QStringLiteral("A"));
        QVERIFY(IsPortableCopy());
        {
            FamilyDatabase db;
            QVERIFY(db.OpenDatabase());
            allocate(db, {{{"P1.jpg", "P3.jpg"}, kTurn}, {{"P1.jpg", "P2.jpg"}, 3}});
        }
        QCOMPARE(names(originals), (QStringList{"P1.jpg", "P2.jpg"}));
        const QByteArray turnedP1 = fileBytes(originals + "/P1.jpg"), turnedP3 = fileBytes(pSrc + "/P3.jpg");
        QVERIFY(turnedP1 != fileBytes(a.src() + "/P1.jpg"));
        QVERIFY(QFileInfo::exists(AppPaths::dataFile(QStringLiteral("_Batchfile_999999999999_A.log"))));
        QVERIFY(QFileInfo::exists(clsUndos::FilePath()));

        // Home on A: the photos into the Source Dir, the journal carried out here and adopted.
        appState().isPortableCopy = false;
        a.activate();
        WriteSetting(QStringLiteral("PortableCopyXfrDir"), device + QStringLiteral("/Quillet"));
        m_f->port.answer(true); // the device
        m_f->port.answer(true); // its files
        {
            FamilyDatabase db;
            QVERIFY(db.OpenDatabase());
            const QString imported = PortableCopyImport({}, &db).ImportFromPortableCopy();
            QVERIFY2(imported == QStringLiteral("2 files imported"), qPrintable(m_f->port.texts().join("\n")));
        }
        QCOMPARE(tree(a.tgt()), tree(pTgt));
        QCOMPARE(names(a.src()), (QStringList{"P1(#3#).jpg", "P2(#3#).jpg", "P3.jpg"}));
        QCOMPARE(fileBytes(a.src() + "/P1(#3#).jpg"), turnedP1); // came back turned, not turned again
        QCOMPARE(fileBytes(a.src() + "/P3.jpg"), turnedP3);      // turned here as on the device
        QVERIFY(BatchfileProcessing::FindBatchfiles(QStringLiteral("A")).isEmpty());
        // The device's journal is this PC's now; the device keeps no undo file of the work.
        const QStringList journals = QDir(AppPaths::dataDir()).entryList({"_Batchfile_*_A.log"}, QDir::Files);
        QCOMPARE(journals.size(), 1);
        QVERIFY(fileBytes(AppPaths::dataFile(journals.first())).contains("CS\r\nP1.jpg\r\nAnn\\P1.jpg\r\nNS\r\nP1.jpg\r\nP1(#3#).jpg"));
        QCOMPARE(QDir(device + "/Quillet").entryList({"_Undos_*"}, QDir::Files), QStringList());
        m_f->port.answer(true); // create the transfer folder
        QCOMPARE(BatchfileTransfer().ExportBatchfiles().section(QStringLiteral("\r\n"), 0, 0),
                 QStringLiteral("1 file exported"));

        b.activate();
        {
            FamilyDatabase db;
            QVERIFY(db.OpenDatabase());
            m_f->port.answer(true); // process A's (the portable copy's) batchfile
            QCOMPARE(importBatchfiles(db).section(QStringLiteral("\r\n"), 0, 0), QStringLiteral("1 file imported"));
        }
        QCOMPARE(tree(b.tgt()).keys(), (QStringList{"Ann/P1.jpg", "Ann/P2.jpg"}));
        QCOMPARE(tree(b.tgt()), tree(pTgt));
        QCOMPARE(tree(b.src()), tree(a.src()));
        QCOMPARE(m_f->port.unexpectedQuestions, 0);
    }

    // An import cut off after the journal was carried out here but before it left the device: the
    // next import takes it over without turning a photo twice or copying anything again.
    void interruptedImportCarriesOutOnce()
    {
        PcHome &a = m_f->a;
        photos(a.src(), 2);
        {
            FamilyDatabase db;
            QVERIFY(db.OpenDatabase());
            addFamily(db, 3, QStringLiteral("Ann"));
        }
        const QString xfr = m_f->env.path(QStringLiteral("device/Quillet"));
        writeBytes(xfr + "/quillet.ini", "[Settings]\r\nPortCopyOrigCopyDir=" + xfr.toUtf8() + "/Originals\r\n");
        QDir().mkpath(xfr + "/Originals");
        const QByteArray journal = "C:\\src\r\nC:\\tgt\r\nNumber of times processed: 0\r\n"
                                   "RSR\r\nP2.jpg\r\nRSR\r\nP1.jpg\r\nCS\r\nP1.jpg\r\nAnn\\P1.jpg\r\nNS\r\nP1.jpg\r\nP1(#3#).jpg\r\n";
        const QString name = QStringLiteral("_Batchfile_241103101500_A.log");
        writeBytes(xfr + "/" + name, journal);
        WriteSetting(QStringLiteral("PortableCopyXfrDir"), xfr);
        const QByteArray unturned = fileBytes(a.src() + "/P1.jpg"), unturnedP2 = fileBytes(a.src() + "/P2.jpg");
        {
            FamilyDatabase db;
            QVERIFY(db.OpenDatabase());
            // The first import carries the journal out, then is cut off: its batchfile is put back
            // on the device as if the move had never happened.
            m_f->port.answer(true);
            m_f->port.answer(true);
            QCOMPARE(PortableCopyImport({}, &db).ImportFromPortableCopy(), QStringLiteral("0 files imported"));
            const QByteArray turned = fileBytes(a.src() + "/P1(#3#).jpg");
            QVERIFY(!turned.isEmpty() && turned != unturned);
            QCOMPARE(fileBytes(a.tgt() + "/Ann/P1.jpg"), turned);
            const QByteArray turnedP2 = fileBytes(a.src() + "/P2.jpg");
            QVERIFY(turnedP2 != unturnedP2);
            QVERIFY(QFile::rename(AppPaths::dataFile(name), xfr + "/" + name));
            m_f->port.answer(true);
            m_f->port.answer(true);
            m_f->port.answer(false); // the sources not found: not now
            QCOMPARE(PortableCopyImport({}, &db).ImportFromPortableCopy(), QStringLiteral("0 files imported"));
            QCOMPARE(fileBytes(a.src() + "/P1(#3#).jpg"), turned);
            QCOMPARE(fileBytes(a.tgt() + "/Ann/P1.jpg"), turned);
            QCOMPARE(fileBytes(a.src() + "/P2.jpg"), turnedP2);
        }
        QCOMPARE(fileBytes(AppPaths::dataFile(name)), journal);
        QVERIFY(!QFileInfo::exists(xfr + "/" + name));

        // Stopped by the user in the middle of a journal: it stays on the device, and the next
        // import finishes it.
        const QString second = QStringLiteral("_Batchfile_241104101500_A.log");
        writeBytes(xfr + "/" + second, "C:\\src\r\nC:\\tgt\r\nNumber of times processed: 0\r\n"
                                       "CS\r\nP2.jpg\r\nAnn\\P2.jpg\r\nNS\r\nP2.jpg\r\nP2(#3#).jpg\r\n");
        {
            FamilyDatabase db;
            QVERIFY(db.OpenDatabase());
            m_f->port.cancelAtPosition = 1;
            m_f->port.answer(true);
            m_f->port.answer(true);
            QCOMPARE(PortableCopyImport({}, &db).ImportFromPortableCopy(), QStringLiteral("0 files imported"));
            QVERIFY(m_f->port.texts().filter(QStringLiteral("The import was stopped. 1 batchfile of the Portable Copy")).size() == 1);
            QVERIFY(QFileInfo::exists(xfr + "/" + second));
            QVERIFY(QFileInfo::exists(a.src() + "/P2.jpg"));
            m_f->port.cancelAtPosition = 0;
            m_f->port.answer(true);
            m_f->port.answer(true);
            QCOMPARE(PortableCopyImport({}, &db).ImportFromPortableCopy(), QStringLiteral("0 files imported"));
        }
        QVERIFY(!QFileInfo::exists(xfr + "/" + second));
        QCOMPARE(names(a.src()), (QStringList{"P1(#3#).jpg", "P2(#3#).jpg"}));
        QCOMPARE(names(a.tgt() + "/Ann"), (QStringList{"P1.jpg", "P2.jpg"}));
        QCOMPARE(m_f->port.unexpectedQuestions, 0);
    }
};

QTEST_GUILESS_MAIN(TestTransferRoundTrip)
#include "tst_transferroundtrip.moc"

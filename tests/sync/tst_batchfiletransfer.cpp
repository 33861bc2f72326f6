#include "replayfixture.h"
#include "transferfixture.h"

#include "../workspace/allocationfixture.h"
#include "lib/fileutils.h"
#include "sync/batchfiletransfer.h"

using namespace quillet;
using namespace quillet::test;

namespace {

QStringList names(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

void copyTree(const QString &from, const QString &to)
{
    QDirIterator it(from, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QString target = to + "/" + QDir(from).relativeFilePath(path);
        QDir().mkpath(QFileInfo(target).absolutePath());
        QFile::copy(path, target);
    }
}

} // namespace

// Export and import of batchfiles through the Batch Transfer Dir, and two PCs kept in step.
class TestBatchfileTransfer : public QObject
{
    Q_OBJECT

    std::unique_ptr<ReplayFixture> f;
    QString m_xfr;

    QString xfr(const QString &rel = QString()) const { return m_xfr + "/Batchfiles" + (rel.isEmpty() ? QString() : "/" + rel); }
    QString ownClosed() const
    {
        return f->batchfile({"DS", "A.jpg"}, 0, "_Batchfile_161116204830_PC1.log");
    }

private Q_SLOTS:
    void init()
    {
        f = std::make_unique<ReplayFixture>();
        m_xfr = f->env.path("xfr");
        WriteSetting(QStringLiteral("BatchXfrDir"), m_xfr);
    }
    void cleanup() { f.reset(); }

    void nothingToExportIsZeroFiles()
    {
        QDir().mkpath(xfr());
        QString status;
        BatchfileTransfer transfer;
        transfer.status = [&](const QString &text) { status = text; };
        QCOMPARE(transfer.ExportBatchfiles(), "0 files exported");
        QCOMPARE(status, "0 files exported");
        QCOMPARE(f->port.messages().last().style, int(MsgStyle::Info));
        QCOMPARE(f->port.lastText(), "0 files exported");
    }

    void missingTransferFolder_data()
    {
        QTest::addColumn<QString>("setting"); // empty: the test's own transfer folder, not made yet
        QTest::addColumn<QList<bool>>("answers");
        QTest::addColumn<bool>("created");
        QTest::newRow("created") << "" << QList<bool>{true} << true;
        QTest::newRow("declined") << "" << QList<bool>{false} << false;
        QTest::newRow("drive unplugged") << "/media/nobody/UNPLUGGED/transfer" << QList<bool>{} << false;
    }
    void missingTransferFolder()
    {
        QFETCH(QString, setting);
        QFETCH(QList<bool>, answers);
        QFETCH(bool, created);
        if (!setting.isEmpty())
            WriteSetting(QStringLiteral("BatchXfrDir"), setting);
        const QString folder = setting.isEmpty() ? xfr() : setting + "/Batchfiles";
        ownClosed();
        BatchfileTransfer transfer;
        QVERIFY(transfer.ImportBatchfiles().isEmpty());
        for (bool a : answers)
            f->port.answer(a);
        QCOMPARE(transfer.ExportBatchfiles().isEmpty(), !created);
        const QString drive = "Batch Transfer Dir drive (" + lib_DrivePart(folder) + ") does not exist";
        const QString missing = "Batch Transfer Dir (" + folder + ") not found.";
        QStringList texts{drive, drive};
        if (setting.isEmpty())
            texts = QStringList{missing, missing + QStringLiteral(" Do you want to create it?")};
        QCOMPARE(f->port.texts().mid(0, 2), texts);
        QCOMPARE(QFileInfo(folder).isDir(), created);
    }

    void exportClosesArchivesAndMovesOnlyThisPcsFiles()
    {
        QDir().mkpath(xfr());
        Batchfile::SetBatchfileName(false);
        {
            BatchfileWriter writer;
            writer.entry("DS", {"B.jpg"});
        }
        const QString closed = ownClosed();
        const QString otherCase = f->batchfile({}, 0, "_Batchfile_161116204831_pc1.log");
        const QString other = f->batchfile({}, 0, "_Batchfile_161116204830_PC2.log");
        f->env.writeFile("home/.local/share/Quillet/_Flag_SrcDirChg.log", "/old\r\n/new\r\n");
        BatchfileTransfer transfer;
        QCOMPARE(transfer.ExportBatchfiles(), "3 files exported");
        const QStringList moved = names(xfr());
        QCOMPARE(moved.size(), 4);
        QVERIFY(moved.contains(QFileInfo(closed).fileName()));
        QVERIFY(moved.contains(QFileInfo(otherCase).fileName()));
        QVERIFY(moved.contains("_Flag_SrcDirChg.log"));
        QVERIFY(!moved.contains("_Batchfile_999999999999_PC1.log")); // closed first, under its time stamp
        QVERIFY(QFileInfo::exists(other));
        QVERIFY(!QFileInfo::exists(closed));
        QVERIFY(!QFileInfo::exists(Batchfile::CurrentName("PC1")));
        QCOMPARE(f->doneFiles().size(), 3);
        for (const QString &name : f->doneFiles())
            QVERIFY(moved.contains(name.mid(10)));
    }

    void exportNeverOverwritesAndKeepsEveryArchiveCopy()
    {
        QDir().mkpath(xfr());
        const QString closed = ownClosed();
        const QByteArray waiting = "a file of the same name, not collected yet";
        f->env.writeFile("xfr/Batchfiles/" + QFileInfo(closed).fileName(), waiting);
        BatchfileTransfer transfer;
        QVERIFY(transfer.ExportBatchfiles().startsWith("1 file exported\r\n1 file left in "));
        QVERIFY(transfer.ExportBatchfiles().startsWith("1 file exported\r\n"));
        QCOMPARE(fileBytes(xfr(QFileInfo(closed).fileName())), waiting);
        QVERIFY(QFileInfo::exists(closed));
        const QStringList archive = f->doneFiles();
        QCOMPARE(archive.size(), 2);
        QCOMPARE(archive.at(1), archive.at(0).left(10) + "b" + archive.at(0).mid(10));
    }

    void importTakesOnlyOtherPcsCompleteBatchfiles()
    {
        QDir().mkpath(xfr());
        const QByteArray complete = "S\r\nT\r\nNumber of times processed: 0\r\n";
        const QStringList taken{"_Batchfile_161116204830_PC2.log", "_Batchfile_161116204831_PC3.log"};
        const QStringList left{"_Batchfile_161116204830_pc1.log",              // this PC's own, any case
                               "_Batchfile_161116204832_PC2.sync-conflict-20161116-101010-ABCDEFG.log",
                               ".syncthing._Batchfile_161116204833_PC2.log.tmp",
                               "_Batchfile_161116204834_PC2.log"};             // still arriving
        for (const QString &name : taken + left.mid(0, 3))
            f->env.writeFile("xfr/Batchfiles/" + name, complete);
        f->env.writeFile("xfr/Batchfiles/" + left.last(), complete + "CS\r\nIMG.jpg\r\nAnn\\IM");
        QVERIFY(QFile::link(f->env.path("secret.txt"), xfr("_Batchfile_161116204835_PC2.log")));
        f->env.writeFile("secret.txt", "a file elsewhere\r\n");
        int refreshes = 0;
        BatchfileTransfer transfer;
        transfer.refresh = [&] { ++refreshes; };
        QCOMPARE(transfer.ImportBatchfiles(), "2 files imported");
        QCOMPARE(refreshes, 1);
        for (const QString &name : taken) {
            QCOMPARE(fileBytes(AppPaths::dataFile(name)), complete);
            QVERIFY(!QFileInfo::exists(xfr(name)));
        }
        for (const QString &name : left)
            QVERIFY2(QFileInfo::exists(xfr(name)), qPrintable(name));
        QVERIFY(!QFileInfo::exists(AppPaths::dataFile("_Batchfile_161116204835_PC2.log")));
        QCOMPARE(f->debugLog().count("conflict copy"), 1);
        BatchfileTransfer().ImportBatchfiles();
        QCOMPARE(f->debugLog().count("conflict copy"), 1); // once, however often it is seen
    }

    void importWarnsAboutASourceDirChange()
    {
        QDir().mkpath(xfr());
        f->env.writeFile("xfr/Batchfiles/_Flag_SrcDirChg.log", "C:\\Photos\r\nD:\\Photos\r\n");
        BatchfileTransfer transfer;
        QCOMPARE(transfer.ImportBatchfiles(), "0 files imported");
        QCOMPARE(f->port.texts().first(), "** WARNING **\r\nIt appears the Source Dir was changed on the other "
                                          "computer.\r\nC:\\Photos --> D:\\Photos\r\nPlease check the following "
                                          "dialogs carefully in case you need to change your Source Dir before "
                                          "continuing.");
        QCOMPARE(f->port.messages().first().style, int(MsgStyle::Warning));
        QVERIFY(!QFileInfo::exists(xfr("_Flag_SrcDirChg.log")));
    }

    // Two installations and one transfer folder: what PC A did, replayed on PC B, leaves B's
    // Target Dir equal to A's and B's photos under A's names.
    void twoPcsEndInStep()
    {
        f.reset();
        AllocationFixture a;
        appState().systemLoaded = true; // each reload keeps the undo levels, as in a running program
        const QString root = a.env.root();
        const QString homeA = qEnvironmentVariable("HOME");
        for (const auto &[id, first, last] : {std::tuple{3, "Ann", "Lee"}, {5, "Bob", "Ray"}, {7, "Cat", "Day"}})
            a.family(id, first, last);
        for (int i = 1; i <= 7; ++i)
            a.photo(QStringLiteral("P%1.jpg").arg(i), QSize(48 + 16 * i, 48));
        const PcHome b(root, QStringLiteral("B"));
        copyTree(a.src(), b.src());
        for (const auto &[photos, families] :
             QList<QPair<QStringList, QList<int>>>{{{"P1.jpg", "P2.jpg"}, {3, 5}}, {{"P3.jpg"}, {7}}, {{"P4.jpg"}, {3}}}) {
            a.load();
            a.saveTo(photos, families);
        }
        auto step = [&](const QString &photo) {
            a.load();
            a.selectPhotos({photo});
            a.selectFamilies({});
        };
        step("P5.jpg");
        QVERIFY(PhotoOperations(*a.ws).RotateSelected(false));
        step("P6.jpg");
        a.port.answer(true);
        QVERIFY(PhotoOperations(*a.ws).DeleteSelected());
        step("P7.jpg");
        a.port.answer(true);
        QVERIFY(PhotoOperations(*a.ws).PutAsideSelected());
        a.ws->undos().UndoLastLevel(false); // P4 goes back
        QVERIFY(QDir().rename(a.tgt("Cat Day"), a.tgt("Cathy Day"))); // a family renamed
        BatchfileWriter(/*journal*/).entry("NTD", {"Cat Day", "Cathy Day"});
        WriteSetting(QStringLiteral("BatchXfrDir"), root + "/xfr");
        a.port.answer(true); // create the transfer folder
        QCOMPARE(BatchfileTransfer().ExportBatchfiles(), "1 file exported");

        // PC B
        QVERIFY(b.install(root + "/xfr"));
        WriteSetting(QStringLiteral("CreateBatchs"), QStringLiteral("1"));
        Batchfile::InitBatchfile();
        BatchfileTransfer importB;
        importB.refresh = [] { BatchfileProcessing(nullptr).ProcessBatchfiles(); };
        a.port.answer(true); // process it
        QCOMPARE(importB.ImportBatchfiles(), "1 file imported");
        QCOMPARE(a.port.texts().filter("Found batchfile from:  PC1\r\n").size(), 1);
        QCOMPARE(a.targetFiles(), (QStringList{"Ann Lee/P1.jpg", "Ann Lee/P2.jpg", "Bob Ray/P1.jpg", "Bob Ray/P2.jpg",
                                               "Cathy Day/P3.jpg"}));
        QCOMPARE(snapshot(b.tgt()), snapshot(a.tgt()));
        QCOMPARE(names(b.src()), names(a.src()));
        QCOMPARE(names(b.src()), (QStringList{"P1(#3#5#).jpg", "P2(#3#5#).jpg", "P3(#7#).jpg", "P4.jpg",
                                                    "P5.jpg"}));
        QCOMPARE(fileBytes(b.src() + "/P5.jpg"), fileBytes(a.src("P5.jpg"))); // turned the same way
        QVERIFY(QFileInfo::exists(b.home() + "/Temp/QLtemp/P7.jpg"));
        QVERIFY(a.port.opened.isEmpty()); // no failure, no missing source

        // Back from B to A: nothing of B's travels, nothing on A changes.
        QCOMPARE(BatchfileTransfer().ExportBatchfiles(), "0 files exported");
        useHome(homeA);
        const auto before = snapshot(root, {"B/home", "home/.local/share/Quillet", "home/.cache", "home/.config"});
        BatchfileTransfer importA;
        importA.refresh = [] { BatchfileProcessing(nullptr).ProcessBatchfiles(); };
        QCOMPARE(importA.ImportBatchfiles(), "0 files imported");
        QCOMPARE(snapshot(root, {"B/home", "home/.local/share/Quillet", "home/.cache", "home/.config"}), before);
    }
};

QTEST_GUILESS_MAIN(TestBatchfileTransfer)
#include "tst_batchfiletransfer.moc"

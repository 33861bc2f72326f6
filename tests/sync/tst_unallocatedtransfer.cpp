#include "transferfixture.h"

#include "lib/appstate.h"
#include "support/testjpeg.h"
#include "sync/batchfiletransfer.h"
#include "sync/databasetransfer.h"
#include "sync/unallocatedtransfer.h"

#include <QDirIterator>
#include <QImageReader>
#include <QTest>

using namespace quillet;
using namespace quillet::test;

// Export and import of the unallocated photos between two PCs through the Batch Transfer Dir,
// with real JPEGs, real folders and two real family databases.
class TestUnallocatedTransfer : public QObject
{
    Q_OBJECT

    std::unique_ptr<TwoPcFixture> m_f;
    int m_refreshes = 0;

    QString unalloc(const QString &name = QString()) const
    {
        return m_f->xfr + QStringLiteral("/Unallocated") + (name.isEmpty() ? QString() : QLatin1Char('/') + name);
    }
    static QByteArray jpeg(int seed, QSize size = QSize(64, 48))
    {
        return encodeJpeg(testPicture(size, seed), 85);
    }
    // Every file below a folder, relative to it, sorted.
    static QStringList tree(const QString &dir)
    {
        QStringList out;
        QDirIterator it(dir, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
        while (it.hasNext())
            out << QDir(dir).relativeFilePath(it.next());
        out.sort();
        return out;
    }
    QString importOnB(const QList<bool> &answers)
    {
        m_f->b.activate();
        FamilyDatabase db;
        if (!db.OpenDatabase())
            return QStringLiteral("no database");
        for (bool a : answers)
            m_f->port.answer(a);
        UnallocatedTransfer transfer(db, [this] { ++m_refreshes; });
        return transfer.ImportUnalloc();
    }

private Q_SLOTS:
    void init()
    {
        m_f = std::make_unique<TwoPcFixture>();
        appState().cancel = false;
        m_refreshes = 0;
        QVERIFY(m_f->install());
    }
    void cleanup()
    {
        m_f.reset();
    }

    // The list's unallocated photos, in sub-folders too, are copied; allocated ones are not; a
    // second export copies nothing again and leaves the database alone.
    void exportCopiesTheUnallocatedOnce()
    {
        writeBytes(m_f->a.src() + "/IMG_0001.jpg", jpeg(1));
        writeBytes(m_f->a.src() + "/Trip/IMG_0003.jpg", jpeg(3));
        writeBytes(m_f->a.src() + "/IMG_0004(#3#).jpg", jpeg(4));
        writeBytes(AppPaths::dataFile("_Flag_SrcDirChg.log"), "/old/src\r\n/new/src\r\n");
        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        addFamily(db, 3, QStringLiteral("Anna"));
        const auto ws = headlessWorkspace(db);
        QCOMPARE(ws->LoadSource(false, false), Workspace::LoadResult::Done);
        QCOMPARE(ws->sourceList().rowCount(), 3); // the allocated photo is listed, but BLUE
        const QStringList photos = UnallocatedTransfer::UnallocatedPhotos(*ws);
        QCOMPARE(photos.size(), 2);

        UnallocatedTransfer transfer(db, [this] { ++m_refreshes; });
        QCOMPARE(transfer.ExportUnalloc(photos), QStringLiteral("2 files exported\r\nDatabase exported"));
        QCOMPARE(m_f->port.lastText(), QStringLiteral("2 files exported\r\nDatabase exported"));
        QCOMPARE(m_f->port.progressCaptions, QStringList{"Exporting unallocated..."});
        QCOMPARE(tree(unalloc()), (QStringList{"IMG_0001.jpg", "Trip/IMG_0003.jpg", "_Flag_SrcDirChg.log"}));
        QCOMPARE(fileBytes(unalloc("Trip/IMG_0003.jpg")), jpeg(3));
        QCOMPARE(fileBytes(unalloc("_Flag_SrcDirChg.log")), QByteArray("/old/src\r\n/new/src\r\n"));
        QVERIFY(!QFileInfo::exists(AppPaths::dataFile("_Flag_SrcDirChg.log")));
        QVERIFY(QFileInfo::exists(m_f->a.src() + "/Trip/IMG_0003.jpg")); // the export only copies

        writeBytes(unalloc("IMG_0001.jpg"), "marker: not copied again");
        QCOMPARE(transfer.ExportUnalloc(photos), QStringLiteral("2 files exported"));
        QCOMPARE(fileBytes(unalloc("IMG_0001.jpg")), QByteArray("marker: not copied again"));
        QCOMPARE(m_refreshes, 0);
    }

    // A sub-folder of the shared transfer folder that is a link leading elsewhere gets no copy.
    void exportRefusesALinkedSubFolder()
    {
        const QString outside = m_f->env.path(QStringLiteral("outside"));
        QDir().mkpath(outside);
        QVERIFY(QFile::link(outside, unalloc("Trip")));
        writeBytes(m_f->a.src() + "/Trip/IMG_0003.jpg", jpeg(3));
        writeBytes(m_f->a.src() + "/IMG_0001.jpg", jpeg(1));
        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        UnallocatedTransfer transfer(db, {});
        QCOMPARE(transfer.ExportUnalloc({m_f->a.src() + "/IMG_0001.jpg", m_f->a.src() + "/Trip/IMG_0003.jpg"}),
                 QStringLiteral("2 files exported"));
        QVERIFY(m_f->port.texts().join("|").contains(m_f->a.src() + "/Trip/IMG_0003.jpg: "));
        QCOMPARE(tree(outside), QStringList());
        QCOMPARE(fileBytes(unalloc("IMG_0001.jpg")), jpeg(1));
    }

    void exportResizesWhenAsked()
    {
        writeBytes(m_f->a.src() + "/IMG_0001.jpg", jpeg(1, QSize(640, 480)));
        WriteSetting(QStringLiteral("UnallocResize"), QStringLiteral("1"));
        WriteSetting(QStringLiteral("UnallocResizeMD"), QStringLiteral("1"));
        WriteSetting(QStringLiteral("UnallocResizeQ"), QStringLiteral("3"));
        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        UnallocatedTransfer transfer(db, {});
        QCOMPARE(transfer.ExportUnalloc({m_f->a.src() + "/IMG_0001.jpg"}), QStringLiteral("1 file exported"));
        QCOMPARE(QImageReader(unalloc("IMG_0001.jpg")).size(), QSize(320, 240));
    }

    void missingTransferFolder_data()
    {
        QTest::addColumn<bool>("isExport");
        QTest::addColumn<QString>("xfr");
        QTest::addColumn<QList<bool>>("answers");
        QTest::addColumn<QString>("message");
        QTest::addColumn<bool>("created");
        const QString unplugged = QStringLiteral("/media/nobody/NOSUCHDISK/xfr");
        QTest::newRow("export, disk unplugged") << true << unplugged << QList<bool>{}
                                                << "Batch Transfer Dir drive (/media/nobody/NOSUCHDISK) does not exist"
                                                << false;
        QTest::newRow("export, folder missing, No") << true << "" << QList<bool>{false} << "" << false;
        QTest::newRow("export, folder missing, Yes") << true << "" << QList<bool>{true} << "0 files exported" << true;
        QTest::newRow("import, disk unplugged") << false << unplugged << QList<bool>{true}
                                                << "Batch Transfer Dir drive (/media/nobody/NOSUCHDISK) does not exist"
                                                << false;
        QTest::newRow("import, folder missing") << false << "" << QList<bool>{true} << "does not exist" << false;
    }
    void missingTransferFolder()
    {
        QFETCH(bool, isExport);
        QFETCH(QString, xfr);
        QFETCH(QList<bool>, answers);
        QFETCH(QString, message);
        QFETCH(bool, created);
        const QString base = xfr.isEmpty() ? m_f->env.path(QStringLiteral("new/xfr")) : xfr;
        WriteSetting(QStringLiteral("BatchXfrDir"), base);
        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        for (bool a : answers)
            m_f->port.answer(a);
        UnallocatedTransfer transfer(db, [this] { ++m_refreshes; });
        const QString summary = isExport ? transfer.ExportUnalloc({}) : transfer.ImportUnalloc();
        QCOMPARE(summary.isEmpty(), !created);
        if (isExport && xfr.isEmpty())
            QCOMPARE(m_f->port.messages().first().text,
                     QStringLiteral("Batch Transfer Dir (") + base + "/Unallocated) not found. Do you want to create it?");
        if (!message.isEmpty())
            QVERIFY2(m_f->port.lastText().contains(message), qPrintable(m_f->port.lastText()));
        QCOMPARE(QFileInfo::exists(base + QStringLiteral("/Unallocated")), created);
        QCOMPARE(m_refreshes, 0);
    }

    // Without a Batch Transfer Dir no transfer asks, shows or moves anything.
    void emptyBatchXfrDirDoesNothing()
    {
        WriteSetting(QStringLiteral("BatchXfrDir"), QString());
        writeBytes(m_f->a.src() + "/IMG_0001.jpg", jpeg(1));
        const QString closed = AppPaths::dataFile(QStringLiteral("_Batchfile_161116204830_A.log"));
        writeBytes(closed, "S\r\nT\r\nNumber of times processed: 0\r\nDS\r\nA.jpg\r\n");
        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        addFamily(db, 1, QStringLiteral("Anna"));
        UnallocatedTransfer transfer(db, [this] { ++m_refreshes; });
        QCOMPARE(transfer.ExportUnalloc({m_f->a.src() + "/IMG_0001.jpg"}), QString());
        QCOMPARE(transfer.ImportUnalloc(), QString());
        QVERIFY(!ExportFamilyDatabase(db));
        QVERIFY(!ImportFamilyDatabase(db));
        BatchfileTransfer batchfiles;
        QVERIFY(batchfiles.ExportBatchfiles().isEmpty());
        QVERIFY(batchfiles.ImportBatchfiles().isEmpty());
        QVERIFY(QFileInfo::exists(closed));
        QVERIFY(m_f->port.messages().isEmpty());
        QVERIFY(m_f->port.progressCaptions.isEmpty());
        QCOMPARE(m_refreshes, 0);
    }

    // Families edited on A and A's photos reach B; B's family list shows them.
    void twoPcsPhotosAndFamiliesReachB()
    {
        writeBytes(m_f->a.src() + "/IMG_0001.jpg", jpeg(1));
        writeBytes(m_f->a.src() + "/Trip/Day 2/IMG_0002.jpg", jpeg(2));
        {
            FamilyDatabase db;
            QVERIFY(db.OpenDatabase());
            addFamily(db, 7, QStringLiteral("Zoe"));
            addFamily(db, 8, QStringLiteral("Yann"));
            UnallocatedTransfer transfer(db, {});
            QVERIFY(!transfer.ExportUnalloc({m_f->a.src() + "/IMG_0001.jpg", m_f->a.src() + "/Trip/Day 2/IMG_0002.jpg"})
                         .isEmpty());
        }
        m_f->port.clear();
        m_f->port.progressCaptions.clear();
        QCOMPARE(importOnB({true}), QStringLiteral("2 files imported\r\nDatabase imported"));
        QCOMPARE(m_f->port.messages().first().text,
                 QStringLiteral("Import files from ") + unalloc() + "  to  " + m_f->b.src() + "?");
        QCOMPARE(m_f->port.progressCaptions, QStringList{"Importing unallocated..."});
        QCOMPARE(tree(m_f->b.src()), (QStringList{"IMG_0001.jpg", "Trip/Day 2/IMG_0002.jpg"}));
        QCOMPARE(fileBytes(m_f->b.src() + "/Trip/Day 2/IMG_0002.jpg"), jpeg(2));
        // The transfer folder is empty again, sub-folders included; the database copy was moved.
        QCOMPARE(QDir(unalloc()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
        QVERIFY(!QFileInfo::exists(TransferDatabasePath()));
        QCOMPARE(m_refreshes, 1);

        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        const auto ws = headlessWorkspace(db);
        ws->LoadFamilies(false, false, false, false, false);
        QStringList shown;
        for (int i = 0; i < ws->familyList().count(); ++i)
            shown << ws->familyList().at(i).text;
        QVERIFY2(shown.contains("Zoe") && shown.contains("Yann"), qPrintable(shown.join(",")));
    }

    void duplicates_data()
    {
        QTest::addColumn<QString>("inSource");   // what B's Source Dir holds
        QTest::addColumn<QList<bool>>("answers"); // after "Import files from ..."
        QTest::addColumn<QStringList>("sourceAfter");
        QTest::addColumn<QStringList>("left");   // left in the transfer folder
        QTest::newRow("allocated here, import new only")
            << "IMG_0001(#12#).JPG" << QList<bool>{true} << QStringList{"IMG_0001(#12#).JPG", "IMG_0002.JPG"}
            << QStringList{};
        QTest::newRow("allocated here, import all again")
            << "IMG_0001(#12#).JPG" << QList<bool>{false, true}
            << QStringList{"IMG_0001(#12#).JPG", "IMG_0001.JPG", "IMG_0002.JPG"} << QStringList{};
        QTest::newRow("allocated here, import nothing")
            << "IMG_0001(#12#).JPG" << QList<bool>{false, false} << QStringList{"IMG_0001(#12#).JPG"}
            << QStringList{"IMG_0001.JPG", "IMG_0002.JPG"};
        QTest::newRow("other letter case counts") << "img_0001(#3#7#).jpg" << QList<bool>{true}
                                                  << QStringList{"IMG_0002.JPG", "img_0001(#3#7#).jpg"} << QStringList{};
        QTest::newRow("bare name only: replaced, no question")
            << "IMG_0001.JPG" << QList<bool>{} << QStringList{"IMG_0001.JPG", "IMG_0002.JPG"} << QStringList{};
        QTest::newRow("longer name is no duplicate")
            << "IMG_00010(#3#).JPG" << QList<bool>{} << QStringList{"IMG_0001.JPG", "IMG_00010(#3#).JPG", "IMG_0002.JPG"}
            << QStringList{};
    }
    void duplicates()
    {
        QFETCH(QString, inSource);
        QFETCH(QList<bool>, answers);
        QFETCH(QStringList, sourceAfter);
        QFETCH(QStringList, left);
        writeBytes(m_f->b.src() + "/" + inSource, "old");
        writeBytes(unalloc("IMG_0001.JPG"), jpeg(1));
        writeBytes(unalloc("IMG_0002.JPG"), jpeg(2));
        const QString summary = importOnB(QList<bool>{true} + answers);
        QCOMPARE(tree(m_f->b.src()), sourceAfter);
        QCOMPARE(tree(unalloc()), left);
        QCOMPARE(m_f->port.messages().size(), answers.size() + (left.isEmpty() ? 2 : 1));
        if (!answers.isEmpty())
            QCOMPARE(m_f->port.messages().at(1).text,
                     QStringLiteral("Some of the files appear to have been imported and allocated already. Do you wish "
                                    "to import new files only and delete the duplicates?"));
        QCOMPARE(summary, left.isEmpty() ? QStringLiteral("2 files imported") : QString());
        if (sourceAfter.contains("IMG_0001.JPG"))
            QCOMPARE(fileBytes(m_f->b.src() + "/IMG_0001.JPG"), jpeg(1));
        QCOMPARE(m_refreshes, left.isEmpty() ? 1 : 0);
    }

    void sourceDirChangeIsWarnedOnce()
    {
        writeBytes(unalloc("_Flag_SrcDirChg.log"), "/home/a/Photos\r\n/home/a/New Photos\r\n");
        QCOMPARE(importOnB({false}), QString());
        QCOMPARE(m_f->port.messages().first().style, int(MsgStyle::Warning));
        QCOMPARE(m_f->port.messages().first().text,
                 QStringLiteral("** WARNING **\r\nIt appears the Source Dir was changed on the other computer.\r\n"
                                "/home/a/Photos --> /home/a/New Photos\r\nPlease check the following dialogs "
                                "carefully in case you need to change your Source Dir before continuing."));
        QVERIFY(!QFileInfo::exists(unalloc("_Flag_SrcDirChg.log")));
    }

    // Nothing the transfer folder names is written or read outside the Source Dir; each refusal
    // is reported and the file stays where it is.
    void untrustedEntriesAreRefused_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("file linked to a file elsewhere") << "fileLink";
        QTest::newRow("folder linked to a folder elsewhere") << "folderLink";
        QTest::newRow("dangling link") << "dangling";
        QTest::newRow("name too long for the Source Dir") << "tooLong";
    }
    void untrustedEntriesAreRefused()
    {
        QFETCH(QString, kind);
        const QString outside = m_f->env.path(QStringLiteral("outside"));
        writeBytes(outside + "/secret.jpg", "not for the Source Dir");
        writeBytes(unalloc("IMG_0001.JPG"), jpeg(1));
        QString refused;
        if (kind == QLatin1String("fileLink")) {
            refused = unalloc("IMG_0009.JPG");
            QVERIFY(QFile::link(outside + "/secret.jpg", refused));
        } else if (kind == QLatin1String("folderLink")) {
            refused = unalloc("Trip");
            QVERIFY(QFile::link(outside, refused));
        } else if (kind == QLatin1String("dangling")) {
            refused = unalloc("IMG_0008.JPG");
            QVERIFY(QFile::link(outside + "/gone.jpg", refused));
        } else {
            // B's Source Dir lies so deep that the name no longer fits below it.
            QString deep = m_f->b.src();
            while (deep.size() < 3900)
                deep += QStringLiteral("/") + QString(200, QLatin1Char('d'));
            QVERIFY(QDir().mkpath(deep));
            m_f->b.activate();
            WriteSetting(QStringLiteral("SrcDir"), deep);
            refused = unalloc(QString(240, QLatin1Char('n')) + QStringLiteral(".JPG"));
            writeBytes(refused, jpeg(2));
        }
        const QStringList outsideBefore = tree(outside);
        // A question naming the deep Source Dir is long enough to fill two boxes.
        const QString summary = importOnB(kind == QLatin1String("tooLong") ? QList<bool>{true, true} : QList<bool>{true});
        QCOMPARE(summary, QStringLiteral("1 file imported"));
        const auto warnings = std::count_if(m_f->port.messages().begin(), m_f->port.messages().end(),
                                            [](const auto &m) { return m.style == int(MsgStyle::Warning); });
        QCOMPARE(warnings, 1);
        const QString warning = std::find_if(m_f->port.messages().begin(), m_f->port.messages().end(), [](const auto &m) {
                                    return m.style == int(MsgStyle::Warning);
                                })->text;
        QVERIFY2(warning.startsWith(QLatin1String("1 file could not be imported and was left in ")), qPrintable(warning));
        QVERIFY2(warning.contains(refused), qPrintable(warning));
        QVERIFY(QFileInfo(refused).isSymLink() || QFileInfo::exists(refused));
        QCOMPARE(tree(outside), outsideBefore);
        QCOMPARE(fileBytes(outside + "/secret.jpg"), QByteArray("not for the Source Dir"));
        const QString srcDir = ReadSetting(QStringLiteral("SrcDir"));
        QCOMPARE(tree(srcDir), QStringList{"IMG_0001.JPG"});
    }

    void cancelStopsBeforeTheDatabaseAndRefresh()
    {
        for (int i = 1; i <= 5; ++i)
            writeBytes(unalloc(QStringLiteral("IMG_000%1.JPG").arg(i)), jpeg(i));
        m_f->a.activate();
        {
            FamilyDatabase db;
            QVERIFY(db.OpenDatabase());
            addFamily(db, 1, QStringLiteral("Anna"));
            QVERIFY(ExportFamilyDatabase(db));
        }
        m_f->port.cancelAtPosition = 2;
        QCOMPARE(importOnB({true}), QString());
        QCOMPARE(tree(m_f->b.src()).size(), 2);
        QCOMPARE(tree(unalloc()).size(), 3);
        QVERIFY(QFileInfo::exists(TransferDatabasePath())); // not imported
        QCOMPARE(m_refreshes, 0);
        QVERIFY(!m_f->port.progressVisible);
    }
};

QTEST_GUILESS_MAIN(TestUnallocatedTransfer)
#include "tst_unallocatedtransfer.moc"

#include "replayfixture.h"

#include <QProcess>

using namespace quillet;
using namespace quillet::test;

// The replay of other PCs' batchfiles on real folders, real JPEGs and a real family database.
class TestBatchfileProcessing : public QObject
{
    Q_OBJECT

    std::unique_ptr<ReplayFixture> f;

    static QSize sizeOf(const QString &path) { return jpegSize(fileBytes(path)); }
    static QSize size(const QString &wxh) { return QSize(wxh.section('x', 0, 0).toInt(), wxh.section('x', 1).toInt()); }

private Q_SLOTS:
    void init() { f = std::make_unique<ReplayFixture>(); }
    void cleanup() { f.reset(); }

    void ownPcRule_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("taken");
        QTest::newRow("own closed") << "_Batchfile_161116204830_PC1.log" << false;
        QTest::newRow("own current") << "_Batchfile_999999999999_PC1.log" << false;
        QTest::newRow("other letter case is another PC") << "_Batchfile_161116204830_pc1.log" << true;
        QTest::newRow("other PC") << "_Batchfile_161116204830_PC2.log" << true;
        QTest::newRow("own name, short stamp") << "_Batchfile_1611_PC1.log" << true;
        QTest::newRow("syncthing conflict")
            << "_Batchfile_161116204830_PC2.sync-conflict-20161116-123456-ABCDEFG.log" << false;
        QTest::newRow("nextcloud conflict") << "_Batchfile_161116204830_PC2 (conflicted copy 2016-11-16 123456).log"
                                            << false;
        QTest::newRow("syncthing temporary") << ".syncthing._Batchfile_161116204830_PC2.log.tmp" << false;
        QTest::newRow("not a batchfile") << "_Batchfile_161116204830_PC2.txt" << false;
    }
    void ownPcRule()
    {
        QFETCH(QString, name);
        QFETCH(bool, taken);
        const QString path = f->batchfile({}, 0, name);
        QCOMPARE(BatchfileProcessing::FindBatchfiles(QStringLiteral("PC1")).contains(path), taken);
        if (taken)
            f->port.answer(false); // declined: stays, nothing done
        BatchfileProcessing(&f->db).ProcessBatchfiles();
        QCOMPARE(f->port.messages().size(), taken ? 1 : 0);
        QVERIFY(QFileInfo::exists(path));
        QVERIFY(f->doneFiles().isEmpty());
    }

    void sortedWithoutCaseAndCurrentLast()
    {
        const QString b = f->batchfile({}, 0, "_Batchfile_999999999999_pcB.log");
        const QString a = f->batchfile({}, 0, "_Batchfile_161116204830_PCb.log");
        const QString c = f->batchfile({}, 0, "_Batchfile_161116204829_PCc.log");
        QCOMPARE(BatchfileProcessing::FindBatchfiles("PC1"), (QStringList{c, a, b}));
    }

    void processQuestionShowsBothFolderPairs()
    {
        WriteSetting(QStringLiteral("TgtDir"), f->env.path("tgt2"));
        QDir().mkpath(f->env.path("tgt2"));
        f->batchfile({});
        f->process({false});
        const QString expected = "Found batchfile from:  PC2\r\n\r\nThis batchfile is based on:\r\nSource Dir = "
            + f->src() + "\r\nTarget Dir = " + f->tgt() + "\r\n\r\nYour current settings are:\r\nSource Dir = "
            + f->src() + "\r\nTarget Dir = " + f->env.path("tgt2")
            + "\r\n\r\nIf you think the Source & Target dirs on both systems are equivalent, go ahead and process "
              "the file.\r\nIf not, select No and change your Settings to match.\r\n\r\nProcess it now?";
        QCOMPARE(f->port.lastText(), expected);
        QCOMPARE(f->port.messages().last().style, int(MsgStyle::QuestionYes));
    }

    void reprocessQuestion_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("text");
        QTest::newRow("1") << 1
                           << "This batchfile has already been processed 1 time. Do you wish to reprocess it?\r\n"
                              "(rotations will be skipped this time)";
        QTest::newRow("2") << 2
                           << "This batchfile has already been processed 2 times. Do you wish to reprocess it?\r\n"
                              "(rotations will be skipped this time)";
    }
    void reprocessQuestion()
    {
        QFETCH(int, count);
        QFETCH(QString, text);
        const QString path = f->batchfile({}, count);
        f->process({true, false});
        QCOMPARE(f->port.lastText(), text);
        QVERIFY(QFileInfo::exists(path)); // declined: offered again next time
        QVERIFY(f->doneFiles().isEmpty());
        f->process({true, true});
        QVERIFY(!QFileInfo::exists(path));
        QVERIFY(fileBytes(BatchfileName::doneFolder() + "/" + f->doneFiles().first())
                    .contains(QByteArray(QByteArray("Number of times processed: ") + QByteArray::number(count + 1) + "\r\n")));
    }

    void rotationLookAhead_data()
    {
        QTest::addColumn<QString>("oldResult"); // the line after the entry; empty: the entry is last
        QTest::addColumn<bool>("rotated");
        QTest::addColumn<QString>("result");
        QTest::newRow("old ok") << "Results: ok" << false << "skipped, already rotated";
        QTest::newRow("old skipped") << "Results: skipped, already rotated" << false << "skipped, already rotated";
        QTest::newRow("old failure") << "Results: failed to rotate file" << true << "ok";
        QTest::newRow("old not found") << "Results: source file not found" << true << "ok";
        QTest::newRow("last line") << "" << true << "ok";
    }
    void rotationLookAhead()
    {
        QFETCH(QString, oldResult);
        QFETCH(bool, rotated);
        QFETCH(QString, result);
        f->photo("IMG.jpg", QSize(64, 48));
        QStringList lines{"RSL", "IMG.jpg"};
        if (!oldResult.isEmpty())
            lines << oldResult;
        f->batchfile(lines, oldResult.isEmpty() ? 0 : 1);
        f->process(oldResult.isEmpty() ? std::initializer_list<bool>{true} : std::initializer_list<bool>{true, true});
        QCOMPARE(f->results(), QStringList{result});
        QCOMPARE(sizeOf(f->src("IMG.jpg")), rotated ? QSize(48, 64) : QSize(64, 48));
    }

    // One batchfile replayed after a set-up: its results and what is on disk then. Set-up steps
    // (paths below the test's folder): "photo|name[|WxH]" in the Source Dir, "file|path",
    // "link|path|to" (a folder), "set|key|value", "family|id|first|last". Checks: "path" exists,
    // "!path" does not, "path|WxH" is a JPEG of that size, "path|=other" has other's bytes.
    void replaysEntries_data()
    {
        QTest::addColumn<QStringList>("setup");
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<QStringList>("results");
        QTest::addColumn<QStringList>("after");
        QTest::newRow("look-ahead line is still replayed")
            << QStringList{"photo|IMG.jpg"} << QStringList{"RSR", "IMG.jpg", "NS", "IMG.jpg", "IMG(#3#).jpg"}
            << QStringList{"ok", "ok"} << QStringList{"src/IMG(#3#).jpg|48x64"};
        QTest::newRow("rename onto an existing name deletes the source")
            << QStringList{"photo|IMG.jpg", "photo|IMG(#3#).jpg|32x24", "photo|Same.jpg"}
            << QStringList{"NS", "IMG.jpg", "IMG(#3#).jpg", "NS", "Same.jpg", "Same.jpg"} << QStringList{"ok", "ok"}
            << QStringList{"!src/IMG.jpg", "src/IMG(#3#).jpg|32x24", "src/Same.jpg"}; // onto itself: kept
        QTest::newRow("rename in a sub-folder stays there")
            << QStringList{"photo|day1/IMG.jpg"} << QStringList{"NS", "day1\\IMG.jpg", "IMG(#3#).jpg"}
            << QStringList{"ok"} << QStringList{"src/day1/IMG(#3#).jpg"};
        QTest::newRow("batch only skips copies and target deletes")
            << QStringList{"set|BatchOnly|1", "photo|IMG.jpg", "photo|DEL.jpg", "file|tgt/Old/x.jpg"}
            << QStringList{"CS", "IMG.jpg", "Ann\\IMG.jpg", "DTF", "Old\\x.jpg", "NS", "IMG.jpg", "IMG(#3#).jpg",
                           "DS", "DEL.jpg", "NTD", "Old", "New"}
            << QStringList{"ignored, BatchOnly is set", "ignored, BatchOnly is set", "ok", "ok", "ok"}
            << QStringList{"!tgt/Ann", "tgt/New/x.jpg", "src/IMG(#3#).jpg", "!src/DEL.jpg"};
        QTest::newRow("excluded family is copied without resizing")
            << QStringList{"family|7|Ann|Lee", "set|ResizeExclFam|7", "set|TargetResize|1", "set|TargetResizeMD|1",
                           "set|TargetResizeQ|3", "photo|IMG.jpg|640x480"}
            << QStringList{"CS", "IMG.jpg", "Ann Lee\\IMG.jpg", "CS", "IMG.jpg", "Bob\\IMG.jpg"} << QStringList{"ok", "ok"}
            << QStringList{"tgt/Ann Lee/IMG.jpg|=src/IMG.jpg", "tgt/Bob/IMG.jpg|320x240"};
        QTest::newRow("failed rotation is no error") << QStringList{"file|src/NOTAJPEG.jpg"}
                                                     << QStringList{"RSR", "NOTAJPEG.jpg"}
                                                     << QStringList{"failed to rotate file"} << QStringList{};
        // A target folder that is a link to a place inside the Target Dir is an ordinary folder.
        QTest::newRow("link inside the Target Dir is followed")
            << QStringList{"photo|IMG.jpg", "link|tgt/Alias|tgt/Real"} << QStringList{"CS", "IMG.jpg", "Alias\\IMG.jpg"}
            << QStringList{"ok"} << QStringList{"tgt/Real/IMG.jpg"};
    }
    void replaysEntries()
    {
        QFETCH(QStringList, setup);
        QFETCH(QStringList, entries);
        QFETCH(QStringList, results);
        QFETCH(QStringList, after);
        for (const QString &step : setup) {
            const QStringList w = step.split('|');
            if (w[0] == "photo")
                f->photo(w[1], w.size() > 2 ? size(w[2]) : QSize(64, 48));
            else if (w[0] == "file")
                f->env.writeFile(w[1], "not a picture");
            else if (w[0] == "link")
                QVERIFY(QDir().mkpath(f->env.path(w[2])) && QFile::link(f->env.path(w[2]), f->env.path(w[1])));
            else if (w[0] == "set")
                WriteSetting(w[1], w[2]);
            else
                f->db.exec("INSERT INTO tblFamilies (FamilyID, FirstName, LastName, [Current]) VALUES (?,?,?,True)",
                           {w[1].toInt(), w[2], w[3]});
        }
        f->batchfile(entries);
        f->process();
        QCOMPARE(f->results(), results);
        for (const QString &check : after) {
            const QStringList w = check.split('|');
            const bool absent = w[0].startsWith('!');
            const QString path = f->env.path(w[0].mid(absent ? 1 : 0));
            QVERIFY2(QFileInfo::exists(path) != absent, qPrintable(check));
            if (w.size() > 1 && w[1].startsWith('='))
                QCOMPARE(fileBytes(path), fileBytes(f->env.path(w[1].mid(1))));
            else if (w.size() > 1)
                QCOMPARE(sizeOf(path), size(w[1]));
        }
        QVERIFY(f->port.opened.isEmpty());      // nothing to review
        QCOMPARE(f->port.messages().size(), 1); // only the process question
    }

    void doneBatchfileCopiedBackSkipsItsRotations()
    {
        f->photo("IMG.jpg", QSize(64, 48));
        const QString path = f->batchfile({"RSL", "IMG.jpg", "CS", "IMG.jpg", "Ann\\IMG.jpg"});
        f->process();
        QCOMPARE(f->results(), (QStringList{"ok", "ok"}));
        QVERIFY(QFile::copy(BatchfileName::doneFolder() + "/" + f->doneFiles().first(), path));
        f->process({true, true});
        QVERIFY(f->port.lastText().startsWith("This batchfile has already been processed 1 time."));
        QCOMPARE(f->results(), (QStringList{"skipped, already rotated", "ok"}));
        QCOMPARE(sizeOf(f->src("IMG.jpg")), QSize(48, 64));
        QCOMPARE(f->doneFiles().size(), 2); // the second replay did not replace the first record
    }

    void everyFailureOpensItsDoneBatchfile()
    {
        f->photo("IMG.jpg");
        f->env.writeFile("tgt/Blocked", "a file where a folder should be");
        f->batchfile({"CS", "IMG.jpg", "Blocked\\a.jpg", "CS", "IMG.jpg", "Blocked\\b.jpg", "CS", "IMG.jpg",
                      "Ann\\IMG.jpg", "CS", "IMG.jpg", "Blocked\\c.jpg"});
        f->process();
        QCOMPARE(f->results(), (QStringList{"failed to make tgt dir", "failed to make tgt dir", "ok",
                                            "failed to make tgt dir"}));
        QCOMPARE(f->port.lastText(), "There were errors during processing of the batchfiles.  Review the batchfile "
                                     "(which will be opened in a moment) looking for lines starting 'Results: "
                                     "failed'.");
        QCOMPARE(f->port.messages().last().style, int(MsgStyle::Warning));
        QVERIFY(f->port.beeps > 0);
        const QString done = BatchfileName::doneFolder() + "/" + f->doneFiles().first();
        QCOMPARE(f->port.opened, (QStringList{done, done, done}));
    }

    void aDesktopWithoutAnEditorIsToldWhereTheRecordIs()
    {
        f->port.openResult = false;
        f->env.writeFile("tgt/Blocked", "x");
        f->batchfile({"CS", "IMG.jpg", "Blocked\\a.jpg", "DTD", "..\\x"});
        f->photo("IMG.jpg");
        f->process();
        const QString done = BatchfileName::doneFolder() + "/" + f->doneFiles().first();
        QCOMPARE(f->port.opened.size(), 2);
        QCOMPARE(f->port.texts().filter("Could not open").size(), 1);
        QCOMPARE(f->port.lastText(), "Could not open " + done + " here. Open it in a text editor to review it.");
    }

    void missingSourcesAreOfferedForReview_data()
    {
        QTest::addColumn<bool>("open");
        QTest::newRow("yes") << true;
        QTest::newRow("no") << false;
    }
    void missingSourcesAreOfferedForReview()
    {
        QFETCH(bool, open);
        f->batchfile({"CS", "GONE.jpg", "Ann\\GONE.jpg", "NS", "GONE.jpg", "X.jpg", "MS", "GONE.jpg"});
        f->process({true, open});
        QCOMPARE(f->results(), QStringList(3, "source file not found"));
        QCOMPARE(f->port.messages().last().style, int(MsgStyle::QuestionNo));
        QVERIFY(f->port.lastText().startsWith("Some source files were not found during processing"));
        const QString done = BatchfileName::doneFolder() + "/" + f->doneFiles().first();
        QCOMPARE(f->port.opened, open ? QStringList(3, done) : QStringList());
    }

    void doneBatchfileKeepsEveryLine()
    {
        f->photo("IMG.jpg");
        f->batchfile({"garbage line", "CS", "IMG.jpg", "Ann\\IMG.jpg", "Results: old", "", "DS", "IMG.jpg"});
        f->process();
        const QString done = f->doneFiles().first();
        QVERIFY(QRegularExpression("^\\d{10}_Batchfile_161116204830_PC2\\.log$").match(done).hasMatch());
        QCOMPARE(fileBytes(BatchfileName::doneFolder() + "/" + done),
                 (f->src() + "\r\n" + f->tgt()
                  + "\r\nNumber of times processed: 1\r\nCS\r\nIMG.jpg\r\nAnn\\IMG.jpg\r\nResults: ok\r\n"
                    "DS\r\nIMG.jpg\r\nResults: ok\r\n")
                     .toUtf8());
        QCOMPARE(f->port.progressCaptions, QStringList{"Processing batchfile..."});
        QCOMPARE(f->port.progressMax, 2);
        QCOMPARE(f->port.progressPositions, (QList<int>{1, 2}));
        QVERIFY(f->debugLog().contains("Looking for batchfiles to process"));
        QVERIFY(f->debugLog().contains("ProcessBatchfiles: \t"));
    }

    void cancelLeavesTheBatchfileAndTheRerunSkipsDoneRotations()
    {
        f->photo("A.jpg", QSize(64, 48));
        f->photo("B.jpg", QSize(64, 48));
        const QString path = f->batchfile({"RSL", "A.jpg", "RSL", "B.jpg", "DS", "B.jpg"});
        f->port.cancelAtPosition = 1;
        f->process();
        QVERIFY(QFileInfo::exists(path));
        QCOMPARE(f->results(), QStringList{"ok"});
        f->port.cancelAtPosition = 0;
        f->process({true, true}); // a done copy exists: the reprocess question
        QVERIFY(!QFileInfo::exists(path));
        QCOMPARE(f->results(), (QStringList{"skipped, already rotated", "ok", "ok"}));
        QCOMPARE(sizeOf(f->src("A.jpg")), QSize(48, 64)); // turned once, not twice
        QCOMPARE(f->doneFiles().size(), 2);
    }

    void refreshDuringAReplayStartsNoSecondOne()
    {
        f->photo("A.jpg", QSize(64, 48));
        f->batchfile({"RSL", "A.jpg", "CS", "A.jpg", "Ann\\A.jpg"});
        f->port.duringProgress = [this](int) { BatchfileProcessing(&f->db).ProcessBatchfiles(); };
        f->process();
        QCOMPARE(f->doneFiles().size(), 1);
        QCOMPARE(f->results(), (QStringList{"ok", "ok"}));
        QCOMPARE(sizeOf(f->src("A.jpg")), QSize(48, 64));
        QVERIFY(f->debugLog().contains("a replay is running already"));
    }

    void malformedBatchfileIsKeptAndBlocksLaterOnesOfItsPc()
    {
        f->photo("IMG.jpg");
        const QString broken = f->writeRaw("_Batchfile_161116204830_PC2.log", "C:\\src\r\nC:\\tgt\r\n");
        const QString later = f->batchfile({"DS", "IMG.jpg"}, 0, "_Batchfile_161117204830_PC2.log");
        const QString other = f->batchfile({"CS", "IMG.jpg", "Ann\\IMG.jpg"}, 0, "_Batchfile_161117204830_PC3.log");
        f->process();
        QVERIFY(f->port.texts().first().startsWith("The batchfile " + broken + " was not processed: its three "
                                                   "header lines are not complete."));
        QCOMPARE(f->port.messages().first().style, int(MsgStyle::Warning));
        QVERIFY(QFileInfo::exists(broken));
        QVERIFY(QFileInfo::exists(later));
        QVERIFY(QFileInfo::exists(f->src("IMG.jpg")));
        QVERIFY(!QFileInfo::exists(other));
        QVERIFY(QFileInfo::exists(f->tgt("Ann/IMG.jpg")));
    }

    void cleanupRecyclesDoneBatchfilesOlderThan31Days()
    {
        QDir().mkpath(BatchfileName::doneFolder());
        const QString old = BatchfileName::doneFolder() + "/1610010000_Batchfile_161001000000_PC2.log";
        const QString recent = BatchfileName::doneFolder() + "/1611010000_Batchfile_161101000000_PC2.log";
        const QString other = BatchfileName::doneFolder() + "/notes.txt";
        for (const QString &p : {old, recent, other}) {
            QFile file(p);
            QVERIFY(file.open(QIODevice::WriteOnly));
            const int days = p == recent ? 30 : 32;
            file.setFileTime(QDateTime::currentDateTime().addDays(-days), QFileDevice::FileModificationTime);
        }
        BatchfileProcessing::CleanupOldBatchfiles();
        QVERIFY(!QFileInfo::exists(old));
        QVERIFY(QFileInfo::exists(recent));
        QVERIFY(QFileInfo::exists(other));
    }

    // A full or read-only disk under the Target Dir: the copies there fail, the replay goes on.
    void copyFailuresOnAFullOrReadOnlyDisk_data()
    {
        QTest::addColumn<QString>("options");
        QTest::newRow("full") << "size=64k";
        QTest::newRow("read-only") << "ro,size=1m";
    }
    void copyFailuresOnAFullOrReadOnlyDisk()
    {
        QFETCH(QString, options);
        QDir().mkpath(f->tgt("Disk"));
        if (QProcess::execute("mount", {"-t", "tmpfs", "-o", options, "tmpfs", f->tgt("Disk")}) != 0)
            QSKIP("mounting a small file system needs the right to mount");
        struct Unmount
        {
            QString at;
            ~Unmount() { QProcess::execute("umount", {at}); }
        } unmount{f->tgt("Disk")};
        f->photo("BIG.jpg", QSize(1024, 768));
        f->photo("IMG.jpg");
        f->batchfile({"CS", "BIG.jpg", "Disk\\BIG.jpg", "CS", "IMG.jpg", "Ann\\IMG.jpg"});
        f->process();
        QCOMPARE(f->results(), (QStringList{"failed to copy file", "ok"}));
        QVERIFY(QDir(f->tgt("Disk")).entryList(QDir::Files | QDir::Hidden).isEmpty()); // no partial file
        QCOMPARE(f->port.opened.size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestBatchfileProcessing)
#include "tst_batchfileprocessing.moc"

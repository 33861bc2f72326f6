#include "allocationfixture.h"

#include "lib/error.h"

#include <QImageReader>

using namespace quillet;
using namespace quillet::test;

Q_DECLARE_METATYPE(QList<int>)

class TestAllocationSave : public QObject
{
    Q_OBJECT

    std::unique_ptr<AllocationFixture> m_fx;

private Q_SLOTS:
    void init() { m_fx = std::make_unique<AllocationFixture>(); }
    void cleanup() { m_fx.reset(); }

    void saveCopiesTagsAndJournals_data()
    {
        QTest::addColumn<bool>("privacy");
        QTest::addColumn<bool>("batchOnly");
        QTest::addColumn<bool>("resize");
        QTest::addColumn<bool>("assnSub");
        QTest::addColumn<QString>("tagged");
        QTest::addColumn<QStringList>("copies");
        QTest::addColumn<int>("items");
        const QStringList both{"Anna Smith/IMG_0042.jpg", "Ben Jones/IMG_0042.jpg"};
        QTest::newRow("two families") << false << false << false << false << "IMG_0042(#12#7#).jpg" << both << 2;
        QTest::newRow("privacy marker") << true << false << false << false << "IMG_0042(#12#7#P#).jpg" << both << 3;
        QTest::newRow("batch only, 7 excluded") << false << true << false << false << "IMG_0042(#12#7#).jpg"
                                                << QStringList{"Ben Jones/IMG_0042.jpg"} << 2;
        QTest::newRow("resized, 7 excluded") << false << false << true << false << "IMG_0042(#12#7#).jpg" << both << 2;
        QTest::newRow("source sub-folder") << false << false << false << true << "Trip/IMG_0042(#12#7#).jpg"
                                           << QStringList{"Anna Smith/Trip/IMG_0042.jpg", "Ben Jones/Trip/IMG_0042.jpg"} << 2;
    }
    void saveCopiesTagsAndJournals()
    {
        QFETCH(bool, privacy);
        QFETCH(bool, batchOnly);
        QFETCH(bool, resize);
        QFETCH(bool, assnSub);
        QFETCH(QString, tagged);
        QFETCH(QStringList, copies);
        QFETCH(int, items);
        m_fx->twoFamilies(privacy);
        const QString sub = assnSub ? QStringLiteral("Trip/") : QString();
        m_fx->photo(sub + QStringLiteral("IMG_0042.jpg"), QSize(1600, 1200));
        writeSettings({{"BatchOnly", batchOnly ? "1" : "0"}, {"TargetResize", resize ? "1" : "0"}, {"TargetResizeMD", "3"},
                       {"TargetResizeQ", "3"}, {"ResizeExclFam", (batchOnly || resize) ? "7" : "0"},
                       {"AssnSubToTgt", assnSub ? "1" : "0"}});
        m_fx->load();
        m_fx->saveTo({QStringLiteral("IMG_0042.jpg")}, privacy ? QList<int>{12, 7, -999} : QList<int>{12, 7});

        QCOMPARE(m_fx->sourceFiles(), QStringList{tagged});
        QCOMPARE(m_fx->targetFiles(), copies);
        const QString rel = assnSub ? QStringLiteral("Trip\\") : QString();
        QCOMPARE(m_fx->journal(), (QStringList{"CS " + rel + "IMG_0042.jpg Anna Smith\\" + rel + "IMG_0042.jpg",
                                               "CS " + rel + "IMG_0042.jpg Ben Jones\\" + rel + "IMG_0042.jpg",
                                               "NS " + rel + "IMG_0042.jpg " + QFileInfo(tagged).fileName()}));
        clsUndos &undos = m_fx->ws->undos();
        QCOMPARE(undos.UndoLevelMax(), 1);
        QCOMPARE(undos.UndoTop(), items);
        QCOMPARE(undos.ItemFamilyID(items), privacy ? -999 : 7);
        QCOMPARE(undos.ItemTgtPathfile(1), batchOnly ? m_fx->tgt(copies.isEmpty() ? QString() : "Anna Smith/IMG_0042.jpg")
                                                     : m_fx->tgt(copies.first()));
        QCOMPARE(m_fx->ws->srcFiles().row(undos.ItemSrcFilesIndex(1)).PathFile, m_fx->src(tagged));
        QVERIFY(m_fx->listTexts().isEmpty()); // the saved photo left the list
        if (resize) {
            QCOMPARE(QImageReader(m_fx->tgt(copies.at(0))).size(), QSize(1024, 768)); // family 12: resized
            QCOMPARE(QImageReader(m_fx->tgt(copies.at(1))).size(), QSize(1600, 1200)); // family 7: excluded
        }
        QCOMPARE(m_fx->port.messages().size(), 0);
    }

    void familyFolderName_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("showParent");
        QTest::addColumn<QString>("folder");
        QTest::newRow("parent shown") << " Jane Smith - Anna Smith " << true << "Anna Smith";
        QTest::newRow("group entry") << "(Staff) " << true << "(Staff)";
        QTest::newRow("no parent") << "Anna Smith" << false << "Anna Smith";
    }
    void familyFolderName()
    {
        QFETCH(QString, text);
        QFETCH(bool, showParent);
        QFETCH(QString, folder);
        QCOMPARE(AllocationSave::FamilyFolderName(text, showParent), folder);
    }

    // After a Save the next photo is shown and the privacy marker is chosen again; with Show
    // allocated the saved photo stays listed.
    void nextPhotoAndPrivacyReselected_data()
    {
        QTest::addColumn<bool>("showAllocated");
        QTest::addColumn<QStringList>("listed");
        QTest::addColumn<QString>("selected");
        QTest::newRow("removed") << false << QStringList{"A.jpg", "C.jpg"} << "C.jpg";
        QTest::newRow("show allocated") << true << QStringList{"A.jpg", "B.jpg", "C.jpg"} << "B.jpg";
    }
    void nextPhotoAndPrivacyReselected()
    {
        QFETCH(bool, showAllocated);
        QFETCH(QStringList, listed);
        QFETCH(QString, selected);
        m_fx->twoFamilies(true);
        for (const char *name : {"A.jpg", "B.jpg", "C.jpg"})
            m_fx->photo(QLatin1String(name));
        m_fx->ws->options().showAllocated = showAllocated;
        m_fx->load();
        m_fx->saveTo({QStringLiteral("B.jpg")}, {7, -999});
        QCOMPARE(m_fx->listTexts(), listed);
        const QList<int> rows = m_fx->ws->sourceList().selectedRows();
        QCOMPARE(rows.size(), 1);
        QCOMPARE(m_fx->ws->srcFiles().row(rows.first()).FileNoFamIDs, selected);
        const QList<int> families = m_fx->ws->familyList().selectedPositions();
        QCOMPARE(families, QList<int>{m_fx->ws->privacyMarkerPosition()});
        QVERIFY(QFile::exists(m_fx->src(QStringLiteral("B(#7#P#).jpg"))));
    }

    void nothingToCopyChangesNothing_data()
    {
        QTest::addColumn<QStringList>("photos");
        QTest::addColumn<QList<int>>("families");
        QTest::newRow("no photo") << QStringList{} << QList<int>{12};
        QTest::newRow("only the privacy marker") << QStringList{"A.jpg"} << QList<int>{-999};
    }
    void nothingToCopyChangesNothing()
    {
        QFETCH(QStringList, photos);
        QFETCH(QList<int>, families);
        m_fx->twoFamilies(true);
        m_fx->photo(QStringLiteral("A.jpg"));
        m_fx->load();
        m_fx->saveTo(photos, families);
        QCOMPARE(m_fx->sourceFiles(), QStringList{"A.jpg"});
        QVERIFY(m_fx->targetFiles().isEmpty());
        QVERIFY(m_fx->journal().isEmpty());
        QCOMPARE(m_fx->ws->undos().UndoLevelMax(), 0);
    }

    // 1,000 copies can be undone; 1,001 ask first. Batch-only keeps the test from copying files.
    void tooManyToUndo_data()
    {
        QTest::addColumn<int>("photos");
        QTest::addColumn<int>("families");
        QTest::addColumn<int>("answer"); // -1 no question expected, 0 No, 1 Yes
        QTest::newRow("1000") << 100 << 10 << -1;
        QTest::newRow("1001, No") << 77 << 13 << 0;
        QTest::newRow("1001, Yes") << 77 << 13 << 1;
    }
    void tooManyToUndo()
    {
        QFETCH(int, photos);
        QFETCH(int, families);
        QFETCH(int, answer);
        WriteSetting(QStringLiteral("BatchOnly"), true);
        QList<int> ids;
        for (int f = 1; f <= families; ++f) {
            m_fx->family(f, QStringLiteral("F%1").arg(f, 2, 10, QLatin1Char('0')), QString());
            ids << f;
        }
        QStringList names;
        for (int p = 0; p < photos; ++p) {
            names << QStringLiteral("P%1.jpg").arg(p, 3, 10, QLatin1Char('0'));
            m_fx->env.writeFile(QStringLiteral("src/") + names.last(), "x");
        }
        m_fx->load();
        if (answer >= 0)
            m_fx->port.answer(answer == 1);
        m_fx->saveTo(names, ids);
        if (answer >= 0)
            QCOMPARE(m_fx->port.lastText(), QStringLiteral("There are 1001 files to copy which is too many to undo. "
                                                           "Continue without undo capability?"));
        QCOMPARE(m_fx->ws->undos().UndoLevelMax(), answer == -1 ? 1 : 0);
        QCOMPARE(m_fx->ws->undos().UndoTop(), answer == -1 ? 1000 : 0);
        QCOMPARE(m_fx->listTexts().size(), answer == 0 ? photos : 0);
    }

    void tooLongTargetPathStops()
    {
        m_fx->twoFamilies();
        m_fx->photo(QStringLiteral("IMG_0042.jpg"));
        const QString longTgt = m_fx->env.path(QString(240 - m_fx->env.root().size(), QLatin1Char('t')));
        QDir().mkpath(longTgt);
        WriteSetting(QStringLiteral("TgtDir"), longTgt);
        m_fx->load();
        m_fx->saveTo({QStringLiteral("IMG_0042.jpg")}, {12});
        QCOMPARE(m_fx->port.lastText(), QStringLiteral("The target path\\filename for one photo is too long. Please "
                                                       "choose a different Target Dir (create a network 'share')."));
        QCOMPARE(m_fx->sourceFiles(), QStringList{"IMG_0042.jpg"});
        QVERIFY(m_fx->journal().isEmpty());
        QCOMPARE(m_fx->ws->undos().UndoLevelMax(), 0); // no item was recorded: no empty level stays
    }

    // A copy that fails asks whether to cancel: Yes keeps the photo untouched, No goes on.
    void copyFailureQuestion_data()
    {
        QTest::addColumn<bool>("cancel");
        QTest::newRow("cancel") << true;
        QTest::newRow("go on") << false;
    }
    void copyFailureQuestion()
    {
        QFETCH(bool, cancel);
        m_fx->twoFamilies();
        m_fx->photo(QStringLiteral("IMG_0042.jpg"));
        // A file where the family folder should be makes the copy fail (also for root).
        m_fx->env.writeFile(QStringLiteral("tgt/Anna Smith"), "not a folder");
        m_fx->load();
        m_fx->port.answer(cancel);
        m_fx->saveTo({QStringLiteral("IMG_0042.jpg")}, {12, 7});
        const QStringList texts = m_fx->port.texts();
        QCOMPARE(texts.size(), cancel ? 1 : 2);
        QVERIFY(texts.first().startsWith(QStringLiteral("Failed to copy ") + m_fx->src("IMG_0042.jpg") + ".\r\nErr: "));
        QVERIFY(texts.first().endsWith(QStringLiteral("\r\nDo you wish to cancel?")));
        // Going on, the Save ends by naming the copy that is missing; cancelling needs no list.
        if (!cancel)
            QVERIFY(texts.last().contains(QStringLiteral("1 copy was not made:\r\n\r\nIMG_0042.jpg to Anna Smith\r\n")));
        QCOMPARE(m_fx->sourceFiles(), QStringList{cancel ? "IMG_0042.jpg" : "IMG_0042(#12#7#).jpg"});
        QCOMPARE(QFile::exists(m_fx->tgt(QStringLiteral("Ben Jones/IMG_0042.jpg"))), !cancel);
        QCOMPARE(m_fx->ws->undos().UndoTop(), cancel ? 0 : 2);
        QCOMPARE(m_fx->journal().size(), cancel ? 0 : 3);
    }

    void failedRenameIsReportedAndRowKeepsRealName()
    {
        m_fx->twoFamilies();
        m_fx->photo(QStringLiteral("IMG_0042.jpg"));
        WriteSetting(QStringLiteral("SrcDirInclSubs"), QStringLiteral("0"));
        // Something else already holds the tagged name.
        QDir().mkpath(m_fx->src(QStringLiteral("IMG_0042(#12#).jpg")));
        m_fx->load();
        m_fx->saveTo({QStringLiteral("IMG_0042.jpg")}, {12});
        QVERIFY(m_fx->port.lastText().startsWith(QStringLiteral("Could not rename ")));
        QVERIFY(QFile::exists(m_fx->src(QStringLiteral("IMG_0042.jpg"))));
        const int row = m_fx->ws->sourceList().at(0).row;
        QCOMPARE(m_fx->ws->srcFiles().row(row).PathFile, m_fx->src(QStringLiteral("IMG_0042.jpg")));
        QCOMPARE(m_fx->listTexts(), QStringList{"IMG_0042.jpg"});
    }

    void repeatSelectAndSave()
    {
        m_fx->twoFamilies(true);
        m_fx->photo(QStringLiteral("A.jpg"));
        m_fx->photo(QStringLiteral("B.jpg"));
        m_fx->load();
        m_fx->save->RepeatSelect(); // no level yet: nothing happens
        QVERIFY(m_fx->ws->familyList().selectedPositions().isEmpty());
        m_fx->saveTo({QStringLiteral("A.jpg")}, {7, -999});
        m_fx->selectPhotos({QStringLiteral("B.jpg")});
        m_fx->selectFamilies({12});
        m_fx->save->RepeatAndSave();
        QCOMPARE(m_fx->sourceFiles(), (QStringList{"A(#7#P#).jpg", "B(#7#P#).jpg"}));
        QCOMPARE(m_fx->save->SaveCount(), 2);
    }

    void allocationStatistics()
    {
        m_fx->twoFamilies();
        for (const char *name : {"A.jpg", "B.jpg", "C.jpg"})
            m_fx->photo(QLatin1String(name));
        m_fx->load();
        qint64 now = 1000000;
        m_fx->save->setClock([&now] { return now; });
        QCOMPARE(m_fx->save->AllocationStatistics(3), QStringLiteral("0 pictures allocated in 0s"));
        m_fx->save->FamilyListClicked();
        now += 4000; // counted
        m_fx->save->FamilyListClicked();
        m_fx->save->ActivityTimeout(); // a long pause counts 10 s once
        now += 60000;
        m_fx->save->FamilyListClicked();
        QCOMPARE(m_fx->save->AllocSeconds(), 14.0);
        m_fx->saveTo({QStringLiteral("A.jpg")}, {12});
        // 1 Save in 14 s; two photos left.
        QCOMPARE(m_fx->save->AllocationStatistics(1), QStringLiteral("1 picture allocated in 14s = 14s per file"));
        QCOMPARE(m_fx->save->AllocationStatistics(2), QStringLiteral(" (28s to go)"));
        m_fx->ws->options().showAllocated = true;
        QCOMPARE(m_fx->save->AllocationStatistics(3), QString());
    }
};

QTEST_GUILESS_MAIN(TestAllocationSave)
#include "tst_allocationsave.moc"

#include "allocationfixture.h"

#include "lib/debuglog.h"
#include "lib/error.h"
#include "support/listthumbnails.h"

#include <QSignalSpy>

using namespace quillet;
using namespace quillet::test;

class TestUndos : public QObject
{
    Q_OBJECT

    std::unique_ptr<AllocationFixture> m_fx;

    clsUndos &undos() { return m_fx->ws->undos(); }

    // Saves each photo on its own to the given families: one level per photo.
    void saveEach(const QStringList &names, const QList<int> &families)
    {
        for (const QString &name : names)
            m_fx->saveTo({name}, families);
    }

    QString label()
    {
        QSignalSpy spy(&undos(), &clsUndos::undoLevelsChanged);
        undos().SetUndoLevelsCntLbl();
        return spy.isEmpty() ? QString() : spy.last().at(0).toString();
    }

    // Families 12 and 7 with the privacy marker; photos P1..Pn.
    QStringList standard(int photos)
    {
        m_fx->twoFamilies(true);
        QStringList names;
        for (int i = 1; i <= photos; ++i) {
            names << QStringLiteral("P%1.jpg").arg(i);
            m_fx->photo(names.last());
        }
        m_fx->load();
        return names;
    }

private Q_SLOTS:
    void init() { m_fx = std::make_unique<AllocationFixture>(); }
    void cleanup() { m_fx.reset(); }

    void undoRestoresPhotosAndDeletesCopies()
    {
        standard(3);
        m_fx->saveTo({QStringLiteral("P1.jpg"), QStringLiteral("P2.jpg")}, {12, 7, -999});
        QCOMPARE(m_fx->targetFiles().size(), 4);
        QSignalSpy status(m_fx->ws.get(), &Workspace::statusText);

        undos().UndoLastLevel(false);

        QCOMPARE(m_fx->sourceFiles(), (QStringList{"P1.jpg", "P2.jpg", "P3.jpg"}));
        QVERIFY(m_fx->targetFiles().isEmpty());
        const QStringList journal = m_fx->journal().mid(6);
        QCOMPARE(journal, (QStringList{"NS P1(#12#7#P#).jpg P1.jpg", "DTF Anna Smith\\P1.jpg", "DTF Ben Jones\\P1.jpg",
                                       "NS P2(#12#7#P#).jpg P2.jpg", "DTF Anna Smith\\P2.jpg", "DTF Ben Jones\\P2.jpg"}));
        QCOMPARE(status.last().at(0).toString(), QStringLiteral("4 target files cleared/undone"));
        QCOMPARE(label(), QStringLiteral("0 undos"));
        SourceListModel &list = m_fx->ws->sourceList();
        QCOMPARE(list.rowCount(), 3);
        QCOMPARE(list.selectedRows().size(), 2);
        for (int row : list.selectedRows()) {
            QCOMPARE(list.at(list.positionOfRow(row)).tag, QStringLiteral("BLACK"));
            QVERIFY(!m_fx->ws->srcFiles().row(row).isAllocated());
        }
        QCOMPARE(m_fx->ws->familyList().selectedPositions().size(), 3);
    }

    // Filling the table pushes out whole oldest levels and renumbers the rest from 1.
    void fullTablePushesOutOldestLevels()
    {
        auto record = [this](int items, int photoBase) {
            undos().CreateUndoInit();
            for (int i = 0; i < items; ++i)
                undos().CreateUndoFill(items - i, QStringLiteral("F%1.jpg").arg(photoBase + i / 2), photoBase + i / 2,
                                       QString(), QStringLiteral("/t/%1").arg(photoBase + i), 1, QString());
            undos().CreateUndoFin();
        };
        record(400, 0);
        record(400, 1000);
        record(150, 2000);
        QCOMPARE(undos().UndoTop(), 950);
        record(300, 3000);
        QCOMPARE(undos().UndoLevelMax(), 3);
        QCOMPARE(undos().UndoTop(), 850);
        QCOMPARE(undos().ItemUndoLevel(1), 1);
        QCOMPARE(undos().ItemTgtPathfile(1), QStringLiteral("/t/1000"));
        QCOMPARE(undos().LevelIndexLower(3), 551);
        QCOMPARE(undos().LevelIndexUpper(3), 850);
        QCOMPARE(label(), QStringLiteral("3 undos"));
        // A middle level goes and the later ones move down.
        undos().DeleteUndoLevel(2);
        QCOMPARE(undos().UndoTop(), 700);
        QCOMPARE(undos().ItemUndoLevel(401), 2);
        QCOMPARE(undos().ItemTgtPathfile(401), QStringLiteral("/t/3000"));
    }

    void nonExistentLevelsAreInternalErrors_data()
    {
        QTest::addColumn<bool>("review");
        QTest::addColumn<int>("level");
        QTest::addColumn<QString>("text");
        QTest::newRow("delete above max") << false << 3 << "Internal err - Attempt to delete non-existent undo level";
        QTest::newRow("review above max") << true << 3 << "Internal err - Attempt to view non-existent undo level";
    }
    void nonExistentLevelsAreInternalErrors()
    {
        QFETCH(bool, review);
        QFETCH(int, level);
        QFETCH(QString, text);
        saveEach(standard(2), {12});
        try {
            review ? undos().ReviewUndoLevel(level, false) : undos().DeleteUndoLevel(level);
            QFAIL("no error");
        } catch (const Error &e) {
            QCOMPARE(e.number(), 1000);
            QCOMPARE(e.description(), text);
        }
        QCOMPARE(undos().UndoLevelMax(), 2);
    }

    void undoFileRoundTrip()
    {
        const QStringList names = standard(3);
        saveEach({names.at(0)}, {12, -999});
        QCOMPARE(label(), QStringLiteral("1 undo"));
        saveEach({names.at(1)}, {7});
        undos().SaveToFile();
        QFile file(clsUndos::FilePath());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString expected = "v1\r\n2\r\n3\r\n"
            "1\r\nP1.jpg\r\n" + m_fx->src("P1(#12#P#).jpg") + "\r\n" + m_fx->tgt("Anna Smith/P1.jpg") + "\r\n12\r\n"
            "1\r\nP1.jpg\r\n" + m_fx->src("P1(#12#P#).jpg") + "\r\n\r\n-999\r\n"
            "2\r\nP2.jpg\r\n" + m_fx->src("P2(#7#).jpg") + "\r\n" + m_fx->tgt("Ben Jones/P2.jpg") + "\r\n7\r\n";
        QCOMPARE(QString::fromUtf8(file.readAll()), expected);
        file.close();

        // A reload (as Refresh does) writes and reads back: the photos become the undo zone.
        appState().systemLoaded = true;
        m_fx->ws->options().showAllocated = true;
        m_fx->load();
        QCOMPARE(m_fx->ws->srcFiles().SrcFilesUndoCnt(), 2);
        QCOMPARE(m_fx->ws->srcFiles().row(1).PathFile, m_fx->src("P1(#12#P#).jpg"));
        QCOMPARE(m_fx->ws->srcFiles().SrcFilesCount(), 3); // P3 only is new; tagged files match their undo rows
        QCOMPARE(undos().ItemSrcFilesIndex(3), 2);
        QCOMPARE(label(), QStringLiteral("2 undos"));
        undos().UndoLastLevel(false);
        QCOMPARE(m_fx->sourceFiles(), (QStringList{"P1(#12#P#).jpg", "P2.jpg", "P3.jpg"}));
    }

    void unreadableUndoFileIsDeleted_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("logged");
        QTest::newRow("other version") << QByteArray("v2\r\n0\r\n0\r\n") << "undos file deleted as version different";
        QTest::newRow("truncated") << QByteArray("v1\r\n1\r\n2\r\n1\r\nA.jpg\r\n") << "undos file deleted as unreadable";
        QTest::newRow("not a number") << QByteArray("v1\r\nx\r\n0\r\n") << "undos file deleted as unreadable";
    }
    void unreadableUndoFileIsDeleted()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, logged);
        standard(1);
        QFile file(clsUndos::FilePath());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        m_fx->load();
        QVERIFY(!QFile::exists(clsUndos::FilePath()));
        QCOMPARE(label(), QStringLiteral("0 undos"));
        QCOMPARE(m_fx->ws->srcFiles().SrcFilesUndoCnt(), 0);
        QVERIFY(QString::fromUtf8(fileBytes(GetDebugLogPath())).contains("clsUndo.LoadFromFile: \t" + logged));
    }

    void undoThumbnailsReloaded_data()
    {
        QTest::addColumn<int>("max");
        QTest::addColumn<QList<int>>("withThumbs");
        QTest::newRow("more than the photos") << 50 << QList<int>{1, 2, 3};
        QTest::newRow("newest only") << 1 << QList<int>{3};
    }
    void undoThumbnailsReloaded()
    {
        QFETCH(int, max);
        QFETCH(QList<int>, withThumbs);
        const QStringList names = standard(3);
        saveEach(names, {12});
        WriteSetting(QStringLiteral("Thumbnails"), true);
        WriteSetting(QStringLiteral("ReloadUndoThumbs"), true);
        WriteSetting(QStringLiteral("MaxReloadUndoThumbs"), max);
        appState().systemLoaded = true;
        m_fx->ws->options().thumbnails = true;
        m_fx->load();
        QCOMPARE(m_fx->ws->srcFiles().SrcFilesUndoCnt(), 3);
        for (int row = 1; row <= 3; ++row) {
            QCOMPARE(m_fx->ws->thumbnails().has(row), withThumbs.contains(row));
            QCOMPARE(undos().ItemThumbnailImgLstKey(row).isEmpty(), !withThumbs.contains(row));
        }
        QCOMPARE(m_fx->port.progressCaptions.first(), QStringLiteral("Loading thumbnails for undos..."));

        // Reviewed, a photo with a thumbnail key shows its thumbnail once it is in view (made
        // again when it was released); one without shows the placeholder for good.
        for (int level = 0; level < 3; ++level)
            undos().ReviewUndoLevelPrev(false);
        SourceListModel &list = m_fx->ws->sourceList();
        m_fx->ws->thumbnails().clear(); // as after scrolling far away
        for (int row = 1; row <= 3; ++row) {
            const int p = list.positionOfRow(row);
            QVERIFY(p >= 0);
            QVERIFY(test::waitForThumbnails(list, p, p));
            QCOMPARE(list.thumbnailAt(p) == m_fx->ws->placeholder(), !withThumbs.contains(row));
        }
    }

    void reviewBringsPhotosBackRedWithTheirFamilies()
    {
        const QStringList names = standard(3);
        saveEach({names.at(0)}, {7, -999});
        saveEach({names.at(1)}, {12});
        QCOMPARE(m_fx->listTexts(), QStringList{"P3.jpg"});
        undos().ReviewUndoLevelPrev(false); // from normal mode: the newest level
        QCOMPARE(label(), QStringLiteral("Reviewing 2 of 2"));
        undos().ReviewUndoLevelPrev(false);
        QCOMPARE(label(), QStringLiteral("Reviewing 1 of 2"));
        undos().ReviewUndoLevelPrev(false); // at level 1: nothing happens
        QCOMPARE(label(), QStringLiteral("Reviewing 1 of 2"));
        SourceListModel &list = m_fx->ws->sourceList();
        QCOMPARE(list.rowCount(), 3); // newer reviewed photos stay in the list
        const int p1 = list.positionOfRow(undos().ItemSrcFilesIndex(1));
        QCOMPARE(list.at(p1).tag, QStringLiteral("RED"));
        QCOMPARE(list.selectedPositions(), QList<int>{p1});
        FamilyListModel &families = m_fx->ws->familyList();
        QCOMPARE(families.selectedPositions(), (QList<int>{families.positionOfId(7), families.privacyMarkerPosition()}));

        // A photo that is not under review cannot be viewed.
        m_fx->selectPhotos({QStringLiteral("P3.jpg")});
        QVERIFY(!m_fx->ws->ReviewAllowsView(false));
        QCOMPARE(m_fx->port.lastText(), QStringLiteral("You cannot view new photos when in Review mode. Click the * "
                                                       "button to leave Review mode."));

        undos().JumpToNewUndoLevel();
        QCOMPARE(label(), QStringLiteral("2 undos"));
        QCOMPARE(m_fx->listTexts(), QStringList{"P3.jpg"});
    }

    void undoWhileReviewingMovesToTheNextLevel()
    {
        saveEach(standard(5), {12});
        for (int i = 0; i < 4; ++i)
            undos().ReviewUndoLevelPrev(false);
        QCOMPARE(label(), QStringLiteral("Reviewing 2 of 5"));
        undos().UndoLastLevel(false);
        QCOMPARE(label(), QStringLiteral("Reviewing 2 of 4"));
        QVERIFY(QFile::exists(m_fx->src(QStringLiteral("P2.jpg"))));
        QCOMPARE(undos().ItemFilename(undos().LevelIndexLower(2)), QStringLiteral("P3.jpg"));
    }

    // Saving while reviewing replaces the reviewed level: the old tag and copies go.
    void saveInReviewReplacesTheLevel()
    {
        const QStringList names = standard(2);
        saveEach({names.at(0)}, {12});
        saveEach({names.at(1)}, {12});
        undos().ReviewUndoLevelPrev(false);
        undos().ReviewUndoLevelPrev(false);
        QCOMPARE(label(), QStringLiteral("Reviewing 1 of 2"));
        m_fx->selectFamilies({7});
        m_fx->save->Save();
        QCOMPARE(m_fx->sourceFiles(), (QStringList{"P1(#7#).jpg", "P2(#12#).jpg"}));
        QCOMPARE(m_fx->targetFiles(), (QStringList{"Anna Smith/P2.jpg", "Ben Jones/P1.jpg"}));
        QCOMPARE(undos().UndoLevelMax(), 2);
        // Level 1 is the former level 2 and is reviewed again.
        QCOMPARE(label(), QStringLiteral("Reviewing 1 of 2"));
        QCOMPARE(undos().ItemFilename(1), QStringLiteral("P2.jpg"));
        QCOMPARE(m_fx->journal().mid(4), (QStringList{"NS P1(#12#).jpg P1.jpg", "DTF Anna Smith\\P1.jpg",
                                                      "CS P1.jpg Ben Jones\\P1.jpg", "NS P1.jpg P1(#7#).jpg"}));
    }
};

QTEST_GUILESS_MAIN(TestUndos)
#include "tst_undos.moc"

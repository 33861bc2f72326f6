#include "allocationfixture.h"

#include "lib/debuglog.h"
#include "workspace/copytargets.h"
#include "workspace/photooperations.h"

using namespace quillet;
using namespace quillet::test;

// Every delivery accounted for: copies that failed are named at the end of the Save and in the
// debug log, no copy replaces a different photo of the same name, Undo takes back exactly its
// own copies, and the undo file on disk follows every Save and Undo.
class TestDeliveries : public QObject
{
    Q_OBJECT

    std::unique_ptr<AllocationFixture> m_fx;

    // Selects the photo listed under `path` (relative to the Source Dir, untagged).
    void selectPhotoAt(const QString &path) const
    {
        SourceListModel &list = m_fx->ws->sourceList();
        list.clearSelection();
        for (int i = 0; i < list.rowCount(); ++i) {
            const QString onDisk = m_fx->ws->srcFiles().row(list.at(i).row).PathFile;
            if (QFileInfo(onDisk).absolutePath() == QFileInfo(m_fx->src(path)).absolutePath()
                && list.at(i).text == QFileInfo(path).fileName())
                list.setSelected(i, true);
        }
    }

    QByteArray undoFile() const { return fileBytes(clsUndos::FilePath()); }

private Q_SLOTS:
    void init()
    {
        m_fx = std::make_unique<AllocationFixture>();
        m_fx->twoFamilies();
        WriteSetting(QStringLiteral("AssnSubToTgt"), QStringLiteral("0"));
        WriteSetting(QStringLiteral("AssnSrcSubToTgt"), QStringLiteral("1"));
    }
    void cleanup() { m_fx.reset(); }

    void failedCopiesAreListedAtTheEnd()
    {
        m_fx->photo(QStringLiteral("IMG_0001.jpg"), Qt::red);
        m_fx->photo(QStringLiteral("IMG_0002.jpg"), Qt::blue);
        // A file where Ben's folder should be: every copy to Ben fails.
        m_fx->env.writeFile(QStringLiteral("tgt/Ben Jones"), "not a folder");
        m_fx->load();
        m_fx->port.answer(false); // go on
        m_fx->port.answer(false);
        m_fx->saveTo({QStringLiteral("IMG_0001.jpg"), QStringLiteral("IMG_0002.jpg")}, {12, 7});

        const QString warning = m_fx->port.lastText();
        QVERIFY2(warning.startsWith(QStringLiteral("The Save is finished, but 2 copies were not made:\r\n\r\n"
                                                   "IMG_0001.jpg to Ben Jones\\src\r\nIMG_0002.jpg to Ben Jones\\src\r\n")),
                 qPrintable(warning));
        QCOMPARE(m_fx->targetFiles(),
                 (QStringList{"Anna Smith/src/IMG_0001.jpg", "Anna Smith/src/IMG_0002.jpg", "Ben Jones"}));
        // The running count said "as if made"; the log keeps one line per missing copy.
        const QString log = QString::fromUtf8(fileBytes(GetDebugLogPath()));
        QCOMPARE(log.count(QStringLiteral("copy not made: ")), 2);
        QVERIFY(log.contains(m_fx->src(QStringLiteral("IMG_0002.jpg")) + QStringLiteral(" to ")
                             + m_fx->tgt(QStringLiteral("Ben Jones/src/IMG_0002.jpg"))));
    }

    void sameNamesFromTwoSubFoldersKeepBothCopies_data()
    {
        QTest::addColumn<int>("undoLevel"); // which Save is undone afterwards
        QTest::newRow("undo the first") << 1;
        QTest::newRow("undo the second") << 2;
    }
    void sameNamesFromTwoSubFoldersKeepBothCopies()
    {
        QFETCH(int, undoLevel);
        m_fx->photo(QStringLiteral("Monday/IMG_0042.jpg"), Qt::red);
        m_fx->photo(QStringLiteral("Tuesday/IMG_0042.jpg"), Qt::blue);
        const QByteArray first = fileBytes(m_fx->src(QStringLiteral("Monday/IMG_0042.jpg")));
        const QByteArray second = fileBytes(m_fx->src(QStringLiteral("Tuesday/IMG_0042.jpg")));
        m_fx->load();
        for (const QString &path : {QStringLiteral("Monday/IMG_0042.jpg"), QStringLiteral("Tuesday/IMG_0042.jpg")}) {
            selectPhotoAt(path);
            m_fx->selectFamilies({12});
            m_fx->save->Save();
        }
        // Both land in Anna's folder "src" (the Source Dir's name): the second under its own name.
        const QString natural = m_fx->tgt(QStringLiteral("Anna Smith/src/IMG_0042.jpg"));
        const QString distinct = m_fx->tgt(QStringLiteral("Anna Smith/src/IMG_0042_2.jpg"));
        QCOMPARE(fileBytes(natural), first);
        QCOMPARE(fileBytes(distinct), second);
        QVERIFY(m_fx->journal().contains(QStringLiteral("CS Tuesday\\IMG_0042.jpg Anna Smith\\src\\IMG_0042_2.jpg")));

        clsUndos &undos = m_fx->ws->undos();
        if (undoLevel != undos.UndoLevelMax())
            undos.ReviewUndoLevel(undoLevel, false);
        undos.UndoLastLevel(false);
        QCOMPARE(QFile::exists(natural), undoLevel != 1);
        QCOMPARE(QFile::exists(distinct), undoLevel != 2);
        QCOMPARE(fileBytes(undoLevel == 1 ? distinct : natural), undoLevel == 1 ? second : first);
        QVERIFY(m_fx->journal().last().startsWith(QStringLiteral("DTF Anna Smith\\src\\IMG_0042")));
        QVERIFY(m_fx->journal().last().endsWith(undoLevel == 1 ? QStringLiteral("IMG_0042.jpg")
                                                               : QStringLiteral("IMG_0042_2.jpg")));
    }

    void resavingAReviewedLevelReplacesItsOwnCopy()
    {
        m_fx->photo(QStringLiteral("IMG_0042.jpg"), Qt::red);
        m_fx->load();
        m_fx->saveTo({QStringLiteral("IMG_0042.jpg")}, {12});
        clsUndos &undos = m_fx->ws->undos();
        undos.ReviewUndoLevelPrev(false);
        QVERIFY(undos.ReviewingUndo());
        m_fx->selectFamilies({12, 7});
        m_fx->save->Save();
        QCOMPARE(m_fx->targetFiles(), (QStringList{"Anna Smith/src/IMG_0042.jpg", "Ben Jones/src/IMG_0042.jpg"}));
    }

    void existingFileOfTheSamePhotoIsReplacedOtherwiseKept_data()
    {
        QTest::addColumn<bool>("samePicture");
        QTest::addColumn<QString>("expected");
        QTest::newRow("an earlier copy of this photo") << true << "IMG_0042.jpg";
        QTest::newRow("another photo of that name") << false << "IMG_0042_2.jpg";
    }
    void existingFileOfTheSamePhotoIsReplacedOtherwiseKept()
    {
        QFETCH(bool, samePicture);
        QFETCH(QString, expected);
        m_fx->photo(QStringLiteral("IMG_0042.jpg"), Qt::red);
        const QString target = m_fx->tgt(QStringLiteral("IMG_0042.jpg"));
        QDir().mkpath(m_fx->tgt());
        // No undo level accounts for the file there: only its bytes can say whose it is.
        if (samePicture)
            QVERIFY(QFile::copy(m_fx->src(QStringLiteral("IMG_0042.jpg")), target));
        else
            m_fx->env.writeFile(QStringLiteral("tgt/IMG_0042.jpg"), "another picture");
        m_fx->env.writeFile(QStringLiteral("tgt/IMG_0042_3.jpg"), "a third, not in the way");
        const QString chosen = CopyTargets::ForPhoto(target, m_fx->src(QStringLiteral("IMG_0042.jpg")),
                                                     m_fx->src(QStringLiteral("IMG_0042.jpg")), true, nullptr);
        QCOMPARE(QFileInfo(chosen).fileName(), expected);
    }

    void putAsidePhotosOfOneNameKeepBoth()
    {
        m_fx->photo(QStringLiteral("Monday/IMG_0042.jpg"), Qt::red);
        m_fx->photo(QStringLiteral("Tuesday/IMG_0042.jpg"), Qt::blue);
        m_fx->load();
        PhotoOperations operations(*m_fx->ws);
        for (const QString &path : {QStringLiteral("Monday/IMG_0042.jpg"), QStringLiteral("Tuesday/IMG_0042.jpg")}) {
            selectPhotoAt(path);
            m_fx->port.answer(true);
            QVERIFY(operations.PutAsideSelected().has_value());
        }
        const QDir aside(PhotoOperations::PutAsideDir());
        QCOMPARE(aside.entryList(QDir::Files, QDir::Name), (QStringList{"IMG_0042.jpg", "IMG_0042_2.jpg"}));
        QVERIFY(fileBytes(aside.filePath(QStringLiteral("IMG_0042.jpg"))) != fileBytes(aside.filePath(QStringLiteral("IMG_0042_2.jpg"))));
    }

    void undoFileFollowsEverySaveAndUndo()
    {
        m_fx->photo(QStringLiteral("IMG_0041.jpg"), Qt::red);
        m_fx->photo(QStringLiteral("IMG_0042.jpg"), Qt::blue);
        m_fx->load();
        QCOMPARE(undoFile(), QByteArray()); // nothing saved yet
        m_fx->saveTo({QStringLiteral("IMG_0041.jpg")}, {12, 7});
        QVERIFY(undoFile().startsWith("v1\r\n1\r\n2\r\n1\r\nIMG_0041.jpg\r\n"));
        m_fx->saveTo({QStringLiteral("IMG_0042.jpg")}, {7});
        QVERIFY(undoFile().startsWith("v1\r\n2\r\n3\r\n"));
        m_fx->ws->undos().UndoLastLevel(false);
        QVERIFY(undoFile().startsWith("v1\r\n1\r\n2\r\n"));
        // A photo operation that undoes a reviewed level first writes the file too.
        m_fx->ws->undos().ReviewUndoLevelPrev(false);
        m_fx->port.answer(true);
        QVERIFY(PhotoOperations(*m_fx->ws).DeleteSelected().has_value());
        QCOMPARE(undoFile(), QByteArray("v1\r\n0\r\n0\r\n"));
    }

    void deleteLeavesNoFamiliesForTheNextPhoto()
    {
        m_fx->photo(QStringLiteral("IMG_0041.jpg"), Qt::red);
        m_fx->photo(QStringLiteral("IMG_0042.jpg"), Qt::blue);
        m_fx->load();
        m_fx->selectPhotos({QStringLiteral("IMG_0041.jpg")});
        m_fx->selectFamilies({12});
        m_fx->port.answer(true);
        QCOMPARE(PhotoOperations(*m_fx->ws).DeleteSelected(), std::optional<int>(0));
        QVERIFY(m_fx->ws->familyList().selectedPositions().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestDeliveries)
#include "tst_deliveries.moc"

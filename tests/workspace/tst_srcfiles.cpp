#include "lib/error.h"
#include "workspace/allocationtag.h"
#include "workspace/srcfiles.h"

#include <QTest>

using namespace quillet;

class TestSrcFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void strip_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("stripped");
        QTest::newRow("untagged") << "IMG_0042.jpg" << "IMG_0042.jpg";
        QTest::newRow("one family") << "IMG_0042(#12#).jpg" << "IMG_0042.jpg";
        QTest::newRow("user's own (#") << "Party (#1).jpg" << "Party .jpg";
        QTest::newRow("movie with privacy") << "clip(#5#P#).mp4" << "clip.mp4";
        QTest::newRow("folder with (# in a path") << "/pics/Party (#1)/IMG_7(#3#).jpg" << "/pics/Party (#1)/IMG_7.jpg";
        QTest::newRow("untagged file in such a folder") << "/pics/Party (#1)/IMG_7.jpg" << "/pics/Party (#1)/IMG_7.jpg";
    }
    void strip()
    {
        QFETCH(QString, name);
        QFETCH(QString, stripped);
        QCOMPARE(StripFamIDs(name), stripped);
    }

    void parse_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("found");
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<bool>("keepPrivate");
        QTest::newRow("one family") << "IMG_0042(#12#).jpg" << true << QStringList{"12"} << false;
        QTest::newRow("families and P") << "IMG_0042(#12#7#P#).jpg" << true << QStringList{"12", "7", "P"} << true;
        QTest::newRow("lower-case p") << "clip(#5#p#).mp4" << true << QStringList{"5", "p"} << true;
        QTest::newRow("no tag") << "IMG_1.jpg" << false << QStringList{} << false;
        QTest::newRow("unclosed") << "Party (#1).jpg" << false << QStringList{} << false;
        QTest::newRow("tag under a folder with (#") << "/pics/Day (#2#)/IMG_7(#3#P#).jpg" << true
                                                     << QStringList{"3", "P"} << true;
        QTest::newRow("journal path, folder only") << "Day (#2#)\\IMG_7.jpg" << false << QStringList{} << false;
    }
    void parse()
    {
        QFETCH(QString, name);
        QFETCH(bool, found);
        QFETCH(QStringList, entries);
        QFETCH(bool, keepPrivate);
        const ParsedTag tag = ParseAllocationTag(name);
        QCOMPARE(tag.found, found);
        QCOMPARE(tag.entries, entries);
        QCOMPARE(tag.keepPrivate(), keepPrivate);
    }

    void buildAndRetag()
    {
        const QString tag = BuildAllocationTag({QStringLiteral("12"), QStringLiteral("7"), QStringLiteral("P")});
        QCOMPARE(tag, QStringLiteral("(#12#7#P#)"));
        QCOMPARE(TaggedName(QStringLiteral("IMG_0042.jpg"), tag), QStringLiteral("IMG_0042(#12#7#P#).jpg"));
        // Re-tagging starts from the untagged name, so the old tag is replaced, never extended.
        const QString again = TaggedName(StripFamIDs(QStringLiteral("IMG_0042(#12#).jpg")), BuildAllocationTag({"9"}));
        QCOMPARE(again, QStringLiteral("IMG_0042(#9#).jpg"));
        QCOMPARE(ParseAllocationTag(again).familyIds(), QList<int>{9});
    }

    void zones()
    {
        SrcFiles t;
        QCOMPARE(t.AddUndoRow(QStringLiteral("IMG_5.jpg"), QStringLiteral("/s/IMG_5(#3#).jpg")), 1);
        QCOMPARE(t.SrcFilesUndoCnt(), 1);
        // A scanned file matching an undo photo (any letter case) gets no second row.
        QCOMPARE(t.AddScannedFile(QStringLiteral("/s/img_5(#3#).JPG")), 1);
        QCOMPARE(t.SrcFilesCount(), 1);
        // Same untagged name in two folders: both get rows.
        QCOMPARE(t.AddScannedFile(QStringLiteral("/s/a/IMG_1.jpg")), 2);
        QCOMPARE(t.AddScannedFile(QStringLiteral("/s/b/IMG_1(#3#).jpg")), 3);
        QCOMPARE(t.row(2).Allocated, QStringLiteral("0"));
        QCOMPARE(t.row(3).Allocated, QStringLiteral("-1"));
        QCOMPARE(t.row(3).FileNoFamIDs, QStringLiteral("IMG_1.jpg"));
        t.ResetScanZone();
        QCOMPARE(t.SrcFilesCount(), 1);
        QCOMPARE(t.row(1).PathFile, QStringLiteral("/s/IMG_5(#3#).jpg"));
        QVERIFY_THROWS_EXCEPTION(Error, t.row(2));
    }

    void reloadingGivesTheSameRows()
    {
        SrcFiles t;
        t.AddUndoRow(QStringLiteral("IMG_5.jpg"), QStringLiteral("/s/IMG_5(#3#).jpg"));
        const QStringList files{QStringLiteral("/s/b.jpg"), QStringLiteral("/s/IMG_5(#3#).jpg"),
                                QStringLiteral("/s/a(#1#).jpg")};
        const auto load = [&t, &files] {
            t.ResetScanZone();
            QStringList rows;
            for (const QString &f : files)
                rows << QString::number(t.AddScannedFile(f));
            for (int i = 1; i <= t.SrcFilesCount(); ++i)
                rows << t.row(i).FileNoFamIDs + QLatin1Char('|') + t.row(i).PathFile + QLatin1Char('|') + t.row(i).Allocated;
            return rows;
        };
        const QStringList first = load();
        QCOMPARE(first.mid(0, 3), (QStringList{"2", "1", "3"}));
        QCOMPARE(load(), first);
        QCOMPARE(t.SrcFilesUndoCnt(), 1);
    }

    void sortingKeepsTheUndoZone()
    {
        SrcFiles t;
        t.AddUndoRow(QStringLiteral("z.jpg"), QStringLiteral("/s/z(#1#).jpg"));
        t.AddScannedFile(QStringLiteral("/s/c.jpg"));
        t.AddScannedFile(QStringLiteral("/s/A.jpg"));
        t.AddScannedFile(QStringLiteral("/s/b.jpg"));
        t.SortScanZone();
        QCOMPARE(t.row(1).FileNoFamIDs, QStringLiteral("z.jpg"));
        QCOMPARE(t.row(2).FileNoFamIDs, QStringLiteral("A.jpg"));
        QCOMPARE(t.row(4).FileNoFamIDs, QStringLiteral("c.jpg"));
    }

    void fullTableRefusesClearly()
    {
        SrcFiles t;
        for (int i = 0; i < SrcFiles::kMaxRows; ++i)
            t.AddScannedFile(QStringLiteral("/s/p%1.jpg").arg(i));
        try {
            t.AddScannedFile(QStringLiteral("/s/one-more.jpg"));
            QFAIL("the table must not grow past its limit");
        } catch (const Error &e) {
            QVERIFY(e.description().startsWith(QStringLiteral("Too many photos")));
        }
        QCOMPARE(t.SrcFilesCount(), SrcFiles::kMaxRows);
    }
};

QTEST_GUILESS_MAIN(TestSrcFiles)
#include "tst_srcfiles.moc"

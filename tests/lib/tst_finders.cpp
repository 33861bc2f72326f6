#include "lib/error.h"
#include "lib/findfiles.h"
#include "lib/scanarray.h"
#include "support/testenv.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <sys/stat.h>

using namespace quillet;
using namespace quillet::test;

class TestFinders : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void walkWithAndWithoutRecursionOrFolder()
    {
        TestEnv env;
        env.writeFile(QStringLiteral("src/README"), "");
        env.writeFile(QStringLiteral("src/b.JPG"), "");
        env.writeFile(QStringLiteral("src/a/one.jpg"), "");
        env.writeFile(QStringLiteral("src/a/deep/two.jpg"), "");
        env.writeFile(QStringLiteral("src/.hidden.jpg"), "");

        lib_clsFindFiles finder;
        QStringList flat;
        for (bool ok = finder.FindFirstFile(env.path(QStringLiteral("src")), QStringLiteral("*.*"), false); ok;
             ok = finder.FindNextFile())
            flat << finder.File();
        QCOMPARE(flat, (QStringList{"b.JPG", "README"})); // "*.*" also finds names without extension

        QStringList deep;
        QList<int> levels;
        QStringList dirs;
        for (bool ok = finder.FindFirstFile(env.path(QStringLiteral("src/*.jpg")), QString(), true); ok;
             ok = finder.FindNextFile()) {
            deep << finder.File();
            levels << finder.CurrentFindLevel();
            dirs << finder.Dir();
        }
        QCOMPARE(deep, (QStringList{"two.jpg", "one.jpg", "b.JPG"}));
        QCOMPARE(levels, (QList<int>{3, 2, 1}));
        QCOMPARE(dirs, (QStringList{"a/deep", "a", ""}));
        QVERIFY(!finder.FindFirstFile(QStringLiteral("/no/such/folder"), QStringLiteral("*"), true));
    }

    // The walk reads folders itself: it must list what Qt's own listing lists, in its name order
    // ignoring case, and tell folders (also behind a link) from files, walking into no link.
    void walkListsAsTheFolderListingDoes()
    {
        TestEnv env;
        for (const char *name : {"Zebra.jpg", "apple.JPG", "Äpfel.jpg", "_under.jpg", "10.jpg", "9.jpg", "ß.jpg",
                                 "é.jpg", "E.jpg", "B/inner.jpg", "b2/inner.jpg", ".hidden/inner.jpg"})
            env.writeFile(QStringLiteral("src/") + QString::fromUtf8(name), "");
        const QString src = env.path(QStringLiteral("src"));
        QVERIFY(QFile::link(src + QStringLiteral("/B"), src + QStringLiteral("/link to B")));
        QVERIFY(QFile::link(src + QStringLiteral("/gone"), src + QStringLiteral("/dangling")));
        QVERIFY(::mkfifo(QFile::encodeName(src + QStringLiteral("/pipe")).constData(), 0600) == 0);

        QStringList walked, folders;
        lib_clsFindFiles finder;
        finder.setSearchType(lib_clsFindFiles::FilesAndDirs);
        for (bool ok = finder.FindFirstFile(src, QStringLiteral("*.*"), false); ok; ok = finder.FindNextFile()) {
            walked << finder.File();
            QCOMPARE(finder.FullFile(), src + QLatin1Char('/') + finder.File());
            if (finder.IsDir())
                folders << finder.File();
        }
        QCOMPARE(walked, QDir(src).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System,
                                             QDir::Name | QDir::IgnoreCase));
        QCOMPARE(folders, (QStringList{"B", "b2", "link to B"}));

        QStringList deep;
        for (bool ok = finder.FindFirstFile(src, QStringLiteral("inner.jpg"), true); ok; ok = finder.FindNextFile())
            deep << finder.Dir();
        QCOMPARE(deep, (QStringList{"B", "b2"})); // not again through the link, nor in the hidden folder
    }

    void closeLevelSkipsTheRestOfAFolder()
    {
        TestEnv env;
        env.writeFile(QStringLiteral("r/a/1.jpg"), "");
        env.writeFile(QStringLiteral("r/a/2.jpg"), "");
        env.writeFile(QStringLiteral("r/z.jpg"), "");
        lib_clsFindFiles finder;
        QVERIFY(finder.FindFirstFile(env.path(QStringLiteral("r")), QStringLiteral("*.jpg"), true));
        QCOMPARE(finder.File(), QStringLiteral("1.jpg"));
        QVERIFY(finder.DirChanged());
        finder.CloseCurrentFindLevel();
        QVERIFY(finder.FindNextFile());
        QCOMPARE(finder.File(), QStringLiteral("z.jpg"));
        QVERIFY(finder.DirChanged());
        QVERIFY(!finder.FindNextFile());
    }

    void scanSearches_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QList<int>>("matches");
        QTest::addColumn<int>("firstLoc");
        // items: Apple, banana, APPLE pie, cherry
        QTest::newRow("equals ignores case") << "eq" << "apple" << QList<int>{0} << 1;
        QTest::newRow("contains") << "contains" << "an" << QList<int>{1} << 2;
        QTest::newRow("starts with") << "starts" << "apple" << QList<int>{0, 2} << 1;
        QTest::newRow("ends with") << "ends" << "PIE" << QList<int>{2} << 7;
        QTest::newRow("like") << "like" << "?herr*" << QList<int>{3} << 1;
        QTest::newRow("does not contain") << "notcontains" << "p" << QList<int>{1, 3} << 1;
    }
    void scanSearches()
    {
        QFETCH(QString, kind);
        QFETCH(QString, text);
        QFETCH(QList<int>, matches);
        QFETCH(int, firstLoc);
        lib_clsScanArray scan;
        scan.LoadArray({QStringLiteral("Apple"), QStringLiteral("banana"), QStringLiteral("APPLE pie"),
                        QStringLiteral("cherry")});
        auto search = [&]() {
            if (kind == QLatin1String("eq")) return scan.FindEquals(text);
            if (kind == QLatin1String("contains")) return scan.FindContains(text);
            if (kind == QLatin1String("starts")) return scan.FindStartsWith(text);
            if (kind == QLatin1String("ends")) return scan.FindEndsWith(text);
            if (kind == QLatin1String("like")) return scan.FindLike(text);
            return scan.FindDoesNotContain(text);
        };
        QList<int> found;
        while (search()) {
            if (found.isEmpty())
                QCOMPARE(scan.MatchLocInItem(), firstLoc);
            found << scan.MatchItemNo();
        }
        QCOMPARE(found, matches);
        QVERIFY(!scan.Match());
    }

    void deleteMovesCursorAndMatch()
    {
        lib_clsScanArray scan;
        scan.LoadArray({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("d")});
        scan.setCurrItemNo(2);
        QVERIFY(scan.FindEquals(QStringLiteral("d")));
        scan.Delete(0);
        QCOMPARE(scan.CurrItemNo(), 1);
        QCOMPARE(scan.CurrItem(), QStringLiteral("c"));
        QCOMPARE(scan.MatchItemNo(), 2);
        scan.Delete(1);
        QCOMPARE(scan.CurrItemNo(), -1); // deleting the item at the cursor leaves no cursor
        QCOMPARE(scan.MatchItemNo(), 1);
        QCOMPARE(scan.Count(), 2);
    }

    void invalidIndex_data()
    {
        QTest::addColumn<int>("op");
        QTest::addColumn<QString>("source");
        QTest::newRow("get") << 0 << "clsScanArray:Item_Get()";
        QTest::newRow("let") << 1 << "clsScanArray:Item_Let()";
        QTest::newRow("delete") << 2 << "clsScanArray_ItemDel";
    }
    void invalidIndex()
    {
        QFETCH(int, op);
        QFETCH(QString, source);
        lib_clsScanArray scan;
        scan.Add(QStringLiteral("only"));
        try {
            if (op == 0)
                scan.item(1);
            else if (op == 1)
                scan.setItem(5, QStringLiteral("x"));
            else
                scan.Delete(-1);
            QFAIL("an index beyond the list must raise");
        } catch (const Error &e) {
            QCOMPARE(e.description(), QStringLiteral("Invalid Index"));
            QCOMPARE(e.number(), kObjectErrorBase + 1);
            QCOMPARE(e.source(), source);
        }
    }
};

QTEST_GUILESS_MAIN(TestFinders)
#include "tst_finders.moc"

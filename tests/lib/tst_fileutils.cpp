#include "lib/appstate.h"
#include "lib/error.h"
#include "lib/fileutils.h"
#include "support/hometest.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace quillet;
using namespace quillet::test;

namespace {

QStringList trashed()
{
    const QString files = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
        + QStringLiteral("/Trash/files");
    return QDir(files).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot);
}

// Keeps what it is handed.
struct CollectingSink : CopySink
{
    QByteArray seen;
    std::function<void()> onTake;
    void take(const char *data, qint64 size) override
    {
        seen.append(data, size);
        if (onTake)
            onTake();
    }
};

} // namespace

class TestFileUtils : public HomeTest
{
    Q_OBJECT

private Q_SLOTS:
    void killFile_data()
    {
        QTest::addColumn<bool>("exists");
        QTest::addColumn<bool>("permanently");
        QTest::addColumn<bool>("readOnly");
        QTest::addColumn<QStringList>("trash");
        QTest::newRow("missing file is no failure") << false << false << false << QStringList{};
        QTest::newRow("to the trash") << true << false << false << QStringList{"a.jpg"};
        QTest::newRow("permanently") << true << true << false << QStringList{};
        QTest::newRow("read-only") << true << false << true << QStringList{"a.jpg"};
    }
    void killFile()
    {
        QFETCH(bool, exists);
        QFETCH(bool, permanently);
        QFETCH(bool, readOnly);
        const QString a = m_env->path(QStringLiteral("a.jpg"));
        if (exists)
            m_env->writeFile(QStringLiteral("a.jpg"), "A");
        if (readOnly)
            QVERIFY(QFile::setPermissions(a, QFileDevice::ReadOwner));
        QVERIFY(lib_KillFile(a, permanently));
        QVERIFY(!QFile::exists(a));
        QTEST(trashed(), "trash");
    }

    void makePathCreatesMissingLevels()
    {
        const QString deep = m_env->path(QStringLiteral("one/two/three"));
        QDir().mkpath(m_env->path(QStringLiteral("one")));
        QVERIFY(lib_MakePath(QLatin1Char('"') + deep + QStringLiteral("\" ")));
        QVERIFY(QFileInfo(deep).isDir());
        QVERIFY(!lib_MakePath(QString()));
    }

    void copyToItselfDoesNothing()
    {
        const QString a = m_env->writeFile(QStringLiteral("a.jpg"), "A");
        const QDateTime before = QFileInfo(a).lastModified();
        QVERIFY(!lib_CopyFile(a, a, true));
        QCOMPARE(fileBytes(a), QByteArray("A"));
        QCOMPARE(QFileInfo(a).lastModified(), before);
    }

    void copyOverwriteRules()
    {
        const QString src = m_env->writeFile(QStringLiteral("src/p.jpg"), "NEW");
        const QDateTime stamp(QDate(2019, 5, 4), QTime(10, 11, 12));
        lib_SetFileDate(src, QLatin1Char('M'), stamp);
        const QString tgt = m_env->writeFile(QStringLiteral("tgt/p.jpg"), "OLD");

        QVERIFY(!lib_CopyFile(src, tgt, false));
        QCOMPARE(fileBytes(tgt), QByteArray("OLD"));

        QVERIFY(lib_CopyFile(src, tgt, true));
        QCOMPARE(fileBytes(tgt), QByteArray("NEW"));
        QCOMPARE(QFileInfo(tgt).lastModified(), stamp);
        QCOMPARE(trashed(), QStringList{QStringLiteral("p.jpg")}); // the old target is recoverable
        QCOMPARE(QDir(m_env->path(QStringLiteral("tgt"))).entryList(QDir::Files), QStringList{"p.jpg"});
    }

    void copiesEveryByte_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<QString>("way");
        QTest::addColumn<bool>("otherFileSystem");
        for (int size : {0, 1, 65537, 256 * 1024, 3 * (1 << 20) + 17}) {
            for (const char *way : {"plain", "progress", "sink"}) {
                for (bool other : {false, true})
                    QTest::addRow("%d bytes, %s%s", size, way, other ? ", to /dev/shm" : "") << size << QString::fromLatin1(way)
                                                                                         << other;
            }
        }
    }
    // Whichever way the bytes travel (in the kernel on one file system, by hand between two, with
    // a progress report, or past a sink), the copy is the file, whole, with the file's dates; a
    // sink sees every byte once, in order.
    void copiesEveryByte()
    {
        QFETCH(int, size);
        QFETCH(QString, way);
        QFETCH(bool, otherFileSystem);
        QByteArray bytes(size, Qt::Uninitialized);
        for (int i = 0; i < size; ++i)
            bytes[i] = char((i * 131) ^ (i >> 9));
        const QString src = m_env->writeFile(QStringLiteral("src/big.jpg"), bytes);
        const QDateTime taken(QDate(2021, 6, 5), QTime(14, 3, 9, 250));
        lib_SetFileDate(src, QLatin1Char('M'), taken);
        std::unique_ptr<QTemporaryDir> shm;
        QString target = m_env->path(QStringLiteral("tgt/big.jpg"));
        if (otherFileSystem) {
            if (!QFileInfo(QStringLiteral("/dev/shm")).isWritable())
                QSKIP("no /dev/shm to copy onto another file system");
            shm = std::make_unique<QTemporaryDir>(QStringLiteral("/dev/shm/quillet-test-XXXXXX"));
            target = shm->path() + QStringLiteral("/big.jpg");
        } else {
            QDir().mkpath(m_env->path(QStringLiteral("tgt")));
        }
        qint64 reported = -1;
        const CopyProgress progress = [&reported](qint64 done, qint64) {
            reported = done;
            return true;
        };
        if (way == QLatin1String("sink")) {
            CollectingSink sink;
            QCOMPARE(lib_CopyFileThrough(src, target, false, sink), qint64(size));
            QCOMPARE(sink.seen, bytes);
        } else {
            QVERIFY(lib_CopyFile(src, target, false, way == QLatin1String("progress") ? progress : CopyProgress()));
        }
        QCOMPARE(fileBytes(target), bytes);
        QCOMPARE(QFileInfo(target).lastModified(), taken);
        if (way == QLatin1String("progress") && size > 0)
            QCOMPARE(reported, qint64(size));
    }

    // A source that grows while it is copied (a camera still writing it) gives no copy: the copy
    // would not be the file, and a digest taken on the way would not be of any version of it.
    void sourceGrowingDuringTheCopyFails()
    {
        const QString src = m_env->writeFile(QStringLiteral("src/growing.jpg"), QByteArray(600 * 1024, 'a'));
        const QString target = m_env->path(QStringLiteral("tgt/growing.jpg"));
        QDir().mkpath(m_env->path(QStringLiteral("tgt")));
        bool appended = false;
        CollectingSink sink;
        sink.onTake = [&] {
            if (!std::exchange(appended, true)) {
                QFile more(src);
                QVERIFY(more.open(QIODevice::Append));
                more.write(QByteArray(1000, 'b'));
            }
        };
        try {
            lib_CopyFileThrough(src, target, true, sink);
            QFAIL("a copy of a growing file must fail");
        } catch (const Error &e) {
            QVERIFY2(e.description().contains(QStringLiteral("changed size")), qPrintable(e.description()));
        }
        QVERIFY(appended);
        QCOMPARE(QDir(m_env->path(QStringLiteral("tgt"))).entryList(QDir::Files), QStringList());
    }

    void copyIntoFolderAndByPattern()
    {
        m_env->writeFile(QStringLiteral("src/a.JPG"), "1");
        m_env->writeFile(QStringLiteral("src/b.jpg"), "2");
        m_env->writeFile(QStringLiteral("src/c.txt"), "3");
        QDir().mkpath(m_env->path(QStringLiteral("out")));
        QVERIFY(lib_CopyFile(m_env->path(QStringLiteral("src/c.txt")), m_env->path(QStringLiteral("out/")), false));
        QVERIFY(lib_CopyFile(m_env->path(QStringLiteral("src/*.jpg")), m_env->path(QStringLiteral("out")), false));
        QCOMPARE(QDir(m_env->path(QStringLiteral("out"))).entryList(QDir::Files),
                 (QStringList{"a.JPG", "b.jpg", "c.txt"}));
    }

    void failedCopyLeavesNoTemporary()
    {
        // The target's folder is gone (an unplugged disk looks the same): nothing may be left behind.
        const QString src = m_env->writeFile(QStringLiteral("a.jpg"), "A");
        const QString target = m_env->path(QStringLiteral("unplugged/a.jpg"));
        try {
            lib_CopyFile(src, target, true);
            QFAIL("copy into a missing folder must fail");
        } catch (const Error &e) {
            QCOMPARE(e.number(), kLibErrorNumber);
            QCOMPARE(e.source(), QStringLiteral("Lib09.lib_CopyFile"));
            QVERIFY(e.description().startsWith(QStringLiteral("Failed to copy file\r\n")));
            QVERIFY(e.description().contains(QStringLiteral("Src=") + src));
            QVERIFY(e.description().contains(QStringLiteral("Tgt=") + target));
        }
        QVERIFY(!QFileInfo::exists(m_env->path(QStringLiteral("unplugged"))));
        QCOMPARE(fileBytes(src), QByteArray("A"));
    }

    // A target named like a temporary ("x.~37") is never its own temporary: before, one copy in
    // a hundred wrote into the target's name, then deleted it as the old target.
    void targetOfTheTemporaryFormIsCopiedWhole()
    {
        const QString src = m_env->writeFile(QStringLiteral("db/quilletData.db"), "DATABASE");
        for (int n = 0; n < 300; ++n) {
            const QString target = m_env->path(QStringLiteral("db/quilletData.~%1").arg(n % 100, 2, 10, QLatin1Char('0')));
            QVERIFY(lib_CopyFile(src, target, false));
            QCOMPARE(fileBytes(target), QByteArray("DATABASE"));
            QVERIFY(QFile::remove(target));
        }
    }

    // Another copy into the same folder (a photo and a movie of one name, copied side by side)
    // takes temporary names while this one reads its first block: none of its files is
    // touched, and this copy finds the one name left.
    void temporaryTakenMeanwhileIsLeftAlone()
    {
        const QString src = m_env->writeFile(QStringLiteral("src/x.jpg"), QByteArray(300 * 1024, 'p'));
        const QString target = m_env->path(QStringLiteral("tgt/x.jpg"));
        QDir().mkpath(m_env->path(QStringLiteral("tgt")));
        const auto other = [this](int n) {
            return m_env->path(QStringLiteral("tgt/x.~%1").arg(n, 2, 10, QLatin1Char('0')));
        };
        CollectingSink sink;
        sink.onTake = [&] {
            if (sink.seen.size() > 256 * 1024)
                return;
            for (int n = 0; n < 100; ++n) {
                if (n != 57)
                    writeBytes(other(n), "the other copy's");
            }
        };
        QCOMPARE(lib_CopyFileThrough(src, target, false, sink), qint64(300 * 1024));
        QCOMPARE(fileBytes(target), QByteArray(300 * 1024, 'p'));
        QVERIFY(!QFileInfo::exists(other(57)));
        for (int n = 0; n < 100; ++n) {
            if (n != 57)
                QCOMPARE(fileBytes(other(n)), QByteArray("the other copy's"));
        }
    }

    void tempNameForm()
    {
        const QString name = lib_TempCopyName(QStringLiteral("/t/fam/IMG_1.jpg"), QStringLiteral("/s/IMG_1.jpg"));
        QVERIFY2(QRegularExpression(QStringLiteral("^/t/fam/IMG_1\\.~\\d\\d$")).match(name).hasMatch(),
                 qPrintable(name));
    }

    void deleteDirRefusals_data()
    {
        QTest::addColumn<QString>("dir");
        QTest::addColumn<QString>("message");
        QTest::newRow("network path") << "\\\\server\\share\\x" << "UNCs are not yet supported";
        QTest::newRow("relative") << "photos" << "Directory photos invalid (either no drive or dir specified)";
        QTest::newRow("drive root") << "C:\\" << "Directory C:\\ invalid (drive root not allowed)";
        QTest::newRow("volume root") << "/" << "Directory / invalid (drive root not allowed)";
        QTest::newRow("usb disk root") << "/media/staff/CAMERA"
                                       << "Directory /media/staff/CAMERA invalid (drive root not allowed)";
    }
    void deleteDirRefusals()
    {
        QFETCH(QString, dir);
        QFETCH(QString, message);
        QVERIFY(!lib_DeleteDir(dir, true, 3));
        QCOMPARE(m_port->messages().size(), 1);
        QCOMPARE(m_port->lastText(), message);
        QCOMPARE(m_port->messages().first().style, 1);
        QCOMPARE(m_port->messages().first().timeout, 3);
    }

    void deleteDirContentsOnly()
    {
        m_env->writeFile(QStringLiteral("d/a.jpg"), "1");
        m_env->writeFile(QStringLiteral("d/sub/b.jpg"), "2");
        QVERIFY(lib_DeleteDir(m_env->path(QStringLiteral("d")), true));
        QVERIFY(QFileInfo(m_env->path(QStringLiteral("d"))).isDir());
        QVERIFY(QDir(m_env->path(QStringLiteral("d"))).isEmpty());
        QVERIFY(lib_DeleteDir(m_env->path(QStringLiteral("d")), false));
        QVERIFY(!QFileInfo::exists(m_env->path(QStringLiteral("d"))));
    }

    void fileDates()
    {
        const QString a = m_env->writeFile(QStringLiteral("a.jpg"), "A");
        const QDateTime when(QDate(2015, 6, 7), QTime(8, 9, 10));
        lib_SetFileDate(a, QLatin1Char('M'), when);
        lib_SetFileDate(a, QLatin1Char('A'), when.addDays(1));
        QCOMPARE(lib_FileDate(a), when);
        QCOMPARE(lib_FileDate(a, QLatin1Char('A')), when.addDays(1));
        QVERIFY(!lib_FileDate(m_env->path(QStringLiteral("none"))).isValid());
    }

    void pathParts_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("drive");
        QTest::addColumn<QString>("dir");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("noExt");
        QTest::newRow("usb") << "/media/ann/CAM/DCIM/a.b.jpg" << "/media/ann/CAM" << "/media/ann/CAM/DCIM" << "a.b.jpg"
                             << "/media/ann/CAM/DCIM/a.b";
        QTest::newRow("run media") << "/run/media/ann/CAM/x" << "/run/media/ann/CAM" << "/run/media/ann/CAM" << "x"
                                   << "/run/media/ann/CAM/x";
        QTest::newRow("mnt") << "/mnt/share/f.jpg" << "/mnt/share" << "/mnt/share" << "f.jpg" << "/mnt/share/f";
        QTest::newRow("home") << "/home/u/.hidden" << "/" << "/home/u" << ".hidden" << "/home/u/.hidden";
        QTest::newRow("drive letter") << "d:/x/y.jpg" << "D:" << "d:/x" << "y.jpg" << "d:/x/y";
    }
    void pathParts()
    {
        QFETCH(QString, path);
        QFETCH(QString, drive);
        QFETCH(QString, dir);
        QFETCH(QString, file);
        QFETCH(QString, noExt);
        QCOMPARE(lib_DrivePart(path), drive);
        QCOMPARE(lib_DirPart(path), dir);
        QCOMPARE(lib_FilePart(path), file);
        QCOMPARE(lib_PathWithoutExt(path), noExt);
    }

    void joinPath_data()
    {
        QTest::addColumn<QString>("left");
        QTest::addColumn<QString>("right");
        QTest::addColumn<QString>("expected");
        QTest::newRow("both seams") << "/a/" << "/b" << "/a/b";
        QTest::newRow("left seam") << "/a/" << "b" << "/a/b";
        QTest::newRow("right seam") << "/a" << "/b" << "/a/b";
        QTest::newRow("no seam") << "/a" << "b" << "/a/b";
        QTest::newRow("empty left") << "" << "b" << "b";
    }
    void joinPath()
    {
        QFETCH(QString, left);
        QFETCH(QString, right);
        QFETCH(QString, expected);
        QCOMPARE(lib_JoinPath(left, right), expected);
    }

    void specialFolderPlaceholders()
    {
        const QString pics = lib_SpecialFolder(kFolderPictures);
        const QString docs = lib_SpecialFolder(kFolderDocuments);
        QVERIFY(!pics.isEmpty());
        QCOMPARE(ExpandSpecialDir(QStringLiteral("<my pictures>/Kids"), false), pics + QStringLiteral("/Kids"));
        QCOMPARE(ExpandSpecialDir(QStringLiteral("<My Documents>"), false), docs);
        QCOMPARE(ExpandSpecialDir(pics + QStringLiteral("/Kids"), true), QStringLiteral("<My Pictures>/Kids"));
        QCOMPARE(ExpandSpecialDir(docs + QStringLiteral("/x"), true), QStringLiteral("<My Documents>/x"));
        QCOMPARE(ExpandSpecialDir(QStringLiteral("/media/u/CAM/x"), true), QStringLiteral("/media/u/CAM/x"));
        // A folder that only starts with the same letters is not inside it.
        QCOMPARE(ExpandSpecialDir(pics + QStringLiteral("2/x"), true), pics + QStringLiteral("2/x"));
    }

    void folderChooserStartsWhereThePhotosAre_data()
    {
        QTest::addColumn<QString>("setting"); // relative to the test's folder, "" for none
        QTest::addColumn<bool>("inPictures");
        QTest::newRow("fresh installation") << "" << true;
        QTest::newRow("folder that is gone") << "gone" << true;
        QTest::newRow("folder that exists") << "photos" << false;
    }
    void folderChooserStartsWhereThePhotosAre()
    {
        QFETCH(QString, setting);
        QFETCH(bool, inPictures);
        QDir().mkpath(m_env->path(QStringLiteral("photos")));
        const QString start = setting.isEmpty() ? QString() : m_env->path(setting);
        lib_BrowseForFolder(start, QStringLiteral("Select folder"));
        QCOMPARE(m_port->browseStarts, QStringList{inPictures ? lib_SpecialFolder(kFolderPictures) : start});
    }

    void absolutePaths()
    {
        QCOMPARE(lib_AbsolutePath(QStringLiteral("..\\Photos"), QStringLiteral("/apps/q")), QStringLiteral("/apps/Photos"));
        QCOMPARE(lib_AbsolutePath(QStringLiteral("../../Photos"), QStringLiteral("/apps/q")), QStringLiteral("/Photos"));
        QCOMPARE(lib_AbsolutePath(QStringLiteral("Photos"), QStringLiteral("/apps/q")), QStringLiteral("/apps/q/Photos"));
        QCOMPARE(lib_AbsolutePath(QStringLiteral("/data/Photos"), QStringLiteral("/apps/q")), QStringLiteral("/data/Photos"));
    }

    void runApplicationWaitsForExitCode()
    {
        int code = -5;
        QVERIFY(lib_RunApplication(QStringLiteral("sh -c \"exit 3\""), true, 10, &code));
        QCOMPARE(code, 3);
        const QString doc = m_env->writeFile(QStringLiteral("notes.txt"), "x");
        QVERIFY(lib_RunApplication(doc, false, 0));
        QCOMPARE(m_port->opened, QStringList{doc});
    }
};

QTEST_GUILESS_MAIN(TestFileUtils)
#include "tst_fileutils.moc"

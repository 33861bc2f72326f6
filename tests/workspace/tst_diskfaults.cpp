#include "allocationfixture.h"

#include "lib/apppaths.h"
#include "lib/error.h"
#include "lib/inifile.h"
#include "workspace/allocationtag.h"
#include "workspace/clsundos.h"

#include <QRandomGenerator>

#include <sys/mount.h>
#include <sys/statvfs.h>
#include <unistd.h>

using namespace quillet;
using namespace quillet::test;

// A disk that fills up or turns read-only in the middle of the work: a small file system mounted by
// the test over the Target Dir or the data folder (in a private mount namespace of its own, see
// main() below). Every case ends with a clear message, every source photo under its old or new
// name, no partial target file, and the undo file and ini file readable.
class TestDiskFaults : public QObject
{
    Q_OBJECT

    std::unique_ptr<AllocationFixture> m_fx;
    QStringList m_mounts;
    QHash<QString, QByteArray> m_photos; // untagged name -> bytes

    static bool canMount() { return qEnvironmentVariableIsSet("QUILLET_MOUNT_NS"); }

    bool mountSmall(const QString &dir, int kilobytes)
    {
        const QByteArray options = "size=" + QByteArray::number(kilobytes) + "k";
        if (::mount("tmpfs", QFile::encodeName(dir).constData(), "tmpfs", 0, options.constData()) != 0)
            return false;
        m_mounts.prepend(dir);
        return true;
    }
    static bool makeReadOnly(const QString &dir, int kilobytes)
    {
        const QByteArray options = "size=" + QByteArray::number(kilobytes) + "k";
        return ::mount("tmpfs", QFile::encodeName(dir).constData(), "tmpfs", MS_REMOUNT | MS_RDONLY,
                       options.constData()) == 0;
    }

    // Photos that do not compress: about 200 KB each.
    void photos(int count)
    {
        QRandomGenerator rng(7);
        for (int i = 1; i <= count; ++i) {
            QImage image(420, 320, QImage::Format_RGB32);
            for (int y = 0; y < image.height(); ++y) {
                auto *line = reinterpret_cast<quint32 *>(image.scanLine(y));
                for (int x = 0; x < image.width(); ++x)
                    line[x] = rng.generate();
            }
            const QString name = QStringLiteral("P%1.jpg").arg(i);
            QVERIFY(image.save(m_fx->src(name), "JPG", 95));
            m_photos.insert(name, fileBytes(m_fx->src(name)));
        }
        m_fx->twoFamilies();
        m_fx->load();
    }

    // What must hold after any fault.
    void nothingLost()
    {
        QStringList seen;
        for (const QString &name : m_fx->sourceFiles()) {
            const QString bare = StripFamIDs(name);
            QVERIFY2(m_photos.contains(bare), qPrintable(name));
            QCOMPARE(fileBytes(m_fx->src(name)), m_photos.value(bare));
            seen << bare;
        }
        seen.sort();
        QStringList expected = m_photos.keys();
        expected.sort();
        QCOMPARE(seen, expected); // each photo once, under its old or new name
        for (const QString &name : m_fx->targetFiles()) {
            QVERIFY2(!QFileInfo(name).suffix().startsWith(QLatin1Char('~')), qPrintable(name)); // no temporary left
            QCOMPARE(fileBytes(m_fx->tgt(name)), m_photos.value(QFileInfo(name).fileName()));
        }
        QVERIFY(!IniFile::read(AppPaths::dataDir() + QStringLiteral("/quillet.ini"), QStringLiteral("Settings"),
                               QStringLiteral("SrcDir"))
                     .isEmpty());
        const QByteArray undo = fileBytes(clsUndos::FilePath());
        QVERIFY(undo.isEmpty() || undo.startsWith("v1\r\n"));
    }

private Q_SLOTS:
    void init()
    {
        if (!canMount())
            QSKIP("no private mount namespace for a small file system (unshare was not available)");
        m_fx = std::make_unique<AllocationFixture>();
        m_photos.clear();
    }
    void cleanup()
    {
        for (const QString &dir : std::as_const(m_mounts))
            ::umount2(QFile::encodeName(dir).constData(), MNT_DETACH);
        m_mounts.clear();
        m_fx.reset();
    }

    void save_data()
    {
        QTest::addColumn<bool>("readOnly");
        QTest::addColumn<bool>("cancel");
        QTest::newRow("full disk, cancel") << false << true;
        QTest::newRow("full disk, go on") << false << false;
        QTest::newRow("read-only disk, cancel") << true << true;
        QTest::newRow("read-only disk, go on") << true << false;
    }
    // Five photos to two families need about 2 MB; the Target Dir holds 700 KB, or nothing at all.
    void save()
    {
        QFETCH(bool, readOnly);
        QFETCH(bool, cancel);
        QVERIFY(mountSmall(m_fx->tgt(), 700));
        if (readOnly)
            QVERIFY(makeReadOnly(m_fx->tgt(), 700));
        photos(5);
        for (int i = 0; i < 10; ++i)
            m_fx->port.answer(!cancel);
        m_fx->saveTo(m_photos.keys(), {12, 7});

        const QStringList texts = m_fx->port.texts();
        QVERIFY(!texts.isEmpty());
        QVERIFY2(texts.first().startsWith(QStringLiteral("Failed to copy ")), qPrintable(texts.first()));
        QVERIFY2(texts.first().contains(readOnly ? QStringLiteral("Read-only") : QStringLiteral("space")),
                 qPrintable(texts.first()));
        QVERIFY(texts.first().endsWith(QStringLiteral("Do you wish to cancel?")));
        m_fx->ws->undos().SaveToFile();
        nothingLost();
    }

    // The copies of a level cannot be deleted from a disk that has turned read-only since.
    void undoOnAReadOnlyDisk()
    {
        QVERIFY(mountSmall(m_fx->tgt(), 4096));
        photos(2);
        m_fx->saveTo(m_photos.keys(), {12});
        QCOMPARE(m_fx->targetFiles().size(), 2);
        QVERIFY(makeReadOnly(m_fx->tgt(), 4096));
        try {
            m_fx->ws->undos().UndoLastLevel(false);
        } catch (const Error &e) {
            QVERIFY(!e.description().isEmpty()); // reported by the command's handler
        }
        m_fx->ws->undos().SaveToFile();
        nothingLost();
    }

    // The undo file is rewritten at shutdown onto a data folder that has filled up: the write fails
    // with a message naming the file, and the file of the last successful write stays whole.
    void undoFileOntoAFullDataFolder()
    {
        photos(2);
        m_fx->saveTo({QStringLiteral("P1.jpg")}, {12});
        m_fx->ws->undos().SaveToFile();
        const QByteArray before = fileBytes(clsUndos::FilePath());
        QVERIFY(before.startsWith("v1\r\n2\r\n") || before.startsWith("v1\r\n1\r\n"));

        // The data folder moves onto a small disk with what it holds, which then fills up.
        const QString data = AppPaths::dataDir();
        QHash<QString, QByteArray> files;
        for (const QString &name : QDir(data).entryList(QDir::Files))
            files.insert(name, fileBytes(data + QLatin1Char('/') + name));
        QVERIFY(mountSmall(data, 1024));
        for (auto it = files.cbegin(); it != files.cend(); ++it) {
            QFile f(data + QLatin1Char('/') + it.key());
            QVERIFY(f.open(QIODevice::WriteOnly));
            QCOMPARE(f.write(it.value()), it.value().size());
        }
        QFile filler(data + QStringLiteral("/filler"));
        QVERIFY(filler.open(QIODevice::WriteOnly));
        const QByteArray block(64 * 1024, 'x');
        while (filler.write(block) == block.size() && filler.flush()) {
        }
        filler.close();
        struct statvfs fs {};
        QCOMPARE(::statvfs(QFile::encodeName(data).constData(), &fs), 0);
        QCOMPARE(fs.f_bavail, 0ul);

        m_fx->saveTo({QStringLiteral("P2.jpg")}, {7});
        try {
            m_fx->ws->undos().SaveToFile();
            QFAIL("the undo file was written onto a full disk");
        } catch (const Error &e) {
            QVERIFY2(e.description().contains(clsUndos::FilePath()), qPrintable(e.description()));
        }
        QCOMPARE(fileBytes(clsUndos::FilePath()), before);
        try {
            WriteSetting(QStringLiteral("PCname"), QStringLiteral("A much longer name than before"));
        } catch (const Error &) {
        }
        QVERIFY(QFile::remove(data + QStringLiteral("/filler")));
        nothingLost();
    }
};

// The test mounts small file systems, which needs a mount namespace of its own: it runs itself again
// under unshare (as root, or as the root of a new user namespace), so nothing it mounts is seen
// outside it or outlives it. Where neither is allowed, the cases skip with a message.
int main(int argc, char **argv)
{
    if (!qEnvironmentVariableIsSet("QUILLET_MOUNT_NS") && !qEnvironmentVariableIsSet("QUILLET_NO_MOUNT_NS")) {
        for (const char *userNs : {"", "--user --map-root-user "}) {
            const QByteArray probe = QByteArray("unshare ") + userNs + "--mount true >/dev/null 2>&1";
            if (std::system(probe.constData()) != 0)
                continue;
            qputenv("QUILLET_MOUNT_NS", "1");
            QList<QByteArray> words = QByteArray(QByteArray("unshare ") + userNs + "--mount").split(' ');
            std::vector<char *> args;
            for (QByteArray &w : words)
                args.push_back(w.data());
            for (int i = 0; i < argc; ++i)
                args.push_back(argv[i]);
            args.push_back(nullptr);
            ::execvp("unshare", args.data());
            qunsetenv("QUILLET_MOUNT_NS");
        }
    }
    QGuiApplication app(argc, argv);
    TestDiskFaults test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_diskfaults.moc"

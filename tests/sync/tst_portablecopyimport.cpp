#include "transferfixture.h"

#include "support/hometest.h"
#include "sync/portablecopyimport.h"

#include <QTemporaryDir>

using namespace quillet;
using namespace quillet::test;

// Import from a portable copy: its device folder (settings file, batchfiles, undo files) and its
// folder of allocated originals, on the same and on another file system.
class TestPortableCopyImport : public HomeTest
{
    Q_OBJECT

    std::unique_ptr<PcHome> m_pc;
    QString m_device; // the device's root
    int m_refreshes = 0;

    QString xfr() const { return m_device + QStringLiteral("/Quillet"); }
    QString originals() const { return m_device + QStringLiteral("/Originals"); }

    // The device: its settings file naming the originals folder, two originals.
    void makeDevice(const QString &root, const QString &origCopyDir = QStringLiteral("../Originals"))
    {
        m_device = root;
        writeBytes(xfr() + "/quillet.ini", "[Settings]\r\nPortCopyOrigCopyDir=" + origCopyDir.toUtf8() + "\r\n");
        writeBytes(originals() + "/IMG_0001.JPG", "photo one");
        writeBytes(originals() + "/IMG_0002.JPG", "photo two");
        m_pc->activate();
        WriteSetting(QStringLiteral("PortableCopyXfrDir"), xfr());
    }
    QString runImport(const QList<bool> &answers)
    {
        for (bool a : answers)
            m_port->answer(a);
        PortableCopyImport import([this] { ++m_refreshes; });
        return import.ImportFromPortableCopy();
    }
    static QStringList filesIn(const QString &dir, const QString &pattern = QStringLiteral("*"))
    {
        return QDir(dir).entryList({pattern}, QDir::Files | QDir::System, QDir::Name);
    }

private Q_SLOTS:
    void init()
    {
        HomeTest::init();
        m_refreshes = 0;
        m_pc = std::make_unique<PcHome>(m_env->root(), QStringLiteral("A"));
        QVERIFY(m_pc->install(QString()));
        makeDevice(m_env->path(QStringLiteral("device")));
    }

    void noDeviceNamesTheSettingsFile()
    {
        QFile::remove(xfr() + "/quillet.ini");
        QCOMPARE(runImport({}), QString());
        QCOMPARE(m_port->messages().size(), 1);
        QCOMPARE(m_port->messages().first().style, int(MsgStyle::Warning));
        QCOMPARE(m_port->lastText(), QStringLiteral("Can not see any Portable Copy device\r\n(looking for INI file at "
                                                    "Portable Copy transfer dir as specified in Settings) ie. ")
                                         + xfr() + "/quillet.ini)");
        QVERIFY(m_port->beeps >= 1);
    }

    void declinedQuestionsChangeNothing_data()
    {
        QTest::addColumn<QList<bool>>("answers");
        QTest::newRow("not this device") << QList<bool>{false};
        QTest::newRow("not these files") << QList<bool>{true, false};
    }
    void declinedQuestionsChangeNothing()
    {
        QFETCH(QList<bool>, answers);
        writeBytes(xfr() + "/_Undos_A.log", "v1\r\n0\r\n0\r\n");
        QCOMPARE(runImport(answers), QString());
        QCOMPARE(m_port->messages().first().text,
                 QStringLiteral("Portable Copy device found. Do you want to import its files & batchfiles?"));
        if (answers.size() == 2)
            QCOMPARE(m_port->messages().at(1).text,
                     QStringLiteral("Import files from ") + originals() + "  to  " + m_pc->src() + "?");
        QCOMPARE(filesIn(originals()).size(), 2);
        QVERIFY(QFileInfo::exists(xfr() + "/_Undos_A.log"));
        QCOMPARE(filesIn(m_pc->src()), QStringList());
    }

    void importTakesPhotosAndThisPcsBatchfiles_data()
    {
        QTest::addColumn<bool>("otherFileSystem");
        QTest::newRow("device on the same file system") << false;
        QTest::newRow("device on another file system") << true;
    }
    void importTakesPhotosAndThisPcsBatchfiles()
    {
        QFETCH(bool, otherFileSystem);
        QTemporaryDir shm(QStringLiteral("/dev/shm/quillet-device-XXXXXX"));
        if (otherFileSystem) {
            if (!shm.isValid())
                QSKIP("no second file system (/dev/shm) here");
            makeDevice(shm.path());
        }
        writeBytes(originals() + "/Sub/IMG_0003.JPG", "below the folder: stays");
        const QString ownCurrent = Batchfile::CurrentName(QStringLiteral("A"));
        writeBytes(ownCurrent, "this PC's own journal, not yet exported");
        writeBytes(xfr() + "/_Batchfile_999999999999_A.log", "the device's current journal");
        writeBytes(xfr() + "/_batchfile_261101101010_a.log", "the device's closed journal");
        writeBytes(xfr() + "/_Batchfile_261101101010_B.log", "another PC's journal");
        writeBytes(xfr() + "/_Undos_A.log", "v1\r\n0\r\n0\r\n");
        writeBytes(xfr() + "/_Undos_B.log", "v1\r\n0\r\n0\r\n");

        QCOMPARE(runImport({true, true}), QStringLiteral("2 files imported"));
        QCOMPARE(m_port->progressCaptions, QStringList{"Importing from Portable Copy device..."});
        QCOMPARE(filesIn(m_pc->src()), (QStringList{"IMG_0001.JPG", "IMG_0002.JPG"}));
        QCOMPARE(fileBytes(m_pc->src() + "/IMG_0002.JPG"), QByteArray("photo two"));
        QCOMPARE(filesIn(originals()), QStringList());
        QVERIFY(QFileInfo::exists(originals() + "/Sub/IMG_0003.JPG"));
        // Both current journals survive: this PC's as it was, the device's under a closing stamp.
        QCOMPARE(fileBytes(ownCurrent), QByteArray("this PC's own journal, not yet exported"));
        const QStringList adopted = filesIn(AppPaths::dataDir(), QStringLiteral("_Batchfile_*"));
        QCOMPARE(adopted.size(), 3);
        QStringList contents;
        for (const QString &name : adopted)
            contents << QString::fromUtf8(fileBytes(AppPaths::dataFile(name)));
        QVERIFY(contents.contains("the device's current journal"));
        QVERIFY(contents.contains("the device's closed journal"));
        QVERIFY(adopted.contains("_batchfile_261101101010_a.log"));
        // The device keeps its settings and the other PC's journal, and loses its undo files.
        QCOMPARE(filesIn(xfr()), (QStringList{"_Batchfile_261101101010_B.log", "quillet.ini"}));
        QCOMPARE(m_refreshes, 1);
    }

    void undoFilesGoEvenWhenNothingMoved()
    {
        QFile::remove(originals() + "/IMG_0001.JPG");
        QFile::remove(originals() + "/IMG_0002.JPG");
        writeBytes(xfr() + "/_Undos_A.log", "v1\r\n0\r\n0\r\n");
        QCOMPARE(runImport({true, true}), QStringLiteral("0 files imported"));
        QCOMPARE(filesIn(xfr()), QStringList{"quillet.ini"});
        QCOMPARE(m_refreshes, 0);
    }

    void missingOriginalsFolder()
    {
        QVERIFY(QDir(originals()).removeRecursively());
        QCOMPARE(runImport({true, true}), QString());
        QCOMPARE(m_port->lastText(), QStringLiteral("Portable Copy Source Dir (") + originals() + ") does not exist");
    }

    // The device's settings file is input from another machine: a folder it names off the device
    // (or one of this PC's own) is refused before any question about files.
    void originalsFolderOffTheDevice_data()
    {
        QTest::addColumn<QString>("setting");
        QTest::newRow("absolute, elsewhere") << "OUTSIDE";
        QTest::newRow("relative, climbing out") << "../../outside";
        QTest::newRow("this PC's Source Dir") << "SRC";
        QTest::newRow("empty") << "";
    }
    void originalsFolderOffTheDevice()
    {
        QFETCH(QString, setting);
        const QString outside = m_env->path(QStringLiteral("outside"));
        writeBytes(outside + "/private.JPG", "not the device's");
        writeBytes(m_pc->src() + "/IMG_0100.JPG", "already here");
        setting.replace(QStringLiteral("OUTSIDE"), outside).replace(QStringLiteral("SRC"), m_pc->src());
        makeDevice(m_device, setting);
        QCOMPARE(runImport({true}), QString());
        QCOMPARE(m_port->messages().size(), 2);
        QVERIFY2(m_port->lastText().contains(QLatin1String("which is not on the device")), qPrintable(m_port->lastText()));
        QCOMPARE(filesIn(outside), QStringList{"private.JPG"});
        QCOMPARE(filesIn(m_pc->src()), QStringList{"IMG_0100.JPG"});
        QCOMPARE(filesIn(originals()).size(), 2);
    }

    void linksOnTheDeviceAreRefused()
    {
        const QString outside = m_env->path(QStringLiteral("outside"));
        writeBytes(outside + "/private.JPG", "not the device's");
        QVERIFY(QFile::link(outside + "/private.JPG", originals() + "/IMG_0009.JPG"));
        QCOMPARE(runImport({true, true}), QStringLiteral("2 files imported"));
        QVERIFY(m_port->texts().join("|").contains(originals() + "/IMG_0009.JPG: it is a link to another place"));
        QCOMPARE(filesIn(m_pc->src()), (QStringList{"IMG_0001.JPG", "IMG_0002.JPG"}));
        QCOMPARE(fileBytes(outside + "/private.JPG"), QByteArray("not the device's"));
    }

    void adoptedName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("present"); // batchfiles already in the data folder
        QTest::addColumn<QString>("expected");    // "" not taken
        QTest::newRow("closed, free") << "_Batchfile_261101101010_A.log" << QStringList{}
                                      << "_Batchfile_261101101010_A.log";
        QTest::newRow("other letter case") << "_BATCHFILE_261101101010_a.LOG" << QStringList{}
                                           << "_BATCHFILE_261101101010_a.LOG";
        QTest::newRow("current: closing stamp") << "_Batchfile_999999999999_A.log" << QStringList{}
                                                << "_Batchfile_261123120000_A.log";
        QTest::newRow("closed name taken: next free second")
            << "_Batchfile_261123120000_A.log"
            << QStringList{"_Batchfile_261123120000_A.log", "_Batchfile_261123120001_A.log"}
            << "_Batchfile_261123120002_A.log";
        QTest::newRow("another PC's") << "_Batchfile_261101101010_B.log" << QStringList{} << "";
        QTest::newRow("a PC whose name ends the same") << "_Batchfile_261101101010_XA.log" << QStringList{} << "";
        QTest::newRow("eleven characters") << "_Batchfile_26110110101_A.log" << QStringList{} << "";
    }
    void adoptedName()
    {
        QFETCH(QString, name);
        QFETCH(QStringList, present);
        QFETCH(QString, expected);
        for (const QString &p : present)
            writeBytes(AppPaths::dataFile(p), "x");
        const QDateTime now(QDate(2026, 11, 23), QTime(12, 0, 0));
        const QString got = PortableCopyImport::AdoptedName(name, QStringLiteral("A"), now);
        QCOMPARE(got, expected.isEmpty() ? QString() : AppPaths::dataFile(expected));
    }
};

QTEST_GUILESS_MAIN(TestPortableCopyImport)
#include "tst_portablecopyimport.moc"

#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "sync/batchfilejournal.h"
#include "support/hometest.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace quillet;
using namespace quillet::test;

namespace {

void writeLines(const QString &path, int count)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    for (int i = 0; i < count; ++i)
        f.write("x\r\n");
}

QStringList batchfiles()
{
    return QDir(AppPaths::dataDir()).entryList({QStringLiteral("_Batchfile_*.log")}, QDir::Files, QDir::Name);
}

} // namespace

class TestBatchfileJournal : public HomeTest
{
    Q_OBJECT

    int m_replays = 0;

    void runInit() { Batchfile::InitBatchfile([this] { ++m_replays; }); }

private Q_SLOTS:
    void init()
    {
        HomeTest::init();
        m_env->dataDir();
        m_replays = 0;
        WriteSetting(QStringLiteral("PCname"), QStringLiteral("Frontdesk"));
        WriteSetting(QStringLiteral("SrcDir"), m_env->path(QStringLiteral("src")));
        WriteSetting(QStringLiteral("TgtDir"), m_env->path(QStringLiteral("tgt")));
        WriteSetting(QStringLiteral("CreateBatchs"), QStringLiteral("1"));
    }

    void names()
    {
        QCOMPARE(QFileInfo(Batchfile::ClosedName(QStringLiteral("Frontdesk"),
                                                 QDateTime(QDate(2016, 11, 16), QTime(20, 48, 30))))
                     .fileName(),
                 QStringLiteral("_Batchfile_161116204830_Frontdesk.log"));
        QCOMPARE(QFileInfo(Batchfile::CurrentName(QStringLiteral("PC2"))).fileName(),
                 QStringLiteral("_Batchfile_999999999999_PC2.log"));
    }

    void offMeansNoPathButReplayStillRuns()
    {
        WriteSetting(QStringLiteral("CreateBatchs"), QStringLiteral("0"));
        runInit();
        QVERIFY(Batchfile::CurrentPath().isEmpty());
        QCOMPARE(m_replays, 1);
    }

    void emptyFoldersSkipTheSizeCheck()
    {
        WriteSetting(QStringLiteral("TgtDir"), QString());
        writeLines(Batchfile::CurrentName(QStringLiteral("Frontdesk")), 3000);
        runInit();
        QCOMPARE(Batchfile::CurrentPath(), Batchfile::CurrentName(QStringLiteral("Frontdesk")));
        QVERIFY(m_port->messages().isEmpty());
        QCOMPARE(m_replays, 1);
    }

    void sizeQuestions_data()
    {
        QTest::addColumn<int>("lines");
        QTest::addColumn<QList<bool>>("answers");
        QTest::addColumn<bool>("turnedOff");
        QTest::newRow("2500 lines: no question") << 2500 << QList<bool>{} << false;
        QTest::newRow("2501, intended") << 2501 << QList<bool>{true} << false;
        QTest::newRow("2501, not intended, keep") << 2501 << QList<bool>{false, false} << false;
        QTest::newRow("2501, not intended, delete") << 2501 << QList<bool>{false, true} << true;
    }
    void sizeQuestions()
    {
        QFETCH(int, lines);
        QFETCH(QList<bool>, answers);
        QFETCH(bool, turnedOff);
        const QString current = Batchfile::CurrentName(QStringLiteral("Frontdesk"));
        writeLines(current, lines);
        for (bool a : answers)
            m_port->answer(a);
        runInit();
        QCOMPARE(m_port->messages().size(), answers.size());
        QCOMPARE(QFile::exists(current), !turnedOff);
        QCOMPARE(Batchfile::CurrentPath().isEmpty(), turnedOff);
        QCOMPARE(ReadSetting(QStringLiteral("CreateBatchs")), turnedOff ? QStringLiteral("0") : QStringLiteral("1"));
        QCOMPARE(m_replays, 1);
    }

    void writerHeaderAndEntries()
    {
        runInit();
        {
            BatchfileWriter w;
            w.entry(Batchfile::kCopySource, {QStringLiteral("IMG_1.jpg"), QStringLiteral("Ann Lee\\IMG_1.jpg")});
            w.entry(Batchfile::kRenameSource, {QStringLiteral("IMG_1.jpg"), QStringLiteral("IMG_1(#3#).jpg")});
        }
        {
            BatchfileWriter w;
            w.entry(Batchfile::kDeleteSource, {QStringLiteral("sub\\IMG_2.jpg")});
        }
        const QByteArray expected = m_env->path(QStringLiteral("src")).toUtf8() + "\r\n"
            + m_env->path(QStringLiteral("tgt")).toUtf8() + "\r\nNumber of times processed: 0\r\n"
            + "CS\r\nIMG_1.jpg\r\nAnn Lee\\IMG_1.jpg\r\nNS\r\nIMG_1.jpg\r\nIMG_1(#3#).jpg\r\nDS\r\nsub\\IMG_2.jpg\r\n";
        QCOMPARE(fileBytes(Batchfile::CurrentPath()), expected);
    }

    void sourceDirChangeStartsANewBatchfile()
    {
        runInit();
        {
            BatchfileWriter w;
            w.entry(Batchfile::kDeleteSource, {QStringLiteral("a.jpg")});
        }
        WriteSetting(QStringLiteral("SrcDir"), m_env->path(QStringLiteral("newsrc")));
        Batchfile::SetBatchfileName(true);
        {
            BatchfileWriter w;
            w.entry(Batchfile::kDeleteSource, {QStringLiteral("b.jpg")});
        }
        const QStringList files = batchfiles();
        QCOMPARE(files.size(), 2);
        QVERIFY(files[1].startsWith(QStringLiteral("_Batchfile_999999999999_")));
        const QByteArray closed = fileBytes(AppPaths::dataFile(files[0]));
        QVERIFY(closed.startsWith(QByteArray(m_env->path(QStringLiteral("src")).toUtf8() + "\r\n")));
        QVERIFY(closed.endsWith("DS\r\na.jpg\r\n"));
        const QByteArray current = fileBytes(Batchfile::CurrentPath());
        QVERIFY(current.startsWith(QByteArray(m_env->path(QStringLiteral("newsrc")).toUtf8() + "\r\n")));
        QVERIFY(current.endsWith("Number of times processed: 0\r\nDS\r\nb.jpg\r\n"));
    }

    void closingEdgeCases()
    {
        Batchfile::SetBatchfileName(true); // nothing to close: only the path is set
        QVERIFY(batchfiles().isEmpty());
        QCOMPARE(Batchfile::CurrentPath(), Batchfile::CurrentName(QStringLiteral("Frontdesk")));

        // A closed name that is taken (two closings in one second) leaves the current file alone.
        const QDateTime now = QDateTime::currentDateTime();
        for (int s = 0; s < 3; ++s)
            writeLines(Batchfile::ClosedName(QStringLiteral("Frontdesk"), now.addSecs(s)), 1);
        writeLines(Batchfile::CurrentPath(), 4);
        Batchfile::SetBatchfileName(true);
        QCOMPARE(Batchfile::CountLines(Batchfile::CurrentPath()), 4);
    }

    void relativePaths_data()
    {
        QTest::addColumn<QString>("full");
        QTest::addColumn<QString>("base");
        QTest::addColumn<QString>("relative");
        QTest::newRow("directly in the base") << "/p/src/IMG_1.jpg" << "/p/src" << "IMG_1.jpg";
        QTest::newRow("sub-folder keeps a backslash") << "/p/src/2024/May/IMG_1.jpg" << "/p/src/" << "2024\\May\\IMG_1.jpg";
        QTest::newRow("family folder") << "/t/Ann Lee/x.jpg" << "/t" << "Ann Lee\\x.jpg";
    }
    void relativePaths()
    {
        QFETCH(QString, full);
        QFETCH(QString, base);
        QFETCH(QString, relative);
        QCOMPARE(Batchfile::RelativePath(full, base), relative);
        QCOMPARE(Batchfile::NativePath(base, relative), QDir::cleanPath(full));
    }

    void opcodes()
    {
        QCOMPARE(Batchfile::OperandCount(QStringLiteral("CS")), 2);
        QCOMPARE(Batchfile::OperandCount(QStringLiteral("NTD")), 2);
        QCOMPARE(Batchfile::OperandCount(QStringLiteral("RSL")), 1);
        QCOMPARE(Batchfile::OperandCount(QStringLiteral("cs")), -1);
        QCOMPARE(Batchfile::OperandCount(QStringLiteral("CS ")), -1);
        QCOMPARE(Batchfile::OperandCount(QStringLiteral("Results: OK")), -1);
    }
};

QTEST_GUILESS_MAIN(TestBatchfileJournal)
#include "tst_batchfilejournal.moc"

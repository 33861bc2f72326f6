#include "crashhelper.h"
#include "replayfixture.h"

#include "imaging/rotatejpeg.h"
#include "workspace/allocationtag.h"

using namespace quillet;
using namespace quillet::test;

// A replay killed at any moment loses nothing: every photo is on disk under its old or its new
// name, every target file is a complete copy, the batchfile stays in the data folder until it
// has been replayed completely, and the next run finishes the work without turning a photo twice.
class TestReplayCrash : public QObject
{
    Q_OBJECT

    static constexpr int kPhotos = 12;
    QByteArray m_original;
    QByteArray m_turned;

    static QString name(int i) { return QStringLiteral("P%1.jpg").arg(i, 2, 10, QLatin1Char('0')); }

    void prepare(ReplayFixture &f)
    {
        QStringList entries;
        for (int i = 0; i < kPhotos; ++i) {
            QFile::remove(f.src(name(i)));
            QFile out(f.src(name(i)));
            QVERIFY(out.open(QIODevice::WriteOnly));
            out.write(m_original);
            entries << "CS" << name(i) << "Ann\\" + name(i) << "CS" << name(i) << "Bob Ray\\" + name(i) << "RSL"
                    << name(i) << "NS" << name(i) << QString(name(i)).replace(".jpg", "(#3#5#).jpg");
        }
        f.batchfile(entries);
    }

    static int run(int killAfter, int delayMs = 0)
    {
        return runHelper(QStringLiteral(REPLAYCRASH_HELPER), {QString::number(killAfter)}, delayMs > 0 ? delayMs : -1);
    }

    // Each photo once under its old or new name, whole; each target file a whole copy.
    void checkNothingLost(ReplayFixture &f, bool finished)
    {
        QStringList untagged;
        for (const QString &file : QDir(f.src()).entryList(QDir::Files)) {
            const QByteArray bytes = fileBytes(f.src(file));
            QVERIFY2(bytes == m_original || bytes == m_turned, qPrintable(file));
            untagged << StripFamIDs(file);
            if (finished) {
                QVERIFY2(file.contains("(#3#5#)"), qPrintable(file));
                QVERIFY2(bytes == m_turned, qPrintable(file + " not turned exactly once"));
            }
        }
        QCOMPARE(untagged.size(), kPhotos);
        QCOMPARE(untagged.removeDuplicates(), 0);
        QDirIterator tgt(f.tgt(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        int copies = 0;
        while (tgt.hasNext()) {
            const QString path = tgt.next();
            if (QFileInfo(path).suffix().startsWith('~')) {
                QVERIFY2(!finished, qPrintable(path + " left behind"));
                continue; // an interrupted copy's temporary, cleared by the next run
            }
            const QByteArray bytes = fileBytes(path);
            QVERIFY2(bytes == m_original || bytes == m_turned, qPrintable(path));
            ++copies;
        }
        if (finished)
            QCOMPARE(copies, 2 * kPhotos);
    }

private Q_SLOTS:
    void initTestCase()
    {
        TestJpeg photo;
        photo.size = QSize(1600, 1200);
        photo.dateTaken = QStringLiteral("2016:11:16 09:30:00");
        m_original = makeTestJpeg(photo);
        QTemporaryDir dir;
        QFile turned(dir.filePath("t.jpg"));
        QVERIFY(turned.open(QIODevice::WriteOnly));
        turned.write(m_original);
        turned.close();
        QVERIFY(RotateJpeg(turned.fileName(), false));
        m_turned = fileBytes(turned.fileName());
    }

    void killedReplayLosesNothing_data()
    {
        QTest::addColumn<int>("afterEntries"); // the helper kills itself after this many entries
        QTest::addColumn<int>("delayMs");      // or is killed from outside after this delay
        for (int n : {1, 2, 3, 4, 5, 7, 10, 17, 26, 35, 47})
            QTest::addRow("after %d entries", n) << n << 0;
        for (int ms : {5, 20, 50, 120})
            QTest::addRow("after %d ms", ms) << 0 << ms;
    }
    void killedReplayLosesNothing()
    {
        QFETCH(int, afterEntries);
        QFETCH(int, delayMs);
        ReplayFixture f;
        prepare(f);
        const QString batchfile = AppPaths::dataFile("_Batchfile_161116204830_PC2.log");
        const int status = run(afterEntries, delayMs);
        if (afterEntries > 0)
            QCOMPARE(status, -2);
        const bool finishedEarly = status == 0; // quicker than the delay
        QCOMPARE(QFileInfo::exists(batchfile), !finishedEarly);
        checkNothingLost(f, finishedEarly);
        if (finishedEarly)
            return;
        // The next start offers it again, asks to reprocess once a done copy exists, and ends the work.
        QCOMPARE(run(0), 0);
        QVERIFY(!QFileInfo::exists(batchfile));
        checkNothingLost(f, true);
        const QStringList done = f.doneFiles();
        QVERIFY(!done.isEmpty());
        if (done.size() == 2)
            QVERIFY(fileBytes(BatchfileName::doneFolder() + "/" + done.last()).contains("Number of times processed: 2\r\n"));
    }
};

QTEST_GUILESS_MAIN(TestReplayCrash)
#include "tst_replaycrash.moc"

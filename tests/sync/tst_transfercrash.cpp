#include "crashhelper.h"
#include "transferfixture.h"

#include "sync/databasecopycheck.h"
#include "sync/databasetransfer.h"

#include <QTemporaryDir>

using namespace quillet;
using namespace quillet::test;

// An import killed at any moment loses nothing: every photo is whole in the transfer folder or in
// the Source Dir (or both), the local family database is the old one or the new one and passes
// its integrity check, and running the import again finishes the job.
class TestTransferCrash : public QObject
{
    Q_OBJECT

    static constexpr int kPhotos = 24;
    static constexpr int kFamilies = 3000;

    std::unique_ptr<TestEnv> m_env;
    std::unique_ptr<QTemporaryDir> m_otherFs;
    std::unique_ptr<PcHome> m_a, m_b;
    QString m_xfr;
    QList<QByteArray> m_photos;

    QString photoName(int i) const
    {
        return (i % 3 == 0 ? QStringLiteral("Trip/") : QString()) + QStringLiteral("IMG_%1.JPG").arg(i, 4, 10, QLatin1Char('0'));
    }

    void prepare(bool otherFileSystem)
    {
        m_env = std::make_unique<TestEnv>();
        if (otherFileSystem) {
            m_otherFs = std::make_unique<QTemporaryDir>(QStringLiteral("/dev/shm/quillet-xfr-XXXXXX"));
            if (!m_otherFs->isValid())
                QSKIP("no second file system (/dev/shm) here");
            m_xfr = m_otherFs->path();
        } else {
            m_xfr = m_env->path(QStringLiteral("xfr"));
        }
        m_a = std::make_unique<PcHome>(m_env->root(), QStringLiteral("A"));
        m_b = std::make_unique<PcHome>(m_env->root(), QStringLiteral("B"));
        QVERIFY(m_b->install(m_xfr));
        QVERIFY(m_a->install(m_xfr));
        {
            FamilyDatabase db;
            QVERIFY(db.OpenDatabase());
            db.exec(QStringLiteral("BEGIN"));
            for (int i = 1; i <= kFamilies; ++i)
                db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, [Current]) VALUES (?,?,True)"),
                        {i, QStringLiteral("Family number %1 of this centre").arg(i)});
            db.exec(QStringLiteral("COMMIT"));
            db.TouchLastDBUpdate();
            QVERIFY(ExportFamilyDatabase(db));
        }
        for (int i = 0; i < kPhotos; ++i)
            writeBytes(m_xfr + "/Unallocated/" + photoName(i), m_photos.at(i));
        m_b->activate();
    }

    void checkNothingLost()
    {
        for (int i = 0; i < kPhotos; ++i) {
            const QString inSrc = m_b->src() + "/" + photoName(i);
            const QString inXfr = m_xfr + "/Unallocated/" + photoName(i);
            QVERIFY2(QFileInfo::exists(inSrc) || QFileInfo::exists(inXfr), qPrintable(photoName(i)));
            if (QFileInfo::exists(inSrc))
                QCOMPARE(fileBytes(inSrc), m_photos.at(i));
            if (QFileInfo::exists(inXfr))
                QCOMPARE(fileBytes(inXfr), m_photos.at(i));
        }
        const QString problem = DatabaseCopyCheck::Problem(FamilyDatabase::DbPath());
        QVERIFY2(problem.isEmpty(), qPrintable(problem));
        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        const int families = db.select(QStringLiteral("SELECT * FROM tblFamilies")).size();
        QVERIFY(families == 0 || families == kFamilies);
        // Until the local database is the new one, the copy waits in the transfer folder.
        if (families == 0)
            QVERIFY(QFileInfo::exists(TransferDatabasePath()));
    }

private Q_SLOTS:
    void initTestCase()
    {
        for (int i = 0; i < kPhotos; ++i) {
            QByteArray bytes(300 * 1024 + i * 997, Qt::Uninitialized);
            for (int k = 0; k < bytes.size(); ++k)
                bytes[k] = char((k * 31 + i * 7) & 0xff);
            m_photos << bytes;
        }
    }
    void cleanup()
    {
        m_env.reset();
        m_otherFs.reset();
    }

    void killedImportLosesNothing_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<bool>("otherFileSystem");
        QTest::addColumn<int>("afterFiles"); // the helper kills itself at this many files
        QTest::addColumn<int>("delayMs");    // or is killed from outside after this delay
        for (bool otherFs : {false, true}) {
            const char *fs = otherFs ? "across file systems" : "same file system";
            for (int n : {1, 2, 9, 23, 24})
                QTest::addRow("photos, %s, at file %d", fs, n) << "unalloc" << otherFs << n << 0;
            for (int ms : {0, 15, 40, 100})
                QTest::addRow("photos, %s, after %d ms", fs, ms) << "unalloc" << otherFs << 0 << ms;
            for (int ms : {0, 5, 10, 20, 35, 60, 120})
                QTest::addRow("database, %s, after %d ms", fs, ms) << "database" << otherFs << 0 << ms;
        }
    }
    void killedImportLosesNothing()
    {
        QFETCH(QString, mode);
        QFETCH(bool, otherFileSystem);
        QFETCH(int, afterFiles);
        QFETCH(int, delayMs);
        prepare(otherFileSystem);
        const int status = runHelper(QStringLiteral(TRANSFERCRASH_HELPER), {mode, QString::number(afterFiles)},
                                     afterFiles == 0 ? delayMs : -1);
        QVERIFY(status != -1);
        if (afterFiles > 0)
            QCOMPARE(status, -2);
        checkNothingLost();

        // The next run finishes what the killed one began.
        QCOMPARE(runHelper(QStringLiteral(TRANSFERCRASH_HELPER), {mode, QStringLiteral("0")}), 0);
        checkNothingLost();
        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        QCOMPARE(db.select(QStringLiteral("SELECT * FROM tblFamilies")).size(), kFamilies);
        if (mode == QLatin1String("unalloc")) {
            for (int i = 0; i < kPhotos; ++i)
                QVERIFY(!QFileInfo::exists(m_xfr + "/Unallocated/" + photoName(i)));
        }
    }
};

QTEST_GUILESS_MAIN(TestTransferCrash)
#include "tst_transfercrash.moc"

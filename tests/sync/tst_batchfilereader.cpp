#include "sync/batchfilereader.h"

#include <QBuffer>
#include <QRandomGenerator>
#include <QTest>

using namespace quillet;

// The reader of batchfiles from another machine: header, count, entries and the look-ahead line,
// and every malformed form of a file ending in a clear problem instead of a crash.
class TestBatchfileReader : public QObject
{
    Q_OBJECT

    static QByteArray header(const QByteArray &count = "0") { return "C:\\Src\r\nC:\\Tgt\r\nNumber of times processed: " + count + "\r\n"; }

    // "OP a b | after" for each entry, to compare whole parses at a glance.
    static QStringList summary(const BatchfileContent &c)
    {
        QStringList out;
        for (const BatchfileEntry &e : c.entries)
            out << (QStringList{e.opcode} + e.operands).join(' ') + " | " + e.lineAfter.value_or("<end>");
        return out;
    }

private Q_SLOTS:
    void wellFormed_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QStringList>("entries");
        QTest::newRow("CR LF") << QByteArray("CS\r\nIMG.jpg\r\nAnn\\IMG.jpg\r\nNS\r\nIMG.jpg\r\nIMG(#1#).jpg\r\n")
                               << QStringList{"CS IMG.jpg Ann\\IMG.jpg | NS", "NS IMG.jpg IMG(#1#).jpg | <end>"};
        QTest::newRow("LF") << QByteArray("CS\nIMG.jpg\nAnn\\IMG.jpg\nNS\nIMG.jpg\nIMG(#1#).jpg\n")
                            << QStringList{"CS IMG.jpg Ann\\IMG.jpg | NS", "NS IMG.jpg IMG(#1#).jpg | <end>"};
        QTest::newRow("done file results")
            << QByteArray("RSL\r\nA.jpg\r\nResults: ok\r\nDTD\r\nAnn\r\nResults: failed to delete dir\r\n")
            << QStringList{"RSL A.jpg | Results: ok", "DTD Ann | Results: failed to delete dir"};
        QTest::newRow("garbage between entries")
            << QByteArray("\x01\xff\xfe garbage\r\n\r\ncs\r\nRSR\r\nB.jpg\r\nCS \r\n")
            << QStringList{"RSR B.jpg | CS "};
        QTest::newRow("operands that look like opcodes") << QByteArray("NTD\r\nCS\r\nDS\r\n")
                                                         << QStringList{"NTD CS DS | <end>"};
        QTest::newRow("last line without line end is no operand")
            << QByteArray("DS\r\nA.jpg\r\nResults: ok") << QStringList{"DS A.jpg | Results: ok"};
        QTest::newRow("no entries") << QByteArray() << QStringList{};
    }
    void wellFormed()
    {
        QFETCH(QByteArray, body);
        QFETCH(QStringList, entries);
        const BatchfileContent c = BatchfileReader::parse(header("3") + body);
        QVERIFY2(c.ok(), qPrintable(c.problemText));
        QCOMPARE(c.srcDir, "C:\\Src");
        QCOMPARE(c.tgtDir, "C:\\Tgt");
        QCOMPARE(c.processedCount, 3);
        QCOMPARE(summary(c), entries);
        QCOMPARE(c.operationCount(), entries.size());
    }

    void malformed_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("problem");
        QTest::addColumn<int>("entriesKept");
        using P = BatchfileContent::Problem;
        QTest::newRow("empty") << QByteArray() << int(P::MissingHeader) << 0;
        QTest::newRow("two header lines") << QByteArray("a\r\nb\r\n") << int(P::MissingHeader) << 0;
        QTest::newRow("count line cut") << QByteArray("a\r\nb\r\nNumber of times processed: 0")
                                        << int(P::MissingHeader) << 0;
        QTest::newRow("count not a number") << header("abc") << int(P::BadCount) << 0;
        QTest::newRow("count empty") << header("") << int(P::BadCount) << 0;
        QTest::newRow("count negative") << header("-1") << int(P::BadCount) << 0;
        QTest::newRow("count too large") << header("99999999999") << int(P::BadCount) << 0;
        QTest::newRow("no count line") << QByteArray("a\r\nb\r\nCS\r\nx\r\ny\r\n") << int(P::BadCount) << 0;
        QTest::newRow("operand missing at the end") << header() + "DS\r\nA.jpg\r\nCS\r\nA.jpg\r\n"
                                                    << int(P::TruncatedEntry) << 1;
        QTest::newRow("operand cut off") << header() + "DS\r\nA.jp" << int(P::TruncatedEntry) << 0;
        QTest::newRow("opcode last") << header() + "NTD\r\n" << int(P::TruncatedEntry) << 0;
        QTest::newRow("old Mac line ends") << QByteArray("a\rb\rNumber of times processed: 0\rDS\rA\r")
                                           << int(P::MissingHeader) << 0;
    }
    void malformed()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, problem);
        QFETCH(int, entriesKept);
        const BatchfileContent c = BatchfileReader::parse(bytes);
        QCOMPARE(int(c.problem), problem);
        QVERIFY(!c.problemText.isEmpty());
        QCOMPARE(c.operationCount(), entriesKept);
    }

    void unusableOperandsAreMarked_data()
    {
        QTest::addColumn<QByteArray>("operand");
        QTest::addColumn<QString>("defect");
        QTest::newRow("megabyte line") << QByteArray(2 * 1024 * 1024, 'a') << "too long";
        QTest::newRow("no UTF-8") << QByteArray("IMG\xff\xfe.jpg") << "no UTF-8";
        QTest::newRow("fine") << QByteArray("Ann Lee\\IMG_0001(#3#).jpg") << "";
    }
    void unusableOperandsAreMarked()
    {
        QFETCH(QByteArray, operand);
        QFETCH(QString, defect);
        const BatchfileContent c = BatchfileReader::parse(header() + "DS\r\n" + operand + "\r\nDS\r\nB.jpg\r\n");
        QVERIFY(c.ok());
        QCOMPARE(c.operationCount(), 2);
        QCOMPARE(c.entries.first().defect.isEmpty(), defect.isEmpty());
        QVERIFY(c.entries.first().defect.contains(defect));
        QVERIFY(c.entries.first().rawOperands.first().size() <= BatchfileReader::kMaxLineBytes);
        QVERIFY(c.entries.last().defect.isEmpty());
    }

    void megabyteGarbageLineIsSkipped()
    {
        const BatchfileContent c =
            BatchfileReader::parse(header() + QByteArray(3 * 1024 * 1024, '\x07') + "\r\nDS\r\nB.jpg\r\n");
        QVERIFY(c.ok());
        QCOMPARE(summary(c), QStringList{"DS B.jpg | <end>"});
    }

    void readsFromADevice()
    {
        QByteArray bytes = header() + "DS\r\nA.jpg\r\n";
        QBuffer buffer(&bytes);
        QVERIFY(buffer.open(QIODevice::ReadOnly));
        QCOMPARE(summary(BatchfileReader::read(buffer)), QStringList{"DS A.jpg | <end>"});
        QCOMPARE(int(BatchfileReader::readFile("/nonexistent/_Batchfile_x.log").problem),
                 int(BatchfileContent::Problem::Unreadable));
    }

    // Random damage to a real batchfile: the reader answers every time, and every entry it keeps
    // has exactly its opcode's operands.
    void randomDamageNeverBreaksTheReader()
    {
        const QByteArray good = header() + "CS\r\nA.jpg\r\nAnn\\A.jpg\r\nRSL\r\nA.jpg\r\nResults: ok\r\nNTD\r\nA\r\nB\r\n";
        QRandomGenerator rng(12);
        for (int round = 0; round < 3000; ++round) {
            QByteArray bytes = good;
            for (int k = 0, n = rng.bounded(1, 6); k < n; ++k) {
                const int at = rng.bounded(int(bytes.size()) + 1);
                switch (rng.bounded(3)) {
                case 0: bytes.insert(at, char(rng.bounded(256))); break;
                case 1: bytes.remove(at, rng.bounded(1, 8)); break;
                default: bytes.truncate(at); break;
                }
            }
            const BatchfileContent c = BatchfileReader::parse(bytes);
            for (const BatchfileEntry &e : c.entries) {
                QCOMPARE(e.operands.size(), int(e.rawOperands.size()));
                QVERIFY(e.opcode == "CS" || e.opcode == "RSL" || e.opcode == "NTD" || e.opcode == "NS"
                        || e.opcode == "DS" || e.opcode == "MS" || e.opcode == "RSR" || e.opcode == "DTD"
                        || e.opcode == "DTF");
            }
            QCOMPARE(c.ok(), c.problemText.isEmpty());
        }
    }
};

QTEST_GUILESS_MAIN(TestBatchfileReader)
#include "tst_batchfilereader.moc"

#include "imaging/clsexifreader.h"
#include "lib/error.h"
#include "support/testenv.h"
#include "support/testjpeg.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using namespace quillet;
using namespace quillet::test;

namespace {

const QString kDate = QStringLiteral("2009:03:14 15:09:26");

// Position of the 12-byte IFD entry of `tag` (with its type) in a generated file.
qsizetype entryPos(const QByteArray &file, quint16 tag, quint16 type, bool intel)
{
    QByteArray key;
    for (quint16 v : {tag, type}) {
        key.append(char(intel ? v & 0xFF : v >> 8));
        key.append(char(intel ? v >> 8 : v & 0xFF));
    }
    return file.indexOf(key, 12);
}

void putU32(QByteArray &file, qsizetype pos, quint32 v, bool intel)
{
    for (int i = 0; i < 4; ++i)
        file[pos + i] = char((v >> (intel ? 8 * i : 8 * (3 - i))) & 0xFF);
}

} // namespace

class TestExifReader : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString write(const QString &name, const QByteArray &bytes)
    {
        const QString path = m_dir.filePath(name);
        QFile f(path);
        if (!f.open(QIODevice::WriteOnly) || f.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

    // The date as the full walk gives it, with DateTaken's rules for "no date".
    static QDateTime fullWalkDate(clsEXIFreader &reader)
    {
        const QVariant raw = reader.Tag(36867);
        const QDateTime date = raw.isValid() ? clsEXIFreader::ReturnDateType(raw) : QDateTime();
        return date == clsEXIFreader::ZeroDate() ? QDateTime() : date;
    }

private Q_SLOTS:
    void corpus_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<bool>("exif");
        QTest::addColumn<QString>("date");
        QUILLET_REQUIRE_CORPUS();
        QFile manifest(TestEnv::corpusDir() + QStringLiteral("/MANIFEST.csv"));
        QVERIFY(manifest.open(QIODevice::ReadOnly | QIODevice::Text));
        manifest.readLine();
        int rows = 0;
        while (!manifest.atEnd()) {
            const QStringList f = QString::fromUtf8(manifest.readLine()).trimmed().split(QLatin1Char(','));
            if (f.size() < 6)
                continue;
            QTest::newRow(qPrintable(f[0])) << f[0] << (f[4] == QLatin1String("1")) << f[5];
            ++rows;
        }
        QVERIFY(rows > 50);
    }

    // Every camera file: the date of capture as the manifest records it, or nothing.
    void corpus()
    {
        QFETCH(QString, file);
        QFETCH(bool, exif);
        QFETCH(QString, date);
        clsEXIFreader reader;
        reader.Load(TestEnv::corpusDir() + QLatin1Char('/') + file);
        QCOMPARE(reader.Loaded(), exif);
        const QVariant raw = reader.Tag(36867);
        if (!exif || date.isEmpty()) {
            QVERIFY(!raw.isValid());
            QVERIFY(!clsEXIFreader::DateTaken(reader.picFile()).isValid());
            return;
        }
        QVERIFY(raw.toString().startsWith(date)); // with the NUL when the camera counted it
        const QDateTime expected = QDateTime::fromString(date, QStringLiteral("yyyy:MM:dd HH:mm:ss"));
        QVERIFY(expected.isValid());
        QCOMPARE(clsEXIFreader::ReturnDateType(raw), expected);
        QCOMPARE(clsEXIFreader::DateTaken(reader.picFile()), expected);
    }

    // Damaged copies of real files: truncated anywhere, bytes flipped in the EXIF block.
    void damagedFilesNeverCrash()
    {
        QUILLET_REQUIRE_CORPUS();
        const QStringList names{QStringLiteral("Canon_40D.jpg"), QStringLiteral("mobile_jolla.jpg"),
                                QStringLiteral("corrupted.jpg"), QStringLiteral("Fujifilm_FinePix6900ZOOM.jpg")};
        QRandomGenerator rng(42);
        clsEXIFreader reader;
        for (const QString &name : names) {
            const QByteArray original = fileBytes(TestEnv::corpusDir() + QLatin1Char('/') + name);
            QVERIFY(!original.isEmpty());
            for (int cut : {3, 12, 20, 40, 100, 300, 1000, 4000, 5000, 9000}) {
                reader.Load(write(QStringLiteral("cut.jpg"), original.left(cut)));
                QVERIFY(reader.Tag(0).toInt() >= 0);
                QCOMPARE(clsEXIFreader::DateTaken(reader.picFile()), fullWalkDate(reader));
            }
            for (int round = 0; round < 200; ++round) {
                QByteArray bytes = original;
                for (int i = 0; i < 8; ++i)
                    bytes[2 + rng.bounded(std::min<qsizetype>(bytes.size() - 2, 2000))] = char(rng.bounded(256));
                reader.Load(write(QStringLiteral("flip.jpg"), bytes));
                // The date's own walk stops at the first date and reads no other values; it must
                // still agree with the walk of everything, wherever the damage made that stop.
                QCOMPARE(clsEXIFreader::DateTaken(reader.picFile()), fullWalkDate(reader));
            }
        }
    }

    void bothByteOrdersGiveTheSameDate()
    {
        for (bool intel : {true, false}) {
            TestJpeg want;
            want.dateTaken = kDate;
            want.intelOrder = intel;
            want.thumbnailSize = QSize(160, 120);
            clsEXIFreader reader;
            reader.setPicFile(write(intel ? QStringLiteral("ii.jpg") : QStringLiteral("mm.jpg"), makeTestJpeg(want)));
            QCOMPARE(reader.Tag(36867).toString(), kDate + QChar(0));
            QCOMPARE(clsEXIFreader::ReturnDateType(reader.Tag(36867)),
                     QDateTime(QDate(2009, 3, 14), QTime(15, 9, 26)));
            // IFD0 (Make, Orientation, DateTime, Exif pointer), IFD1 (3) and the Exif sub-IFD (3).
            QCOMPARE(reader.Tag(0).toInt(), 10);
            QCOMPARE(reader.Tag(274).toUInt(), 1u);
            QCOMPARE(reader.Tag(271).toString(), QStringLiteral("TestCam") + QChar(0));
            QCOMPARE(reader.Tag(36864).toString(), QStringLiteral("0230"));
            QVERIFY(!reader.MakerNoteTag(271).isValid());
            QCOMPARE(jpegSize(reader.EmbeddedThumbnail()), QSize(160, 120));
        }
    }

    // Text that fits the value field gives its 4 characters whatever the count says.
    void shortTextGivesFourCharacters()
    {
        TestJpeg want;
        want.dateTaken = kDate;
        QByteArray bytes = makeTestJpeg(want);
        const qsizetype entry = entryPos(bytes, 36864, 7, true);
        QVERIFY(entry > 0);
        putU32(bytes, entry + 4, 2, true);
        clsEXIFreader reader;
        reader.Load(write(QStringLiteral("short.jpg"), bytes));
        QCOMPARE(reader.Tag(36864).toString(), QStringLiteral("0230"));
    }

    void filesWithoutExif_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        TestJpeg xmp;
        xmp.dateTaken = kDate;
        xmp.xmpFirst = true;
        QTest::newRow("xmp-first") << makeTestJpeg(xmp);
        TestJpeg plain;
        plain.noExif = true;
        QTest::newRow("jfif") << makeTestJpeg(plain);
        QTest::newRow("png") << QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
        QTest::newRow("movie") << QByteArray("\0\0\0\x18" "ftypmp42\0\0\0\0mp42isom", 24);
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("soi-only") << QByteArray("\xFF\xD8", 2);
        QTest::newRow("app1-at-end") << QByteArray("\xFF\xD8\xFF\xE1\x00\x10" "Ex", 8);
    }

    void filesWithoutExif()
    {
        QFETCH(QByteArray, bytes);
        clsEXIFreader reader;
        reader.setPicFile(write(QStringLiteral("noexif.bin"), bytes));
        QVERIFY(!reader.Tag(36867).isValid());
        QCOMPARE(reader.Tag(0).toInt(), 0);
        QVERIFY(!reader.Loaded());
        QVERIFY(reader.EmbeddedThumbnail().isEmpty());
    }

    void missingFileRaises()
    {
        clsEXIFreader reader;
        reader.setPicFile(m_dir.filePath(QStringLiteral("absent.jpg")));
        QVERIFY_THROWS_EXCEPTION(Error, reader.Tag(36867));
        QVERIFY(!clsEXIFreader::DateTaken(reader.picFile()).isValid());
    }

    // The reader reads the head of a file first; what lies beyond must still be found.
    void dataBeyondTheHead()
    {
        TestJpeg want;
        want.dateTaken = kDate;
        want.size = QSize(1200, 900);
        const QByteArray jpeg = makeTestJpeg(want);

        // A large APP2 (a colour profile) before the EXIF block.
        QByteArray app2("\xFF\xE2\xFF\xF0", 4);
        app2 += QByteArray(0xFFF0 - 2, 'p');
        QByteArray profiled = jpeg.left(2) + app2 + app2 + jpeg.mid(2);
        clsEXIFreader reader;
        reader.Load(write(QStringLiteral("profiled.jpg"), profiled));
        QCOMPARE(reader.Tag(36867).toString(), kDate + QChar(0));

        // The date text moved past the end of the picture data, far beyond the head.
        QByteArray moved = jpeg;
        QVERIFY(moved.size() > 100 * 1024);
        const qsizetype tiffBase = moved.indexOf("Exif") + 6;
        const qsizetype entry = entryPos(moved, 36867, 2, true);
        putU32(moved, entry + 8, quint32(moved.size() - tiffBase), true);
        moved += "2011:01:02 03:04:05";
        moved += '\0';
        reader.Load(write(QStringLiteral("moved.jpg"), moved));
        QCOMPARE(clsEXIFreader::ReturnDateType(reader.Tag(36867)), QDateTime(QDate(2011, 1, 2), QTime(3, 4, 5)));
        QCOMPARE(clsEXIFreader::DateTaken(reader.picFile()), QDateTime(QDate(2011, 1, 2), QTime(3, 4, 5)));

        // One byte further and the text runs past the end: the walk stops there.
        putU32(moved, entry + 8, quint32(moved.size() - tiffBase - 19), true);
        reader.Load(write(QStringLiteral("past.jpg"), moved));
        QVERIFY(reader.Loaded());
        QVERIFY(!reader.Tag(36867).isValid());
        QVERIFY(!clsEXIFreader::DateTaken(reader.picFile()).isValid());
    }

    void offsetPastTheEndStopsTheWalk()
    {
        TestJpeg want;
        want.dateTaken = kDate;
        want.intelOrder = false;
        QByteArray bytes = makeTestJpeg(want);
        putU32(bytes, entryPos(bytes, 34665, 4, false) + 8, 0x7FFFFFF0u, false);
        clsEXIFreader reader;
        reader.Load(write(QStringLiteral("far.jpg"), bytes));
        QVERIFY(reader.Loaded());
        QVERIFY(!reader.Tag(36867).isValid());
        QCOMPARE(reader.Tag(0).toInt(), 4); // IFD0 only
        QCOMPARE(reader.Tag(306).toString(), kDate + QChar(0));
    }

    void returnDateType_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QDateTime>("expected");
        const QDate zero(1899, 12, 30);
        QTest::newRow("with NUL") << kDate + QChar(0) << QDateTime(QDate(2009, 3, 14), QTime(15, 9, 26));
        QTest::newRow("date only") << QStringLiteral("2009:03:14") << QDateTime(QDate(2009, 3, 14), QTime(0, 0));
        QTest::newRow("bad time") << QStringLiteral("2009:03:14 xx:09:26") << QDateTime(QDate(2009, 3, 14), QTime(0, 0));
        QTest::newRow("bad date") << QStringLiteral("2009:13:14 15:09:26") << QDateTime(zero, QTime(15, 9, 26));
        QTest::newRow("camera unset") << QStringLiteral("0000:00:00 00:00:00") << QDateTime(zero, QTime(0, 0));
        QTest::newRow("empty") << QString() << QDateTime(zero, QTime(0, 0));
    }

    void returnDateType()
    {
        QFETCH(QString, text);
        QFETCH(QDateTime, expected);
        QCOMPARE(clsEXIFreader::ReturnDateType(text), expected);
    }
};

QTEST_GUILESS_MAIN(TestExifReader)
#include "tst_exifreader.moc"

#include "imaging/clsexifreader.h"
#include "imaging/copyresizedimage.h"
#include "imaging/cthumbnailgenerator.h"
#include "imaging/rotatejpeg.h"
#include "imaging/thumbnailcache.h"
#include "lib/appstate.h"
#include "support/hometest.h"
#include "support/testjpeg.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <FreeImage.h>
#include <turbojpeg.h>

#include <memory>

using namespace quillet;
using namespace quillet::test;

namespace {

// The first value of the first quantisation table: what the encoder's quality setting made.
int firstQuantValue(const QByteArray &jpeg)
{
    const qsizetype dqt = jpeg.indexOf("\xFF\xDB");
    return dqt < 0 ? -1 : quint8(jpeg[dqt + 5]);
}

QDateTime mtime(const QString &path)
{
    return QFileInfo(path).lastModified();
}

void setMtime(const QString &path, const QDateTime &when)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::ReadWrite));
    QVERIFY(f.setFileTime(when, QFileDevice::FileModificationTime));
}

const QDateTime kTaken(QDate(2021, 6, 7), QTime(9, 30, 0));

} // namespace

class TestImageTransforms : public HomeTest
{
    Q_OBJECT

    QString photo(const QString &name, QSize size, const QString &date = QStringLiteral("2021:06:07 09:30:00"))
    {
        TestJpeg want;
        want.size = size;
        want.dateTaken = date;
        want.thumbnailSize = QSize(160, 120);
        const QString path = m_env->path(QStringLiteral("src/") + name);
        if (!writeTestJpeg(path, want))
            qFatal("cannot write %s", qPrintable(path));
        setMtime(path, kTaken);
        return path;
    }

    QString target(const QString &name) { return m_env->path(QStringLiteral("tgt/") + name); }

private Q_SLOTS:
    void init()
    {
        HomeTest::init();
        QDir().mkpath(m_env->path(QStringLiteral("tgt")));
    }

    void sizeCodes_data()
    {
        QTest::addColumn<QSize>("source");
        QTest::addColumn<int>("sizeCode");
        QTest::addColumn<QSize>("expected");
        QTest::newRow("landscape 640") << QSize(4000, 3000) << 2 << QSize(640, 480);
        QTest::newRow("portrait 640") << QSize(3000, 4000) << 2 << QSize(480, 640);
        QTest::newRow("square enlarged to 2048") << QSize(1000, 1000) << 5 << QSize(2048, 2048);
        QTest::newRow("code above 5 is 2048") << QSize(1000, 1000) << 9 << QSize(2048, 2048);
        QTest::newRow("small enlarged to 320") << QSize(200, 100) << 1 << QSize(320, 160);
        QTest::newRow("1024, rounded") << QSize(1001, 667) << 3 << QSize(1024, 682);
    }

    void sizeCodes()
    {
        QFETCH(QSize, source);
        QFETCH(int, sizeCode);
        QFETCH(QSize, expected);
        const QString src = photo(QStringLiteral("p.jpg"), source);
        const QString tgt = target(QStringLiteral("p.jpg"));
        QVERIFY(CopyResizedImage(src, tgt, qint16(sizeCode), 3));
        const QByteArray out = fileBytes(tgt);
        QCOMPARE(jpegSize(out), expected);
        QCOMPARE(mtime(tgt), kTaken);
        // No EXIF block is carried over, nor any other marker from the source.
        QVERIFY(!out.contains("Exif"));
        QVERIFY(!out.contains("\xFF\xFE"));
        QVERIFY(!clsEXIFreader::DateTaken(tgt).isValid());
        // Still the same picture: the red gradient runs left to right.
        const QImage img = decodeJpeg(out);
        QVERIFY(qRed(img.pixel(img.width() - 2, img.height() / 2)) > qRed(img.pixel(1, img.height() / 2)) + 100);
        QVERIFY(m_port->messages().isEmpty());
        QVERIFY(!QDir(m_env->path(QStringLiteral("tgt"))).entryList({QStringLiteral("*.~*")}).size());
    }

    // JPEGs other than a camera's colour photo: decoded by libjpeg-turbo all the same, and the
    // output has the exact size and the source's colours.
    void jpegKindsAreResized_data()
    {
        QTest::addColumn<QByteArray>("jpeg");
        QTest::addColumn<int>("components");
        QTest::addColumn<QColor>("centre");
        {
            // FreeImage writes an 8-bit bitmap with its default grey palette as a greyscale JPEG.
            FIBITMAP *grey = FreeImage_Allocate(500, 300, 8);
            for (unsigned y = 0; y < 300; ++y)
                memset(FreeImage_GetScanLine(grey, y), 100, 500);
            FIMEMORY *memory = FreeImage_OpenMemory();
            FreeImage_SaveToMemory(FIF_JPEG, grey, memory, JPEG_QUALITYSUPERB);
            BYTE *bytes = nullptr;
            DWORD size = 0;
            FreeImage_AcquireMemory(memory, &bytes, &size);
            QTest::newRow("greyscale") << QByteArray(reinterpret_cast<const char *>(bytes), qsizetype(size)) << 1
                                       << QColor(100, 100, 100);
            FreeImage_CloseMemory(memory);
            FreeImage_Unload(grey);
        }
        {
            // Inverted CMYK as office programs write it: full cyan value and no black ink is red.
            QByteArray pixels;
            for (int i = 0; i < 500 * 300; ++i)
                pixels.append("\xFF\x00\x00\xFF", 4);
            tjhandle tj = tjInitCompress();
            unsigned char *out = nullptr;
            unsigned long size = 0;
            QCOMPARE(tjCompress2(tj, reinterpret_cast<const unsigned char *>(pixels.constData()), 500, 500 * 4, 300,
                                 TJPF_CMYK, &out, &size, TJSAMP_444, 95, 0),
                     0);
            QTest::newRow("cmyk") << QByteArray(reinterpret_cast<const char *>(out), qsizetype(size)) << 3
                                  << QColor(255, 0, 0);
            tjFree(out);
            tjDestroy(tj);
        }
        TestJpeg cut;
        cut.size = QSize(500, 300);
        const QByteArray whole = makeTestJpeg(cut);
        // libjpeg fills a picture that ends early with grey and warns; the copy is still made.
        QTest::newRow("cut short") << whole.left(whole.size() * 9 / 10) << 3 << QColor(128, 128, 128);
    }

    void jpegKindsAreResized()
    {
        QFETCH(QByteArray, jpeg);
        QFETCH(int, components);
        QFETCH(QColor, centre);
        const QString src = m_env->writeFile(QStringLiteral("src/k.jpg"), jpeg);
        const QString tgt = target(QStringLiteral("k.jpg"));
        QVERIFY(CopyResizedImage(src, tgt, 1, 4));
        const QByteArray out = fileBytes(tgt);
        QCOMPARE(jpegSize(out), QSize(320, 192));
        const qsizetype sof = out.indexOf("\xFF\xC0");
        QVERIFY(sof > 0);
        QCOMPARE(int(quint8(out[sof + 9])), components);
        const QColor pixel(decodeJpeg(out).pixel(160, 180));
        QVERIFY2(qAbs(pixel.red() - centre.red()) < 12 && qAbs(pixel.green() - centre.green()) < 12
                     && qAbs(pixel.blue() - centre.blue()) < 12,
                 qPrintable(pixel.name()));
        QVERIFY(m_port->messages().isEmpty());
    }

    void qualityCodes_data()
    {
        QTest::addColumn<int>("qualityCode");
        QTest::addColumn<int>("quant");
        // libjpeg's first luminance value at quality 75 (default), 10, 25, 50, 75 and 100.
        QTest::newRow("default") << 0 << 8;
        QTest::newRow("1 lowest") << 1 << 80;
        QTest::newRow("2") << 2 << 32;
        QTest::newRow("3") << 3 << 16;
        QTest::newRow("4") << 4 << 8;
        QTest::newRow("5 highest") << 5 << 1;
        QTest::newRow("7 as 5") << 7 << 1;
    }

    // A quality code with size code 0 re-encodes at full size.
    void qualityCodes()
    {
        QFETCH(int, qualityCode);
        QFETCH(int, quant);
        const QString src = photo(QStringLiteral("q.jpg"), QSize(800, 600));
        const QString tgt = target(QStringLiteral("q.jpg"));
        QVERIFY(CopyResizedImage(src, tgt, qualityCode ? 0 : 1, qint16(qualityCode)));
        const QByteArray out = fileBytes(tgt);
        QCOMPARE(firstQuantValue(out), quant);
        QCOMPARE(jpegSize(out), qualityCode ? QSize(800, 600) : QSize(320, 240));
        QVERIFY(!out.contains("Exif"));
    }

    void plainCopyKeepsEverything()
    {
        const QString src = photo(QStringLiteral("c.jpg"), QSize(320, 240));
        const QString tgt = target(QStringLiteral("c.jpg"));
        m_env->writeFile(QStringLiteral("tgt/c.jpg"), "old");
        QVERIFY(CopyResizedImage(src, tgt, 0, 0));
        QCOMPARE(fileBytes(tgt), fileBytes(src));
        QCOMPARE(mtime(tgt), kTaken);
    }

    // A GIF holds 8 bits at most: the rescaled colour picture is brought back to a palette.
    void gifStaysGif()
    {
        FIBITMAP *rgb = FreeImage_Allocate(300, 200, 24);
        RGBQUAD blue{255, 0, 0, 0};
        FreeImage_FillBackground(rgb, &blue);
        FIBITMAP *palette = FreeImage_ColorQuantize(rgb, FIQ_WUQUANT);
        const QString src = m_env->path(QStringLiteral("src/g.gif"));
        QDir().mkpath(QFileInfo(src).absolutePath());
        QVERIFY(FreeImage_Save(FIF_GIF, palette, QFile::encodeName(src).constData(), 0));
        FreeImage_Unload(palette);
        FreeImage_Unload(rgb);
        const QString tgt = target(QStringLiteral("g.gif"));
        QVERIFY(CopyResizedImage(src, tgt, 1, 0));
        QVERIFY(fileBytes(tgt).startsWith("GIF8"));
        const QImage out(tgt);
        QCOMPARE(out.size(), QSize(320, 213));
        QCOMPARE(QColor(out.pixel(160, 100)), QColor(Qt::blue));
    }

    void failureAsksToCancel_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes"); // empty: no source file
        QTest::addColumn<int>("sizeCode");     // 0: a plain copy
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QString>("failed");
        const QByteArray movie("\0\0\0\x18" "ftypqt  ", 12);
        QTest::newRow("yes cancels") << "clip.mov" << movie << 2 << true << "Failed to load/copy ";
        QTest::newRow("no goes on") << "clip.mov" << movie << 2 << false << "Failed to load/copy ";
        QTest::newRow("damaged jpeg, no") << "bad.jpg" << QByteArray("\xFF\xD8 not really a picture") << 2 << false
                                          << "Failed to load/copy ";
        QTest::newRow("plain copy of a missing file") << "missing.jpg" << QByteArray() << 0 << true << "Failed to copy ";
    }

    // The target a failed copy would have replaced keeps its bytes.
    void failureAsksToCancel()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        QFETCH(int, sizeCode);
        QFETCH(bool, yes);
        QFETCH(QString, failed);
        const QString src = bytes.isEmpty() ? m_env->path(QStringLiteral("src/") + name)
                                            : m_env->writeFile(QStringLiteral("src/") + name, bytes);
        const QString tgt = target(name);
        m_env->writeFile(QStringLiteral("tgt/") + name, "previous");
        m_port->answer(yes);
        QCOMPARE(CopyResizedImage(src, tgt, qint16(sizeCode), sizeCode ? 3 : 0), !yes);
        QCOMPARE(appState().cancel.load(), yes);
        QCOMPARE(m_port->messages().size(), 1);
        const auto &m = m_port->messages().first();
        QCOMPARE(m.style, 4);   // question, default Yes
        QCOMPARE(m.timeout, 5);
        QVERIFY2(m.text.startsWith(failed + src + QStringLiteral(".\r\nErr: ")), qPrintable(m.text));
        QVERIFY(m.text.endsWith(QStringLiteral("\r\nDo you wish to cancel?")));
        QCOMPARE(fileBytes(tgt), QByteArray("previous"));
    }

    void fourQuarterTurnsGiveThePhotoBack_data()
    {
        QTest::addColumn<bool>("clockwise");
        QTest::addColumn<bool>("portable");
        QTest::newRow("clockwise") << true << false;
        QTest::newRow("anticlockwise") << false << false;
        QTest::newRow("clockwise, portable copy") << true << true;
    }

    void fourQuarterTurnsGiveThePhotoBack()
    {
        QFETCH(bool, clockwise);
        QFETCH(bool, portable);
        appState().isPortableCopy = portable;
        const QString path = photo(QStringLiteral("r.jpg"), QSize(640, 480));
        const QImage before = decodeJpeg(fileBytes(path));
        QVERIFY(RotateJpeg(path, clockwise));
        QCOMPARE(jpegSize(fileBytes(path)), QSize(480, 640));
        QCOMPARE(mtime(path), kTaken);
        QCOMPARE(clsEXIFreader::DateTaken(path), kTaken); // the EXIF block stays
        const QImage turned = decodeJpeg(fileBytes(path));
        QCOMPARE(turned.pixel(0, 0), before.pixel(clockwise ? 0 : 639, clockwise ? 479 : 0));
        for (int i = 0; i < 3; ++i)
            QVERIFY(RotateJpeg(path, clockwise));
        QCOMPARE(decodeJpeg(fileBytes(path)), before);
        QCOMPARE(mtime(path), kTaken);
    }

    void oddEdgesAreTrimmed()
    {
        const QString path = photo(QStringLiteral("odd.jpg"), QSize(650, 487));
        QVERIFY(RotateJpeg(path, true));
        const QSize turned = jpegSize(fileBytes(path));
        QVERIFY2(turned.width() <= 487 && turned.width() > 487 - 16, qPrintable(QString::number(turned.width())));
        QVERIFY2(turned.height() <= 650 && turned.height() > 650 - 16, qPrintable(QString::number(turned.height())));
        QVERIFY(RotateJpeg(path, false));
    }

    void notAJpegStaysAsItWas()
    {
        const QString path = m_env->writeFile(QStringLiteral("src/clip.mov"), "movie bytes");
        QVERIFY(!RotateJpeg(path, true));
        QCOMPARE(fileBytes(path), QByteArray("movie bytes"));
        QVERIFY(!RotateJpeg(m_env->path(QStringLiteral("src/none.jpg")), true));
    }

    // The rotation keeps the modified time, so the cached thumbnail must go with it.
    void rotationRenewsTheThumbnail()
    {
        const QString path = photo(QStringLiteral("t.jpg"), QSize(480, 320), QString());
        QCOMPARE(cThumbnailGenerator::thumbnail(path).size(), QSize(96, 64));
        QVERIFY(QFileInfo::exists(ThumbnailCache::entryPath(path)));
        QVERIFY(RotateJpeg(path, false));
        QVERIFY(!QFileInfo::exists(ThumbnailCache::entryPath(path)));
        QCOMPARE(cThumbnailGenerator::thumbnail(path).size(), QSize(64, 96));
    }
};

QTEST_GUILESS_MAIN(TestImageTransforms)
#include "tst_imagetransforms.moc"

#include "imaging/cthumbnailgenerator.h"
#include "imaging/thumbnailcache.h"
#include "lib/error.h"
#include "support/hometest.h"
#include "support/testjpeg.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtConcurrent/QtConcurrentMap>
#include <QTest>
#include <QUrl>

#include <FreeImage.h>

#include <memory>

using namespace quillet;
using namespace quillet::test;

namespace {

const QString kSource = QStringLiteral("quillet.cThumbnailGenerator");

// The mean colour of an image, to tell which source a thumbnail came from.
QColor meanColour(const QImage &image)
{
    qint64 r = 0, g = 0, b = 0;
    const QImage rgb = image.convertToFormat(QImage::Format_RGB32);
    for (int y = 0; y < rgb.height(); ++y)
        for (int x = 0; x < rgb.width(); ++x) {
            const QRgb p = rgb.pixel(x, y);
            r += qRed(p), g += qGreen(p), b += qBlue(p);
        }
    const qint64 n = qint64(rgb.width()) * rgb.height();
    return n ? QColor(int(r / n), int(g / n), int(b / n)) : QColor();
}

bool isRed(const QImage &image)
{
    const QColor c = meanColour(image);
    return c.red() > 200 && c.green() < 60 && c.blue() < 60;
}

QImage solid(QColor colour)
{
    QImage img(64, 64, QImage::Format_RGB32);
    img.fill(colour);
    return img;
}

} // namespace

class TestThumbnailGenerator : public HomeTest
{
    Q_OBJECT

    QString photo(const QString &name, const TestJpeg &want)
    {
        const QString path = m_env->path(QStringLiteral("photos/") + name);
        if (!writeTestJpeg(path, want))
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

private Q_SLOTS:

    void fitsTheBox_data()
    {
        QTest::addColumn<QSize>("photo");
        QTest::addColumn<QSize>("expected");
        QTest::newRow("landscape") << QSize(1600, 1200) << QSize(96, 72);
        QTest::newRow("portrait") << QSize(1200, 1600) << QSize(72, 96);
        QTest::newRow("square") << QSize(1000, 1000) << QSize(96, 96);
        QTest::newRow("panorama") << QSize(2000, 500) << QSize(96, 24);
        QTest::newRow("smaller than the box") << QSize(50, 40) << QSize(50, 40);
    }

    void fitsTheBox()
    {
        QFETCH(QSize, photo);
        QFETCH(QSize, expected);
        TestJpeg want;
        want.size = photo;
        cThumbnailGenerator generator;
        generator.FileName = this->photo(QStringLiteral("p.jpg"), want);
        const QImage thumb = generator.GetThumbnail();
        QCOMPARE(thumb.size(), expected);
        // The picture itself, not a blank: the test picture has a red gradient left to right.
        QVERIFY(qRed(thumb.pixel(thumb.width() - 1, 0)) > qRed(thumb.pixel(0, 0)));
    }

    void gifThroughFreeImage()
    {
        FIBITMAP *bitmap = FreeImage_Allocate(300, 150, 24);
        RGBQUAD red{0, 0, 255, 0};
        FreeImage_FillBackground(bitmap, &red);
        FIBITMAP *palette = FreeImage_ColorQuantize(bitmap, FIQ_WUQUANT);
        const QString path = m_env->path(QStringLiteral("anim.gif"));
        QVERIFY(FreeImage_Save(FIF_GIF, palette, QFile::encodeName(path).constData(), 0));
        FreeImage_Unload(palette);
        FreeImage_Unload(bitmap);
        const QImage thumb = cThumbnailGenerator::thumbnail(path);
        QCOMPARE(thumb.size(), QSize(96, 48));
        QVERIFY(isRed(thumb));
    }

    // The embedded thumbnail is used only when it can be trusted; it is painted red here so
    // that the test sees which source was taken.
    void embeddedThumbnailWhenHonest_data()
    {
        QTest::addColumn<QSize>("photo");
        QTest::addColumn<QSize>("embedded");
        QTest::addColumn<bool>("used");
        QTest::newRow("matching") << QSize(1600, 1200) << QSize(160, 120) << true;
        QTest::newRow("stale after rotation") << QSize(1200, 1600) << QSize(160, 120) << false;
        QTest::newRow("letterboxed") << QSize(1600, 900) << QSize(160, 120) << false;
        QTest::newRow("square photo") << QSize(1200, 1200) << QSize(120, 120) << false;
        QTest::newRow("too small") << QSize(1600, 1200) << QSize(40, 30) << false;
    }

    void embeddedThumbnailWhenHonest()
    {
        QFETCH(QSize, photo);
        QFETCH(QSize, embedded);
        QFETCH(bool, used);
        TestJpeg want;
        want.size = photo;
        want.thumbnailSize = embedded;
        want.thumbnailPicture = solid(Qt::red);
        const QImage thumb = cThumbnailGenerator::thumbnail(this->photo(QStringLiteral("e.jpg"), want));
        QCOMPARE(isRed(thumb), used);
        QCOMPARE(thumb.size(), photo.scaled(96, 96, Qt::KeepAspectRatio));
        // Only a picture decoded from the photo goes into the cache.
        QCOMPARE(QFileInfo::exists(ThumbnailCache::entryPath(this->photo(QStringLiteral("e.jpg"), want))), !used);
    }

    void cacheWrittenThenReadUntilTheFileChanges()
    {
        TestJpeg want;
        want.size = QSize(1600, 1200);
        const QString path = photo(QStringLiteral("c.jpg"), want);
        const QString entry = ThumbnailCache::entryPath(path);
        QVERIFY(entry.startsWith(m_env->root()));
        QVERIFY(entry.contains(QStringLiteral("/.cache/thumbnails/normal/")));

        QVERIFY(!cThumbnailGenerator::thumbnail(path).isNull());
        QImage cached(entry);
        QCOMPARE(cached.size(), QSize(128, 96));
        QCOMPARE(cached.text(QStringLiteral("Thumb::URI")), QUrl::fromLocalFile(path).toString());
        QCOMPARE(cached.text(QStringLiteral("Thumb::MTime")),
                 QString::number(QFileInfo(path).lastModified().toSecsSinceEpoch()));
        QCOMPARE(QFile::permissions(entry) & (QFileDevice::ReadOther | QFileDevice::ReadGroup), QFileDevice::Permissions());

        // A valid entry is what the generator returns: repaint it to tell.
        QImage painted = solid(Qt::red).scaled(128, 96);
        painted.setText(QStringLiteral("Thumb::URI"), cached.text(QStringLiteral("Thumb::URI")));
        painted.setText(QStringLiteral("Thumb::MTime"), cached.text(QStringLiteral("Thumb::MTime")));
        QVERIFY(painted.save(entry, "png"));
        const QImage hit = cThumbnailGenerator::thumbnail(path);
        QVERIFY(isRed(hit));
        QCOMPARE(hit.size(), QSize(96, 72));

        // The file changed (another modified time): the entry is stale, decoded and replaced.
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(-3600), QFileDevice::FileModificationTime));
        file.close();
        QVERIFY(!isRed(cThumbnailGenerator::thumbnail(path)));
        QCOMPARE(QImage(entry).text(QStringLiteral("Thumb::MTime")),
                 QString::number(QFileInfo(path).lastModified().toSecsSinceEpoch()));

        // Without the cache nothing is read or written.
        QVERIFY(QFile::remove(entry));
        QVERIFY(!cThumbnailGenerator::thumbnail(path, QSize(96, 96), false).isNull());
        QVERIFY(!QFileInfo::exists(entry));
    }

    void failures_data()
    {
        QTest::addColumn<QString>("relative");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("text");
        QTest::newRow("no folder") << QStringLiteral("gone/p.jpg") << QByteArray() << 45002
                                   << QStringLiteral("Unable to locate the folder '%1/gone'");
        QTest::newRow("no file") << QStringLiteral("p.jpg") << QByteArray() << 45004
                                 << QStringLiteral("Unable to read the contents of the folder '%1'");
        QTest::newRow("movie") << QStringLiteral("clip.mov") << QByteArray("\0\0\0\x18" "ftypqt  ", 12) << 45005
                               << QStringLiteral("The object clip.mov does not support thumbnails");
        QTest::newRow("not a jpeg") << QStringLiteral("note.jpg") << QByteArray("just some text") << 45007
                                    << QStringLiteral("ExtractImage on note.jpg failed.");
    }

    void failures()
    {
        QFETCH(QString, relative);
        QFETCH(QByteArray, bytes);
        QFETCH(int, number);
        QFETCH(QString, text);
        const QString dir = m_env->path(QStringLiteral("photos"));
        QDir().mkpath(dir);
        if (!bytes.isEmpty())
            m_env->writeFile(QStringLiteral("photos/") + relative, bytes);
        cThumbnailGenerator generator;
        generator.FileName = dir + QLatin1Char('/') + relative;
        try {
            generator.GetThumbnail();
            QFAIL("no error raised");
        } catch (const Error &e) {
            QCOMPARE(e.number(), number);
            QCOMPARE(e.source(), kSource);
            QCOMPARE(e.description(), text.contains(QLatin1String("%1")) ? text.arg(dir) : text);
        }
        QVERIFY(cThumbnailGenerator::thumbnailOrNull(generator.FileName).isNull());
    }

    // Every camera file gives a thumbnail that fits, or a clean error.
    void corpus()
    {
        QUILLET_REQUIRE_CORPUS();
        const QDir dir(TestEnv::corpusDir());
        int made = 0;
        for (const QString &name : dir.entryList({QStringLiteral("*.jp*g")}, QDir::Files)) {
            const QImage thumb = cThumbnailGenerator::thumbnailOrNull(dir.filePath(name));
            if (thumb.isNull())
                continue;
            QVERIFY2(thumb.width() <= 96 && thumb.height() <= 96, qPrintable(name));
            ++made;
        }
        QVERIFY(made >= 55);
    }

    // Worker threads make thumbnails side by side and get what one thread gets.
    void reentrantOnWorkerThreads()
    {
        QStringList paths;
        for (int i = 0; i < 12; ++i) {
            TestJpeg want;
            want.size = i % 2 ? QSize(800, 600) : QSize(600, 800);
            want.seed = i;
            want.thumbnailSize = i % 3 ? QSize(160, 120) : QSize();
            paths.append(photo(QStringLiteral("t%1.jpg").arg(i), want));
        }
        const QList<QImage> parallel = QtConcurrent::blockingMapped(paths, [](const QString &p) {
            return cThumbnailGenerator::thumbnail(p, QSize(96, 96), false);
        });
        for (int i = 0; i < paths.size(); ++i)
            QCOMPARE(parallel[i], cThumbnailGenerator::thumbnail(paths[i], QSize(96, 96), false));
    }
};

QTEST_GUILESS_MAIN(TestThumbnailGenerator)
#include "tst_thumbnailgenerator.moc"

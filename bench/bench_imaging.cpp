// Measures the image services against the plain way of doing the same work, in the same run:
// reading the EXIF date from the head of a file against reading the whole file, thumbnails from
// the embedded EXIF thumbnail, the reduced-scale decode and the desktop cache against a full
// decode and rescale, and a resized copy against a full decode, rescale and save.
//
// Uses the JPEGs in $QUILLET_BENCH_CORPUS when set, else generates camera-like 12 MP JPEGs.

#include "imaging/clsexifreader.h"
#include "imaging/copyresizedimage.h"
#include "imaging/cthumbnailgenerator.h"
#include "support/testjpeg.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTextStream>

#include <FreeImage.h>

#include <functional>

using namespace quillet;

namespace {

constexpr int kGeneratedFiles = 40;

struct Corpus
{
    QStringList withThumbnail;
    QStringList withoutThumbnail;
    QStringList all() const { return withThumbnail + withoutThumbnail; }
};

Corpus generate(const QString &dir)
{
    Corpus corpus;
    QTextStream(stderr) << "bench_imaging: generating " << kGeneratedFiles << " 12 MP JPEGs in " << dir << "\n";
    for (int i = 0; i < kGeneratedFiles; ++i) {
        test::TestJpeg want;
        want.size = QSize(4000, 3000);
        want.seed = i + 1;
        want.dateTaken = QStringLiteral("2023:05:%1 10:%2:00").arg(1 + i % 28, 2, 10, QLatin1Char('0')).arg(i % 60, 2, 10, QLatin1Char('0'));
        want.thumbnailSize = i % 2 ? QSize() : QSize(160, 120);
        const QString path = dir + QStringLiteral("/IMG_%1.jpg").arg(i, 4, 10, QLatin1Char('0'));
        test::writeTestJpeg(path, want);
        (want.thumbnailSize.isEmpty() ? corpus.withoutThumbnail : corpus.withThumbnail).append(path);
    }
    return corpus;
}

Corpus scan(const QString &dir)
{
    Corpus corpus;
    const QDir d(dir);
    for (const QString &name : d.entryList({QStringLiteral("*.jpg"), QStringLiteral("*.jpeg"), QStringLiteral("*.JPG")}, QDir::Files)) {
        const QString path = d.filePath(name);
        clsEXIFreader reader;
        try {
            reader.Load(path);
        } catch (...) {
            continue;
        }
        (reader.EmbeddedThumbnail().isEmpty() ? corpus.withoutThumbnail : corpus.withThumbnail).append(path);
    }
    return corpus;
}

// Mean milliseconds per file of `work` over the files, `rounds` times.
double perFile(const QStringList &files, int rounds, const std::function<void(const QString &)> &work)
{
    if (files.isEmpty())
        return 0;
    QElapsedTimer timer;
    timer.start();
    for (int r = 0; r < rounds; ++r)
        for (const QString &f : files)
            work(f);
    return double(timer.nsecsElapsed()) / 1e6 / (double(rounds) * files.size());
}

void result(const char *name, double ms, double baselineMs, const char *baseline)
{
    const bool micro = ms < 1.0;
    QTextStream(stdout) << "RESULT " << name << ' ' << QString::number(micro ? ms * 1000 : ms, 'f', micro ? 1 : 2)
                        << (micro ? " us" : " ms") << " ratio=" << QString::number(ms > 0 ? baselineMs / ms : 0, 'f', 1)
                        << " baseline=" << baseline << Qt::endl;
}

// The plain thumbnail: decode everything, rescale to fit 96 x 96.
void fullDecodeThumbnail(const QString &path)
{
    FIBITMAP *full = FreeImage_Load(FIF_JPEG, QFile::encodeName(path).constData(), 0);
    if (!full)
        return;
    const QSize fit = QSize(int(FreeImage_GetWidth(full)), int(FreeImage_GetHeight(full))).scaled(96, 96, Qt::KeepAspectRatio);
    FIBITMAP *small = FreeImage_Rescale(full, fit.width(), fit.height(), FILTER_BICUBIC);
    FreeImage_Unload(full);
    FreeImage_Unload(small);
}

void benchExifDate(const QStringList &files)
{
    const auto readWhole = [](const QString &f) {
        QFile file(f);
        if (file.open(QIODevice::ReadOnly))
            file.readAll();
    };
    const auto readDate = [](const QString &f) { clsEXIFreader::DateTaken(f); };
    perFile(files, 1, readWhole); // warm the page cache
    const double whole = perFile(files, 5, readWhole);
    const double head = perFile(files, 20, readDate);
    result("exif_date", head, whole, "whole-file-read");
    // The floor: what one small read of a file's first segments costs on this machine now.
    const double floor = perFile(files, 20, [](const QString &f) {
        QFile file(f);
        if (file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            file.read(4096);
    });
    result("exif_date_vs_floor", head, floor, "open-read-4KiB-close");

    const QString exiv2 = QStandardPaths::findExecutable(QStringLiteral("exiv2"));
    if (exiv2.isEmpty())
        return;
    QProcess process;
    QElapsedTimer timer;
    timer.start();
    process.start(exiv2, QStringList{QStringLiteral("-q"), QStringLiteral("-g"), QStringLiteral("Exif.Photo.DateTimeOriginal"),
                                     QStringLiteral("-Pv")} + files);
    process.waitForFinished(120000);
    result("exif_date_vs_exiv2", head, double(timer.nsecsElapsed()) / 1e6 / files.size(), "exiv2-command-one-run-all-files");
}

void benchThumbnails(const Corpus &corpus)
{
    const QStringList sample = corpus.all().mid(0, 8);
    const double full = perFile(sample, 1, fullDecodeThumbnail);
    const auto noCache = [](const QString &f) { cThumbnailGenerator::thumbnail(f, QSize(96, 96), false); };
    const auto cached = [](const QString &f) { cThumbnailGenerator::thumbnail(f, QSize(96, 96), true); };
    result("thumb_embedded", perFile(corpus.withThumbnail, 3, noCache), full, "full-decode+rescale");
    result("thumb_scaled", perFile(corpus.withoutThumbnail, 2, noCache), full, "full-decode+rescale");
    perFile(corpus.withoutThumbnail, 1, cached); // fills the cache
    result("thumb_cached", perFile(corpus.withoutThumbnail, 5, cached), full, "full-decode+rescale");
}

void benchResize(const QStringList &files, const QString &outDir)
{
    const QStringList sample = files.mid(0, 8);
    QSize ours, plain;
    const double fast = perFile(sample, 1, [&](const QString &f) {
        const QString target = outDir + QStringLiteral("/ours.jpg");
        CopyResizedImage(f, target, 3, 3);
        QFile out(target);
        if (out.open(QIODevice::ReadOnly))
            ours = test::jpegSize(out.readAll());
    });
    const double slow = perFile(sample, 1, [&](const QString &f) {
        FIBITMAP *full = FreeImage_Load(FIF_JPEG, QFile::encodeName(f).constData(), 0);
        if (!full)
            return;
        const QSize size = ResizedSize(QSize(int(FreeImage_GetWidth(full)), int(FreeImage_GetHeight(full))), 1024);
        FIBITMAP *scaled = FreeImage_Rescale(full, size.width(), size.height(), FILTER_BICUBIC);
        const QString target = outDir + QStringLiteral("/plain.jpg");
        FreeImage_Save(FIF_JPEG, scaled, QFile::encodeName(target).constData(), JPEG_QUALITYNORMAL);
        FreeImage_Unload(full);
        FreeImage_Unload(scaled);
        plain = size;
    });
    result("resize_1024", fast, slow, "full-decode+rescale+save");
    if (ours != plain)
        QTextStream(stderr) << "bench_imaging: resize sizes differ: " << ours.width() << 'x' << ours.height() << " vs "
                            << plain.width() << 'x' << plain.height() << "\n";
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QTemporaryDir work;
    // The benchmark's own thumbnail cache, so the user's is neither used nor filled.
    qputenv("XDG_CACHE_HOME", (work.path() + QStringLiteral("/cache")).toUtf8());
    const QString given = qEnvironmentVariable("QUILLET_BENCH_CORPUS");
    const Corpus corpus = given.isEmpty() ? generate(work.path()) : scan(given);
    if (corpus.all().isEmpty()) {
        QTextStream(stderr) << "bench_imaging: no JPEGs to measure\n";
        return 0;
    }
    qint64 bytes = 0;
    for (const QString &f : corpus.all())
        bytes += QFileInfo(f).size();
    QTextStream(stderr) << "bench_imaging: " << corpus.all().size() << " files (" << corpus.withThumbnail.size()
                        << " with an EXIF thumbnail), mean " << QString::number(double(bytes) / corpus.all().size() / 1e6, 'f', 1)
                        << " MB\n";
    benchExifDate(corpus.all());
    benchThumbnails(corpus);
    benchResize(corpus.all(), work.path());
    return 0;
}

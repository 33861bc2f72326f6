// Measures the loading of the source photo list with thumbnails and EXIF dates, in three states:
// photos with an embedded EXIF thumbnail, photos without one (the pixels must be decoded), and a
// second load with the desktop thumbnail cache warm. The baseline is a single-threaded loop that
// decodes every photo in full and rescales it, measured in the same run.
//
// The photos are hard links to two generated 12-megapixel JPEGs (one with an embedded thumbnail,
// one without), so thousands of them cost no disk space; the page cache is warm for both the
// list and the baseline alike.

#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "support/testjpeg.h"
#include "workspace/workspace.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QImageReader>
#include <QTemporaryDir>

#include <cstdio>
#include <sys/resource.h>
#include <unistd.h>

using namespace quillet;

namespace {

void makeLinks(const QString &original, const QString &folder, int count)
{
    QDir().mkpath(folder);
    for (int i = 0; i < count; ++i) {
        const QString link = folder + QStringLiteral("/IMG_%1.jpg").arg(i, 5, 10, QLatin1Char('0'));
        if (::link(QFile::encodeName(original).constData(), QFile::encodeName(link).constData()) != 0)
            QFile::copy(original, link);
    }
}

// Photos per second of the plain way: one thread, full decode, rescale to 96.
double baselineRate(const QString &file, int samples)
{
    QElapsedTimer t;
    t.start();
    for (int i = 0; i < samples; ++i) {
        QImage full(file);
        full = full.scaled(96, 96, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    return samples * 1000.0 / std::max<qint64>(1, t.elapsed());
}

double loadRate(FamilyDatabase &db, const QString &folder, int count)
{
    WriteSetting(QStringLiteral("SrcDir"), folder);
    Workspace ws(db, PhotoServices::Default());
    ws.ReadSessionSettings();
    ws.options().thumbnails = true;
    ws.options().useExifDate = true;
    QElapsedTimer t;
    t.start();
    ws.LoadSource(true, false);
    const qint64 ms = std::max<qint64>(1, t.elapsed());
    if (ws.sourceList().rowCount() != count)
        std::fprintf(stderr, "listed %d of %d photos\n", ws.sourceList().rowCount(), count);
    return count * 1000.0 / ms;
}

void result(const char *name, double rate, double baseline)
{
    std::printf("RESULT %s %.1f photos/s ratio=%.1f baseline=single-thread-full-decode(%.1f photos/s)\n", name, rate,
                rate / baseline, baseline);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QTemporaryDir tmp;
    qputenv("XDG_DATA_HOME", (tmp.path() + QStringLiteral("/data")).toUtf8());
    qputenv("XDG_CACHE_HOME", (tmp.path() + QStringLiteral("/cache")).toUtf8());
    QDir().mkpath(AppPaths::dataDir());
    FamilyDatabase::Provision(FamilyDatabase::DbPath());
    FamilyDatabase db;
    if (!db.OpenDatabase())
        return 1;
    // The placeholder picture lives beside the program.
    const QString placeholder = AppPaths::placeholderPicture();
    if (!QFile::exists(placeholder))
        std::fprintf(stderr, "note: %s missing; thumbnail view needs it\n", qPrintable(placeholder));

    const int embeddedCount = 2000;
    const int pixelsCount = 400;
    test::TestJpeg want;
    want.size = QSize(4000, 3000);
    want.dateTaken = QStringLiteral("2024:03:05 09:41:00");
    want.thumbnailSize = QSize(160, 120);
    const QString withThumb = tmp.path() + QStringLiteral("/with.jpg");
    const QString without = tmp.path() + QStringLiteral("/without.jpg");
    test::writeTestJpeg(withThumb, want);
    want.thumbnailSize = QSize();
    test::writeTestJpeg(without, want);
    makeLinks(withThumb, tmp.path() + QStringLiteral("/embedded"), embeddedCount);
    makeLinks(without, tmp.path() + QStringLiteral("/pixels"), pixelsCount);

    const double baseline = baselineRate(without, 10);
    result("loadsource_embedded", loadRate(db, tmp.path() + QStringLiteral("/embedded"), embeddedCount), baseline);
    result("loadsource_pixels", loadRate(db, tmp.path() + QStringLiteral("/pixels"), pixelsCount), baseline);
    // The pixels load wrote the cache: the same photos again.
    const double cached = loadRate(db, tmp.path() + QStringLiteral("/pixels"), pixelsCount);
    result("loadsource_cached", cached, baseline);
    std::printf("RESULT loadsource_cached_2000 %.2f s (time for 2000 photos at the cached rate)\n", 2000.0 / cached);

    // Memory held with 5,000 photos listed with thumbnails.
    makeLinks(withThumb, tmp.path() + QStringLiteral("/many"), 5000);
    loadRate(db, tmp.path() + QStringLiteral("/many"), 5000);
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("RESULT loadsource_memory_5000 %.0f MB peak resident (goal: under 300 MB)\n", usage.ru_maxrss / 1024.0);
    return 0;
}

// Measures the loading of the source photo list at the size the source file table allows.
//
//   loadsource_20000          seconds until the list of 20,000 photos (EXIF dates, thumbnail view)
//                             is complete and the first screen of thumbnails is shown, page cache
//                             warm; against a single-threaded loop that only reads every photo's
//                             EXIF date, measured in the same run.
//   loadsource_memory_20000   peak resident memory of a fresh process that lists the 20,000 photos
//                             in a window and scrolls through all of them; against the same process
//                             listing an empty folder.
//   ui_latency_20000          the longest the event loop went without running while the 20,000
//                             photos loaded (a timer asks every 5 ms); against the timer's interval.
//   thumbnails_*              photos per second when every row's thumbnail is made: embedded EXIF
//                             thumbnails, decoded pixels, and the desktop cache; against a single
//                             thread decoding every photo in full.
//
// The photos are hard links to two generated 12-megapixel JPEGs (one with an embedded thumbnail,
// one without), so thousands of them cost no disk space. The memory figure runs in child
// processes (this program started again with "--child"), so that one measurement's peak does not
// hide another's. "--list-only" leaves out the thumbnail rates (they take minutes on a busy machine).

#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "imaging/clsexifreader.h"
#include "lib/apppaths.h"
#include "support/testjpeg.h"
#include "ui/thumbnailfeeder.h"
#include "workspace/workspace.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QListView>
#include <QProcess>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <unistd.h>

using namespace quillet;

namespace {

constexpr int kFull = 20000;

void makeLinks(const QString &original, const QString &folder, int count)
{
    QDir().mkpath(folder);
    for (int i = 0; i < count; ++i) {
        const QString link = folder + QStringLiteral("/IMG_%1.jpg").arg(i, 5, 10, QLatin1Char('0'));
        if (::link(QFile::encodeName(original).constData(), QFile::encodeName(link).constData()) != 0)
            QFile::copy(original, link);
    }
}

void result(const char *name, double value, const char *unit, double ratio, const QString &baseline)
{
    std::printf("RESULT %s %.2f %s ratio=%.2f baseline=%s\n", name, value, unit, ratio, qPrintable(baseline));
    std::fflush(stdout);
}

// A window like the main window's photo list: thumbnail view, 96-pixel pictures on a 104 grid.
struct ListWindow
{
    QListView view;
    ThumbnailFeeder *feeder = nullptr;

    explicit ListWindow(Workspace &ws)
    {
        view.setViewMode(QListView::IconMode);
        view.setIconSize(QSize(96, 96));
        view.setGridSize(QSize(104, 104));
        view.setResizeMode(QListView::Adjust);
        view.setMovement(QListView::Static);
        view.setUniformItemSizes(true);
        view.setModel(&ws.sourceList());
        feeder = new ThumbnailFeeder(&view, &ws.sourceList());
        view.resize(900, 700);
        view.show();
    }

    // True when every entry in view shows its own picture.
    bool screenReady() const
    {
        const QModelIndexList shown = feeder->positionsInView();
        for (const QModelIndex &i : shown) {
            if (!i.data(SourceListModel::ThumbnailReadyRole).toBool())
                return false;
        }
        return true;
    }

    void waitForScreen(int timeoutMs) const
    {
        QElapsedTimer t;
        t.start();
        while (!screenReady() && t.elapsed() < timeoutMs)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
};

Workspace *newWorkspace(FamilyDatabase &db, const QString &folder)
{
    WriteSetting(QStringLiteral("SrcDir"), folder);
    auto *ws = new Workspace(db, PhotoServices::Default());
    ws->ReadSessionSettings();
    ws->options().thumbnails = true;
    ws->options().useExifDate = true;
    return ws;
}

// Loads the folder with a list window open; returns seconds until the list and its first screen
// are complete, and the worst event-loop gap in milliseconds.
std::pair<double, double> timedLoad(FamilyDatabase &db, const QString &folder, int count)
{
    std::unique_ptr<Workspace> ws(newWorkspace(db, folder));
    ListWindow window(*ws);
    QElapsedTimer sinceTick;
    qint64 worstGap = 0;
    QTimer ticker;
    ticker.setTimerType(Qt::PreciseTimer);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        worstGap = std::max(worstGap, sinceTick.restart());
    });
    QElapsedTimer t;
    t.start();
    sinceTick.start();
    ticker.start(5);
    ws->LoadSource(true, false);
    window.waitForScreen(30000);
    const double seconds = t.nsecsElapsed() / 1e9;
    ticker.stop();
    worstGap = std::max(worstGap, sinceTick.elapsed());
    if (ws->sourceList().rowCount() != count)
        std::fprintf(stderr, "listed %d of %d photos\n", ws->sourceList().rowCount(), count);
    return {seconds, double(worstGap)};
}

// Photos per second when every row's thumbnail is made, through the window scrolled page by page.
double thumbnailRate(FamilyDatabase &db, const QString &folder, int count)
{
    std::unique_ptr<Workspace> ws(newWorkspace(db, folder));
    ws->options().useExifDate = false;
    ListWindow window(*ws);
    ws->LoadSource(true, false);
    QElapsedTimer t;
    t.start();
    QScrollBar *bar = window.view.verticalScrollBar();
    for (;;) {
        window.waitForScreen(30000);
        if (bar->value() >= bar->maximum())
            break;
        bar->setValue(bar->value() + bar->pageStep());
    }
    return count * 1000.0 / std::max<qint64>(1, t.elapsed());
}

// This process's peak resident memory. Not getrusage: its figure survives fork and exec, so a
// child would report its parent's peak.
double peakResidentMb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').value(0).toDouble() / 1024.0;
    }
    return 0;
}

// The child process: lists a folder in a window, scrolls through it, prints its peak resident MB.
int child(const QString &folder)
{
    FamilyDatabase db;
    if (!db.OpenDatabase())
        return 1;
    std::unique_ptr<Workspace> ws(newWorkspace(db, folder));
    ListWindow window(*ws);
    ws->LoadSource(true, false);
    QScrollBar *bar = window.view.verticalScrollBar();
    for (int step = 0; step <= 40; ++step) {
        bar->setValue(bar->maximum() * step / 40);
        window.waitForScreen(30000);
    }
    std::printf("%.1f\n", peakResidentMb());
    return 0;
}

double childPeakMb(const QString &folder)
{
    QProcess p;
    p.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    p.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--child"), folder});
    p.waitForFinished(600000);
    return p.readAllStandardOutput().trimmed().toDouble();
}

// Microseconds per photo of reading EXIF dates on one thread: the floor of the list's own work.
double exifDateMicros(const QString &folder, int count)
{
    QElapsedTimer t;
    t.start();
    for (int i = 0; i < count; ++i)
        clsEXIFreader::DateTaken(folder + QStringLiteral("/IMG_%1.jpg").arg(i, 5, 10, QLatin1Char('0')));
    return t.nsecsElapsed() / 1e3 / count;
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc == 3 && QByteArray(argv[1]) == "--child")
        return child(QString::fromLocal8Bit(argv[2]));

    QTemporaryDir tmp;
    qputenv("XDG_DATA_HOME", (tmp.path() + QStringLiteral("/data")).toUtf8());
    qputenv("XDG_CACHE_HOME", (tmp.path() + QStringLiteral("/cache")).toUtf8());
    QDir().mkpath(AppPaths::dataDir());
    FamilyDatabase::Provision(FamilyDatabase::DbPath());
    FamilyDatabase db;
    if (!db.OpenDatabase())
        return 1;
    if (!QFile::exists(AppPaths::placeholderPicture()))
        std::fprintf(stderr, "note: %s missing; thumbnail view needs it\n", qPrintable(AppPaths::placeholderPicture()));

    test::TestJpeg want;
    want.size = QSize(4000, 3000);
    want.dateTaken = QStringLiteral("2024:03:05 09:41:00");
    want.thumbnailSize = QSize(160, 120);
    const QString withThumb = tmp.path() + QStringLiteral("/with.jpg");
    const QString without = tmp.path() + QStringLiteral("/without.jpg");
    test::writeTestJpeg(withThumb, want);
    want.thumbnailSize = QSize();
    test::writeTestJpeg(without, want);
    const QString full = tmp.path() + QStringLiteral("/full");
    const QString empty = tmp.path() + QStringLiteral("/empty");
    const QString pixels = tmp.path() + QStringLiteral("/pixels");
    makeLinks(withThumb, full, kFull);
    makeLinks(without, pixels, 400);
    QDir().mkpath(empty);

    exifDateMicros(full, kFull); // warms the page cache for the directory and the heads
    const double floorSeconds = exifDateMicros(full, kFull) * kFull / 1e6;
    const auto [seconds, worstGap] = timedLoad(db, full, kFull);
    result("loadsource_20000", seconds, "s", floorSeconds / seconds,
           QStringLiteral("single-thread-exif-dates-only(%1 s)").arg(floorSeconds, 0, 'f', 2));
    result("ui_latency_20000", worstGap, "ms", 5.0 / std::max(1.0, worstGap), QStringLiteral("timer-interval(5 ms)"));

    const double emptyMb = childPeakMb(empty);
    const double fullMb = childPeakMb(full);
    result("loadsource_memory_20000", fullMb, "MB", fullMb / std::max(1.0, emptyMb),
           QStringLiteral("empty-list(%1 MB)").arg(emptyMb, 0, 'f', 1));

    if (app.arguments().contains(QStringLiteral("--list-only")))
        return 0;
    QElapsedTimer t;
    t.start();
    for (int i = 0; i < 10; ++i) {
        QImage image(without);
        image = image.scaled(96, 96, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    const double baseline = 10 * 1000.0 / std::max<qint64>(1, t.elapsed());
    const QString base = QStringLiteral("single-thread-full-decode(%1 photos/s)").arg(baseline, 0, 'f', 1);
    const double embedded = thumbnailRate(db, full, kFull);
    result("thumbnails_embedded", embedded, "photos/s", embedded / baseline, base);
    const double decoded = thumbnailRate(db, pixels, 400);
    result("thumbnails_pixels", decoded, "photos/s", decoded / baseline, base);
    const double cached = thumbnailRate(db, pixels, 400); // the pixels run wrote the cache
    result("thumbnails_cached", cached, "photos/s", cached / baseline, base);
    return 0;
}

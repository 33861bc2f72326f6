// Transfer of unallocated photos: the export of 2,000 camera-sized photos (in four sub-folders)
// into the Batch Transfer Dir against `cp -r` of the same folder, and their import into another
// Source Dir on the same file system (renames) against renaming the same files one by one.
#include "benchsupport.h"

#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "sync/unallocatedtransfer.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <cstdio>

using namespace quillet;

namespace {

constexpr int kPhotos = 2000;

// The photos in list order, in four sub-folders of the Source Dir.
QStringList preparePhotos(const QString &srcDir)
{
    QStringList photos;
    for (int day = 0; day < 4; ++day) {
        const QString dir = srcDir + QStringLiteral("/Day%1").arg(day);
        QDir().mkpath(dir);
        for (const QString &name : prepareBenchPhotos(dir, kPhotos / 4))
            photos << dir + QLatin1Char('/') + name;
    }
    return photos;
}

double seconds(const QElapsedTimer &t)
{
    return t.nsecsElapsed() / 1e9;
}

} // namespace

int main(int argc, char **argv)
{
    BenchHome home;
    QGuiApplication app(argc, argv);
    const QString srcDir = home.srcDir, xfrDir = home.dir.path() + "/xfr";
    QDir().mkpath(xfrDir + "/Unallocated");
    FamilyDatabase db;
    db.OpenDatabase();
    for (const auto &[key, value] : QList<QPair<QString, QString>>{
             {"SrcDir", srcDir}, {"BatchXfrDir", xfrDir}, {"PCname", "Bench"}, {"UnallocResize", "0"}})
        WriteSetting(key, value);
    const QStringList photos = preparePhotos(srcDir);

    QElapsedTimer t;
    t.start();
    QProcess::execute(QStringLiteral("cp"), {QStringLiteral("-r"), srcDir, home.dir.path() + "/cp"});
    QProcess::execute(QStringLiteral("sync"), {});
    const double cpSeconds = seconds(t);
    QDir(home.dir.path() + "/cp").removeRecursively();

    UnallocatedTransfer transfer(db, {});
    t.restart();
    transfer.ExportUnalloc(photos);
    QProcess::execute(QStringLiteral("sync"), {});
    const double exportSeconds = seconds(t);
    std::printf("RESULT export_unalloc %.1f files/s ratio=%.2f baseline=cp -r\n", kPhotos / exportSeconds,
                cpSeconds / exportSeconds);

    // The baseline: renaming the exported files into a folder of the same file system and back.
    const QString renamed = home.dir.path() + "/renamed";
    QStringList exported;
    QDirIterator it(xfrDir + "/Unallocated", QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        exported << it.next();
    t.restart();
    for (const QString &file : exported) {
        const QString to = renamed + "/" + QDir(xfrDir).relativeFilePath(file);
        QDir().mkpath(QFileInfo(to).absolutePath());
        QFile::rename(file, to);
    }
    const double renameSeconds = seconds(t);
    for (const QString &file : exported)
        QFile::rename(renamed + "/" + QDir(xfrDir).relativeFilePath(file), file);

    WriteSetting(QStringLiteral("SrcDir"), home.dir.path() + "/src2");
    QDir().mkpath(home.dir.path() + "/src2");
    t.restart();
    transfer.ImportUnalloc();
    const double importSeconds = seconds(t);
    std::printf("RESULT import_unalloc %.1f files/s ratio=%.2f baseline=rename loop\n", kPhotos / importSeconds,
                renameSeconds / importSeconds);
    return 0;
}

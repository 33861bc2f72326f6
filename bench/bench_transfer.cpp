// Transfer of unallocated photos: the export of 2,000 camera-sized photos (in four sub-folders)
// into the Batch Transfer Dir against `cp -r` of the same folder, and their import into another
// Source Dir on the same file system (renames) against renaming the same files one by one.
#include "camerajpeg.h"

#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "sync/unallocatedtransfer.h"

#include <QBuffer>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <cstdio>

using namespace quillet;

namespace {

constexpr int kPhotos = 2000;

// The photos in list order: from QUILLET_BENCH_CORPUS (cycled) or generated.
QStringList preparePhotos(const QString &srcDir)
{
    const QString corpus = qEnvironmentVariable("QUILLET_BENCH_CORPUS");
    QStringList corpusFiles;
    if (!corpus.isEmpty()) {
        for (const QString &name : QDir(corpus).entryList({"*.jpg", "*.JPG"}, QDir::Files, QDir::Name))
            corpusFiles << corpus + "/" + name;
    }
    const QByteArray jpeg = corpusFiles.isEmpty() ? cameraJpeg() : QByteArray();
    QStringList photos;
    for (int i = 0; i < kPhotos; ++i) {
        const QString dir = srcDir + QStringLiteral("/Day%1").arg(i % 4);
        QDir().mkpath(dir);
        photos << dir + QStringLiteral("/IMG_%1.jpg").arg(i, 4, 10, QLatin1Char('0'));
        if (!corpusFiles.isEmpty()) {
            QFile::copy(corpusFiles.at(i % corpusFiles.size()), photos.last());
            continue;
        }
        QFile f(photos.last());
        f.open(QIODevice::WriteOnly);
        f.write(jpeg);
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
    QTemporaryDir home;
    for (const char *var : {"HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"})
        qputenv(var, home.path().toUtf8() + "/" + var);
    QGuiApplication app(argc, argv);
    const QString srcDir = home.path() + "/src", xfrDir = home.path() + "/xfr";
    QDir().mkpath(xfrDir + "/Unallocated");
    QDir().mkpath(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/Quillet");
    FamilyDatabase::Provision(FamilyDatabase::DbPath());
    FamilyDatabase db;
    db.OpenDatabase();
    for (const auto &[key, value] : QList<QPair<QString, QString>>{
             {"SrcDir", srcDir}, {"BatchXfrDir", xfrDir}, {"PCname", "Bench"}, {"UnallocResize", "0"}})
        WriteSetting(key, value);
    const QStringList photos = preparePhotos(srcDir);

    QElapsedTimer t;
    t.start();
    QProcess::execute(QStringLiteral("cp"), {QStringLiteral("-r"), srcDir, home.path() + "/cp"});
    QProcess::execute(QStringLiteral("sync"), {});
    const double cpSeconds = seconds(t);
    QDir(home.path() + "/cp").removeRecursively();

    UnallocatedTransfer transfer(db, {});
    t.restart();
    transfer.ExportUnalloc(photos);
    QProcess::execute(QStringLiteral("sync"), {});
    const double exportSeconds = seconds(t);
    std::printf("RESULT export_unalloc %.1f files/s ratio=%.2f baseline=cp -r\n", kPhotos / exportSeconds,
                cpSeconds / exportSeconds);

    // The baseline: renaming the exported files into a folder of the same file system and back.
    const QString renamed = home.path() + "/renamed";
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

    WriteSetting(QStringLiteral("SrcDir"), home.path() + "/src2");
    QDir().mkpath(home.path() + "/src2");
    t.restart();
    transfer.ImportUnalloc();
    const double importSeconds = seconds(t);
    std::printf("RESULT import_unalloc %.1f files/s ratio=%.2f baseline=rename loop\n", kPhotos / importSeconds,
                renameSeconds / importSeconds);
    return 0;
}

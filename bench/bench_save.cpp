// Save throughput: 100 photos to 3 families, plain copies against the `cp` command copying the
// same files, and resized to 1024 against decoding and rescaling the same files.
#include "benchsupport.h"
#include "camerajpeg.h"

#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "lib/appstate.h"
#include "sync/batchfilejournal.h"
#include "workspace/allocationsave.h"
#include "workspace/workspace.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QBuffer>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>
#include <QPainter>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <cstdio>

using namespace quillet;

namespace {

constexpr int kPhotos = 100;
const QList<int> kFamilies{1, 2, 3};

// One Save of every listed photo to the three families; returns the seconds it took.
double timedSave(Workspace &ws, AllocationSave &save)
{
    ws.LoadSource(true, false);
    ws.ReloadFamilyCollections();
    ws.LoadFamilies(false, false, false, false, false);
    for (int i = 0; i < ws.sourceList().rowCount(); ++i)
        ws.sourceList().setSelected(i, true);
    for (int id : kFamilies)
        ws.familyList().setSelected(ws.familyList().positionOfId(id), true);
    QElapsedTimer t;
    t.start();
    save.Save();
    return t.nsecsElapsed() / 1e9;
}

// Puts the photos back under their untagged names and empties the Target Dir.
void reset(Workspace &ws, const QString &tgtDir)
{
    // A quiet undo leaves writing the undo file to the operation it is part of; without that
    // the next LoadSource reads the old level back and lists no photo at all.
    ws.undos().UndoLastLevel(true);
    ws.undos().SaveToFile();
    QDir(tgtDir).removeRecursively();
    QDir().mkpath(tgtDir);
}

int countFiles(const QString &dir)
{
    int count = 0;
    for (QDirIterator it(dir, QDir::Files, QDirIterator::Subdirectories); it.hasNext(); it.next())
        ++count;
    return count;
}

double timedDecodeRescale(const QString &srcDir, const QStringList &names)
{
    QElapsedTimer t;
    t.start();
    for (int f = 0; f < kFamilies.size(); ++f) {
        for (const QString &n : names) {
            const QImage image = QImage(srcDir + "/" + n);
            const QImage scaled = image.scaled(1024, 1024, Qt::KeepAspectRatio, Qt::SmoothTransformation);
            if (scaled.isNull())
                std::fprintf(stderr, "decode failed: %s\n", qPrintable(n));
        }
    }
    return t.nsecsElapsed() / 1e9;
}

} // namespace

int main(int argc, char **argv)
{
    const BenchHome home;
    QGuiApplication app(argc, argv);
    const QString &srcDir = home.srcDir, &tgtDir = home.tgtDir;
    FamilyDatabase db;
    db.OpenDatabase();
    for (int id : kFamilies)
        db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName, [Current]) VALUES (?,?,?,True)"),
                {id, QStringLiteral("Family%1").arg(id), QStringLiteral("Bench")});
    for (const auto &[key, value] : QList<QPair<QString, QString>>{
             {"SrcDir", srcDir}, {"TgtDir", tgtDir}, {"CreateBatchs", "1"}, {"PCname", "Bench"}, {"Thumbnails", "0"},
             {"AssnSubToTgt", "0"}, {"AssnSrcSubToTgt", "0"}, {"TargetResizeMD", "3"}, {"TargetResizeQ", "3"}})
        WriteSetting(key, value);
    Batchfile::InitBatchfile();
    const QStringList names = prepareBenchPhotos(srcDir, kPhotos);
    const int copies = int(names.size() * kFamilies.size());

    Workspace ws(db, PhotoServices::Default());
    ws.ReadSessionSettings();
    ws.options().thumbnails = false;
    ws.options().filterByDay = false;
    ws.CreateUndos();
    AllocationSave save(ws);

    WriteSetting(QStringLiteral("TargetResize"), false);
    const double cpSeconds = timedCp(srcDir, names, tgtDir, int(kFamilies.size()));
    QDir(tgtDir).removeRecursively();
    QDir().mkpath(tgtDir);
    const double copySeconds = timedSave(ws, save);
    if (const int written = countFiles(tgtDir); written != copies)
        std::fprintf(stderr, "the Save wrote %d of %d copies\n", written, copies);
    reset(ws, tgtDir);
    std::printf("RESULT save_copy %.1f files/s ratio=%.2f baseline=cp\n", copies / copySeconds, cpSeconds / copySeconds);

    WriteSetting(QStringLiteral("TargetResize"), true);
    const double resizeSeconds = timedSave(ws, save);
    if (const int written = countFiles(tgtDir); written != copies)
        std::fprintf(stderr, "the resized Save wrote %d of %d copies\n", written, copies);
    reset(ws, tgtDir);
    const double decodeSeconds = timedDecodeRescale(srcDir, names);
    std::printf("RESULT save_resize %.1f files/s ratio=%.2f baseline=full decode+rescale\n", copies / resizeSeconds,
                decodeSeconds / resizeSeconds);
    return 0;
}

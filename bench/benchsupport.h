#pragma once

#include <QStringList>
#include <QTemporaryDir>

// The photos the benchmarks work on: the first `count` JPEGs of the folder named by
// QUILLET_BENCH_CORPUS when it is set, else `count` copies of one camera-sized JPEG (12 MP),
// written into srcDir. Returns their names.
QStringList prepareBenchPhotos(const QString &srcDir, int count);

// A throwaway home for one benchmark: HOME and the XDG folders inside a temporary folder, the
// folders src/ and tgt/, and the data folder with an empty family database. Make it before the
// application object.
struct BenchHome
{
    QTemporaryDir dir;
    QString srcDir;
    QString tgtDir;
    BenchHome();
};

// Seconds the `cp` command takes to copy the named files of srcDir into `folders` new folders
// below tgtDir (the baseline of the copy benchmarks).
double timedCp(const QString &srcDir, const QStringList &names, const QString &tgtDir, int folders);

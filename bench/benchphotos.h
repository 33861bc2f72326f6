#pragma once

#include <QStringList>

// The photos the benchmarks work on: the first `count` JPEGs of the folder named by
// QUILLET_BENCH_CORPUS when it is set, else `count` copies of one camera-sized JPEG (12 MP),
// written into srcDir. Returns their names.
QStringList prepareBenchPhotos(const QString &srcDir, int count);

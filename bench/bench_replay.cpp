// Replay throughput: a batchfile of 2,000 CS entries (plain copies of 100 camera-sized JPEGs into
// 20 family folders) against the `cp` command copying the same files, and a batchfile of 10,000
// NS entries against renaming the same files with rename(2) in a plain loop.
#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/userprompt.h"
#include "sync/batchfileprocessing.h"
#include "benchsupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <cstdio>

using namespace quillet;

namespace {

constexpr int kPhotos = 100;
constexpr int kFamilies = 20;
constexpr int kRenames = 10000;

void writeBatchfile(const QString &name, const QString &srcDir, const QString &tgtDir, const QByteArray &entries)
{
    QFile f(AppPaths::dataFile(name));
    f.open(QIODevice::WriteOnly);
    f.write(srcDir.toUtf8() + "\r\n" + tgtDir.toUtf8() + "\r\nNumber of times processed: 0\r\n" + entries);
}

// The questions are answered with their defaults (Yes: process it) by the quiet prompt.
double timedReplay(FamilyDatabase &db)
{
    QElapsedTimer t;
    t.start();
    BatchfileProcessing(&db).ProcessBatchfiles();
    return t.nsecsElapsed() / 1e9;
}

void benchCopies(FamilyDatabase &db, const QString &srcDir, const QString &tgtDir)
{
    const QStringList names = prepareBenchPhotos(srcDir, kPhotos);
    QByteArray entries;
    for (int f = 0; f < kFamilies; ++f) {
        for (const QString &n : names)
            entries += "CS\r\n" + n.toUtf8() + "\r\nFamily " + QByteArray::number(f) + "\\" + n.toUtf8() + "\r\n";
    }
    const double cpSeconds = timedCp(srcDir, names, tgtDir, kFamilies);
    QDir(tgtDir).removeRecursively();
    QDir().mkpath(tgtDir);
    writeBatchfile(QStringLiteral("_Batchfile_161116204830_Other.log"), srcDir, tgtDir, entries);
    const double replaySeconds = timedReplay(db);
    const int copies = int(names.size()) * kFamilies;
    std::printf("RESULT replay_copy %.1f files/s ratio=%.2f baseline=cp\n", copies / replaySeconds,
                cpSeconds / replaySeconds);
    QDir(tgtDir).removeRecursively();
    QDir(srcDir).removeRecursively();
    QDir().mkpath(tgtDir);
    QDir().mkpath(srcDir);
}

void benchRenames(FamilyDatabase &db, const QString &srcDir, const QString &tgtDir)
{
    QByteArray entries;
    for (int i = 0; i < kRenames; ++i) {
        const QByteArray name = "IMG_" + QByteArray::number(i).rightJustified(5, '0');
        QFile f(srcDir + "/" + QString::fromLatin1(name) + ".jpg");
        f.open(QIODevice::WriteOnly);
        f.write("x");
        entries += "NS\r\n" + name + ".jpg\r\n" + name + "(#1#2#).jpg\r\n";
    }
    // The floor: the same renames in a plain loop, and back.
    QElapsedTimer t;
    t.start();
    for (int i = 0; i < kRenames; ++i) {
        const QString name = srcDir + QStringLiteral("/IMG_%1").arg(i, 5, 10, QLatin1Char('0'));
        std::rename(QFile::encodeName(name + ".jpg").constData(), QFile::encodeName(name + "(#1#2#).jpg").constData());
    }
    const double loopSeconds = t.nsecsElapsed() / 1e9;
    for (int i = 0; i < kRenames; ++i) {
        const QString name = srcDir + QStringLiteral("/IMG_%1").arg(i, 5, 10, QLatin1Char('0'));
        std::rename(QFile::encodeName(name + "(#1#2#).jpg").constData(), QFile::encodeName(name + ".jpg").constData());
    }
    writeBatchfile(QStringLiteral("_Batchfile_161116204831_Other.log"), srcDir, tgtDir, entries);
    const double replaySeconds = timedReplay(db);
    std::printf("RESULT replay_rename %.0f entries/s ratio=%.2f baseline=rename(2) loop\n", kRenames / replaySeconds,
                loopSeconds / replaySeconds);
}

} // namespace

int main(int argc, char **argv)
{
    BenchHome home;
    QGuiApplication app(argc, argv);
    const QString srcDir = home.srcDir, tgtDir = home.tgtDir;
    FamilyDatabase db;
    db.OpenDatabase();
    for (const auto &[key, value] : QList<QPair<QString, QString>>{
             {"SrcDir", srcDir}, {"TgtDir", tgtDir}, {"CreateBatchs", "0"}, {"PCname", "Bench"}})
        WriteSetting(key, value);
    benchCopies(db, srcDir, tgtDir);
    benchRenames(db, srcDir, tgtDir);
    return 0;
}

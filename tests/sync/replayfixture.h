#pragma once

// Real folders for replay tests: an installation (data folder, family database, Source Dir "src",
// Target Dir "tgt") whose PC is "PC1", and helpers to write other PCs' batchfiles and read what
// the replay left.
#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/appstate.h"
#include "lib/debuglog.h"
#include "support/scriptedprompt.h"
#include "support/testenv.h"
#include "support/testjpeg.h"
#include "sync/batchfilejournal.h"
#include "sync/batchfilename.h"
#include "sync/batchfileprocessing.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QMap>
#include <QTest>

namespace quillet::test {

// Every file and folder below `root` (links not followed) with a digest of its bytes, skipping
// the folders named in `skip` (relative to root).
inline QMap<QString, QByteArray> snapshot(const QString &root, const QStringList &skip = {})
{
    QMap<QString, QByteArray> out;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QString rel = QDir(root).relativeFilePath(path);
        bool skipped = false;
        for (const QString &s : skip)
            skipped = skipped || rel == s || rel.startsWith(s + QLatin1Char('/'));
        if (skipped)
            continue;
        const QFileInfo info(path);
        out[rel] = info.isSymLink() ? info.symLinkTarget().toUtf8()
            : info.isDir()          ? QByteArray("dir")
                                    : QCryptographicHash::hash(fileBytes(path), QCryptographicHash::Sha1);
    }
    return out;
}

struct ReplayFixture
{
    TestEnv env;
    ScriptedPrompt port;
    FamilyDatabase db;

    ReplayFixture()
    {
        env.makeInstallation();
        db.OpenDatabase();
        WriteSetting(QStringLiteral("PCname"), QStringLiteral("PC1"));
        WriteSetting(QStringLiteral("CreateBatchs"), QStringLiteral("1"));
        appState().cancel = false;
        Batchfile::SetCurrentPath(QString());
    }
    ~ReplayFixture()
    {
        db.CloseDatabase();
        Batchfile::SetCurrentPath(QString());
        appState().cancel = false;
    }

    QString src(const QString &rel = QString()) const { return env.srcDir() + (rel.isEmpty() ? QString() : "/" + rel); }
    QString tgt(const QString &rel = QString()) const { return env.tgtDir() + (rel.isEmpty() ? QString() : "/" + rel); }

    // A real JPEG of the given size (seeded picture) in the Source Dir.
    QString photo(const QString &rel, QSize size = QSize(64, 48), int seed = 1) const
    {
        TestJpeg want;
        want.size = size;
        want.seed = seed;
        want.dateTaken = QStringLiteral("2016:11:16 09:30:00");
        writeTestJpeg(src(rel), want);
        return src(rel);
    }

    // Writes another PC's batchfile into the data folder: the header (count as given) and the
    // entry lines, CR LF after each.
    QString batchfile(const QStringList &entryLines, int count = 0,
                      const QString &name = QStringLiteral("_Batchfile_161116204830_PC2.log")) const
    {
        QByteArray bytes = (env.srcDir() + "\r\n" + env.tgtDir() + "\r\nNumber of times processed: "
                            + QString::number(count) + "\r\n").toUtf8();
        for (const QString &line : entryLines)
            bytes += line.toUtf8() + "\r\n";
        return writeRaw(name, bytes);
    }
    QString writeRaw(const QString &name, const QByteArray &bytes) const
    {
        const QString path = AppPaths::dataFile(name);
        QFile f(path);
        f.open(QIODevice::WriteOnly);
        f.write(bytes);
        return path;
    }

    // Answers Yes to the questions of one batchfile (process it; reprocess it when asked).
    void process(std::initializer_list<bool> answers = {true})
    {
        for (bool a : answers)
            port.answer(a);
        BatchfileProcessing(&db).ProcessBatchfiles();
    }

    QStringList doneFiles() const
    {
        return QDir(BatchfileName::doneFolder()).entryList(QDir::Files, QDir::Name);
    }
    // The "Results: " lines of the only (or the last) done batchfile.
    QStringList results(int which = -1) const
    {
        const QStringList done = doneFiles();
        if (done.isEmpty())
            return {};
        const QString name = which < 0 ? done.last() : done.at(which);
        QStringList out;
        const QStringList lines =
            QString::fromUtf8(fileBytes(BatchfileName::doneFolder() + "/" + name)).split(QStringLiteral("\r\n"));
        for (const QString &line : lines) {
            if (line.startsWith(QLatin1String("Results: ")))
                out << line.mid(9);
        }
        return out;
    }
    QString debugLog() const { return QString::fromUtf8(fileBytes(GetDebugLogPath())); }
};

} // namespace quillet::test

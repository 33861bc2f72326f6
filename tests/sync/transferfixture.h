#pragma once

// Several PCs in one test process: each has its own home (data folder, settings, database, Source
// and Target Dir) inside the test's temporary folder, and activate() points the process at it.
// The test's TestEnv puts the environment back afterwards.

#include "../workspace/headlessworkspace.h"
#include "lib/apppaths.h"
#include "sync/batchfilejournal.h"
#include "workspace/allocationsave.h"
#include "workspace/photooperations.h"
#include "support/scriptedprompt.h"
#include "support/testenv.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTest>

namespace quillet::test {

// Points the process's home folders at `home`.
inline void useHome(const QString &home)
{
    qputenv("HOME", home.toUtf8());
    qputenv("XDG_DATA_HOME", (home + QStringLiteral("/.local/share")).toUtf8());
    qputenv("XDG_CACHE_HOME", (home + QStringLiteral("/.cache")).toUtf8());
    qputenv("XDG_CONFIG_HOME", (home + QStringLiteral("/.config")).toUtf8());
}

struct PcHome
{
    QString name; // PCname
    QString root; // everything of this PC lies below

    PcHome(const QString &parent, const QString &pcName)
        : name(pcName)
        , root(parent + QLatin1Char('/') + pcName)
    {
    }

    QString src() const { return root + QStringLiteral("/src"); }
    QString tgt() const { return root + QStringLiteral("/tgt"); }
    QString home() const { return root + QStringLiteral("/home"); }

    void activate() const { useHome(home()); }

    // Activates this PC and makes its installation: data folder, empty database, settings.
    bool install(const QString &batchXfrDir) const
    {
        activate();
        QDir().mkpath(AppPaths::dataDir());
        QDir().mkpath(src());
        QDir().mkpath(tgt());
        QDir().mkpath(home() + QStringLiteral("/.cache"));
        if (!FamilyDatabase::Provision(FamilyDatabase::DbPath()))
            return false;
        writeSettings({{"SrcDir", src()}, {"TgtDir", tgt()}, {"PCname", name}, {"BatchXfrDir", batchXfrDir},
                       {"Thumbnails", "0"}, {"SrcDirInclSubs", "1"}});
        return true;
    }
};

// Two installed PCs, A (active after set-up) and B, sharing the Batch Transfer Dir "xfr" (with
// its Unallocated folder made), and the scripted prompt answering for both.
struct TwoPcFixture
{
    TestEnv env;
    ScriptedPrompt port;
    QString xfr = env.path(QStringLiteral("xfr"));
    PcHome a{env.root(), QStringLiteral("A")};
    PcHome b{env.root(), QStringLiteral("B")};

    bool install()
    {
        QDir().mkpath(xfr + QStringLiteral("/Unallocated"));
        return b.install(xfr) && a.install(xfr);
    }
};

// Sets the three transfer parameters as stored text ("" for Null) and reopens the database so
// that its parameter row is read again.
inline void setStamps(FamilyDatabase &db, const QString &update, const QString &exported, const QString &from)
{
    auto v = [](const QString &s) { return s.isEmpty() ? QVariant() : QVariant(s); };
    db.exec(QStringLiteral("UPDATE _tblParams SET LastDBUpdate=?, LastExport=?, LastExportFromPC=?"),
            {v(update), v(exported), v(from)});
    db.CloseDatabase();
    db.OpenDatabase();
}

inline void addFamily(FamilyDatabase &db, int id, const QString &firstName)
{
    db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, [Current]) VALUES (?,?,True)"),
            {id, firstName});
    db.TouchLastDBUpdate();
}

inline QStringList familyNames(FamilyDatabase &db)
{
    QStringList names;
    for (const QSqlRecord &r : db.select(QStringLiteral("SELECT * FROM tblFamilies ORDER BY FamilyID")))
        names << r.value(QStringLiteral("FirstName")).toString();
    return names;
}

// Works on the active PC, one step at a time: a Save of the photos named to the one family, or
// (family kTurn) a quarter turn of them anticlockwise.
inline constexpr int kTurn = 0;
inline void allocate(FamilyDatabase &db, const QList<QPair<QStringList, int>> &steps)
{
    Batchfile::InitBatchfile();
    const auto ws = headlessWorkspace(db);
    AllocationSave save(*ws);
    for (const auto &[photos, family] : steps) {
        ws->LoadSource(true, false);
        ws->ReloadFamilyCollections();
        ws->LoadFamilies(false, false, false, false, false);
        for (int i = 0; i < ws->sourceList().rowCount(); ++i)
            ws->sourceList().setSelected(i, photos.contains(ws->sourceList().at(i).text));
        if (family == kTurn) {
            QVERIFY(PhotoOperations(*ws).RotateSelected(false));
            continue;
        }
        ws->familyList().clearSelection();
        ws->familyList().setSelected(ws->familyList().positionOfId(family), true);
        save.Save();
    }
    ws->undos().SaveToFile();
    Batchfile::SetCurrentPath(QString());
}

} // namespace quillet::test

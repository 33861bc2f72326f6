#pragma once

// A workspace on real folders and a real family database for the Save, Undo and review tests:
// Source Dir "src", Target Dir "tgt", journaling on, families listed by first name.
#include "headlessworkspace.h"
#include "lib/appstate.h"
#include "lib/fileutils.h"
#include "support/scriptedprompt.h"
#include "support/testenv.h"
#include "sync/batchfilejournal.h"
#include "workspace/allocationsave.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QTest>

namespace quillet::test {

struct AllocationFixture
{
    TestEnv env;
    ScriptedPrompt port;
    FamilyDatabase db;
    std::unique_ptr<Workspace> ws;
    std::unique_ptr<AllocationSave> save;

    AllocationFixture()
    {
        env.dataDir();
        FamilyDatabase::Provision(FamilyDatabase::DbPath());
        db.OpenDatabase();
        QDir().mkpath(src());
        QDir().mkpath(tgt());
        writeSettings({{"SrcDir", src()}, {"TgtDir", tgt()}, {"SrcDirInclSubs", "1"}, {"CreateBatchs", "1"},
                       {"PCname", "PC1"}, {"Thumbnails", "0"}, {"AutoReselPriv", "1"}});
        Batchfile::InitBatchfile();
        appState().isPortableCopy = false;
        appState().systemLoaded = false;
        appState().cancel = false;
        ws = headlessWorkspace(db);
        save = std::make_unique<AllocationSave>(*ws);
    }
    ~AllocationFixture()
    {
        save.reset();
        ws.reset();
        Batchfile::SetCurrentPath(QString());
        appState().systemLoaded = false;
    }

    QString src(const QString &name = QString()) const
    {
        return env.path(QStringLiteral("src")) + (name.isEmpty() ? QString() : QLatin1Char('/') + name);
    }
    QString tgt(const QString &name = QString()) const
    {
        return env.path(QStringLiteral("tgt")) + (name.isEmpty() ? QString() : QLatin1Char('/') + name);
    }

    // A real JPEG in the Source Dir; photos of their own colour are told apart by their bytes.
    void photo(const QString &name, QSize size = QSize(64, 48), Qt::GlobalColor colour = Qt::darkCyan) const
    {
        QDir().mkpath(QFileInfo(src(name)).absolutePath());
        QImage image(size, QImage::Format_RGB32);
        image.fill(colour);
        QVERIFY(image.save(src(name), "JPG"));
    }
    void photo(const QString &name, Qt::GlobalColor colour) const { photo(name, QSize(64, 48), colour); }

    void family(int id, const QString &first, const QString &last) const
    {
        db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName, [Current]) VALUES (?,?,?,?)"),
                {id, first, last, true});
    }

    void privacyMarker() { db.WriteParam(QStringLiteral("WebAllowPriv"), 1); }

    // Families 12 "Anna Smith" and 7 "Ben Jones" (listed in that order).
    void twoFamilies(bool privacy = false)
    {
        family(12, QStringLiteral("Anna"), QStringLiteral("Smith"));
        family(7, QStringLiteral("Ben"), QStringLiteral("Jones"));
        if (privacy)
            privacyMarker();
    }

    void load()
    {
        ws->LoadSource(!ws->options().showAllocated, false);
        ws->ReloadFamilyCollections();
        ws->LoadFamilies(false, false, false, false, false);
    }

    void selectPhotos(const QStringList &names) const
    {
        SourceListModel &list = ws->sourceList();
        list.clearSelection();
        for (int i = 0; i < list.rowCount(); ++i)
            list.setSelected(i, names.contains(list.at(i).text));
    }

    void selectFamilies(const QList<int> &ids) const
    {
        FamilyListModel &list = ws->familyList();
        list.clearSelection();
        for (int id : ids)
            list.setSelected(list.positionOfId(id), true);
    }

    // One Save of the photos listed under these names to these families.
    void saveTo(const QStringList &photos, const QList<int> &families) const
    {
        selectPhotos(photos);
        selectFamilies(families);
        save->Save();
    }

    QStringList listTexts() const
    {
        QStringList out;
        for (int i = 0; i < ws->sourceList().rowCount(); ++i)
            out << ws->sourceList().at(i).text;
        return out;
    }

    // The journal's entries after its three header lines, one "OP a b" text per entry.
    QStringList journal() const
    {
        QFile f(Batchfile::CurrentPath());
        if (!f.open(QIODevice::ReadOnly))
            return {};
        const QStringList lines = QString::fromUtf8(f.readAll()).split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
        QStringList out;
        for (int i = 3; i < lines.size(); ++i) {
            const int n = Batchfile::OperandCount(lines.at(i));
            QStringList entry{lines.at(i)};
            for (int k = 1; k <= n && i + k < lines.size(); ++k)
                entry << lines.at(i + k);
            out << entry.join(QLatin1Char(' '));
            i += std::max(n, 0);
        }
        return out;
    }

    // Every file under the Target (Source) Dir, relative to it, sorted.
    QStringList targetFiles() const { return filesBelow(tgt()); }
    QStringList sourceFiles() const { return filesBelow(src()); }
    static QStringList filesBelow(const QString &dir)
    {
        QStringList out;
        QDirIterator it(dir, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            out << QDir(dir).relativeFilePath(it.next());
        out.sort();
        return out;
    }
};

} // namespace quillet::test

#pragma once

// A workspace on real folders and a real family database for the Save, Undo and review tests:
// Source Dir "src", Target Dir "tgt", journaling on, families listed by first name.
#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "lib/appstate.h"
#include "lib/fileutils.h"
#include "support/scriptedprompt.h"
#include "support/testenv.h"
#include "sync/batchfilejournal.h"
#include "workspace/allocationsave.h"
#include "workspace/workspace.h"

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
        WriteSetting(QStringLiteral("SrcDir"), src());
        WriteSetting(QStringLiteral("TgtDir"), tgt());
        WriteSetting(QStringLiteral("SrcDirInclSubs"), QStringLiteral("1"));
        WriteSetting(QStringLiteral("CreateBatchs"), QStringLiteral("1"));
        WriteSetting(QStringLiteral("PCname"), QStringLiteral("PC1"));
        WriteSetting(QStringLiteral("Thumbnails"), QStringLiteral("0"));
        WriteSetting(QStringLiteral("AutoReselPriv"), QStringLiteral("1"));
        Batchfile::InitBatchfile();
        appState().isPortableCopy = false;
        appState().systemLoaded = false;
        appState().cancel = false;
        ws = std::make_unique<Workspace>(db, PhotoServices::Default());
        ws->ReadSessionSettings();
        ws->options().thumbnails = false;
        ws->options().filterByDay = false;
        ws->CreateUndos();
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

    // A real JPEG in the Source Dir.
    void photo(const QString &name, QSize size = QSize(64, 48)) const
    {
        QDir().mkpath(QFileInfo(src(name)).absolutePath());
        QImage image(size, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        image.save(src(name), "JPG");
    }

    void family(int id, const QString &first, const QString &last) const
    {
        db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName, [Current]) VALUES (?,?,?,?)"),
                {id, first, last, true});
    }

    void privacyMarker() { db.WriteParam(QStringLiteral("WebAllowPriv"), 1); }

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

    // Every file under the Target Dir, relative to it.
    QStringList targetFiles() const
    {
        QStringList out;
        QDirIterator it(tgt(), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            out << QDir(tgt()).relativeFilePath(it.next());
        out.sort();
        return out;
    }

    QStringList sourceFiles() const
    {
        QStringList out;
        QDirIterator it(src(), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            out << QDir(src()).relativeFilePath(it.next());
        out.sort();
        return out;
    }
};

} // namespace quillet::test

#include "photooperations.h"

#include "clsundos.h"
#include "copytargets.h"
#include "workspace.h"

#include "app/settingsstore.h"
#include "imaging/rotatejpeg.h"
#include "lib/errorhandler.h"
#include "lib/fileutils.h"
#include "lib/userprompt.h"
#include "sync/batchfilejournal.h"

#include <QDir>
#include <QFileInfo>

namespace quillet {

PhotoOperations::PhotoOperations(Workspace &workspace)
    : m_ws(workspace)
{
}

QString PhotoOperations::PutAsideDir()
{
    return QDir::homePath() + QStringLiteral("/Temp/QLtemp/");
}

void PhotoOperations::journal(const char *opcode, const QString &pathFile) const
{
    if (ReadSetting(QStringLiteral("CreateBatchs")) != QLatin1String("1"))
        return;
    BatchfileWriter writer;
    writer.entry(opcode, {Batchfile::RelativePath(pathFile, ReadSetting(QStringLiteral("SrcDir")))});
}

bool PhotoOperations::RotateSelected(bool clockwise)
{
    SourceListModel &list = m_ws.sourceList();
    const QList<int> positions = list.selectedPositions();
    if (positions.isEmpty())
        return false;
    BusyPointer busy;
    UserPrompt &port = prompt();
    const bool progress = positions.size() > 2;
    if (progress) {
        port.progressShow(QStringLiteral("Reloading thumbnails..."));
        port.progressInit(int(positions.size()));
    }
    int done = 0;
    for (int position : positions) {
        const QString path = m_ws.srcFiles().row(list.at(position).row).PathFile;
        RotateJpeg(path, clockwise); // a file that is not a JPEG stays as it was
        if (m_ws.options().thumbnails) {
            const QImage thumbnail = m_ws.makeThumbnail(path);
            list.setThumbnail(position, thumbnail.isNull() ? m_ws.placeholder() : thumbnail);
        }
        journal(clockwise ? Batchfile::kRotateSourceRight : Batchfile::kRotateSourceLeft, path);
        ++done;
        if (progress)
            port.progressUpdate(done, done);
    }
    if (progress)
        port.progressHide();
    return true;
}

std::optional<int> PhotoOperations::DeleteSelected()
{
    if (m_ws.sourceList().selectedPositions().isEmpty()
        || !lib_MsgYesNo(QStringLiteral("Delete selected pictures (there is no built-in undo for this).  Are you sure?")))
        return std::nullopt;
    return removeSelected(Removal::Delete);
}

std::optional<int> PhotoOperations::PutAsideSelected()
{
    if (m_ws.sourceList().selectedPositions().isEmpty()
        || !lib_MsgYesNo(QStringLiteral("Move selected photos to temp folder ") + PutAsideDir()
                         + QStringLiteral(" (there is no built-in undo for this).") + QStringLiteral("  Are you sure?")))
        return std::nullopt;
    return removeSelected(Removal::PutAside);
}

int PhotoOperations::removeSelected(Removal how)
{
    BusyPointer busy;
    // A reviewed level is undone first, so what goes carries no tag and leaves no copies behind.
    clsUndos &undos = m_ws.undos();
    const int reviewed = undos.UndoLevelCurr();
    if (reviewed != 0)
        undos.UndoLastLevel(true);
    if (how == Removal::PutAside)
        lib_MakePath(PutAsideDir());

    SourceListModel &list = m_ws.sourceList();
    int firstRemoved = -1;
    for (int position = 0; position < list.rowCount(); ++position) {
        if (!list.at(position).selected)
            continue;
        if (firstRemoved < 0)
            firstRemoved = position;
        const QString path = m_ws.srcFiles().row(list.at(position).row).PathFile;
        if (how == Removal::Delete) {
            lib_KillFile(path);
            journal(Batchfile::kDeleteSource, path);
        } else {
            // An earlier photo of the same name set aside stays there beside this one.
            const QString target = CopyTargets::DistinctName(PutAsideDir() + QFileInfo(path).fileName());
            if (lib_CopyFile(path, target, true))
                lib_KillFile(path, true);
            journal(Batchfile::kMoveSource, path);
        }
        list.removeAt(position--);
        m_ws.ReportSourceCount();
    }
    if (reviewed != 0 && reviewed <= undos.UndoLevelMax())
        undos.ReviewUndoLevel(reviewed, false);
    else
        m_ws.ClearSelectedFamilies(); // the families were chosen for the photos that went
    undos.SaveToFile();
    if (list.rowCount() == 0 || firstRemoved < 0)
        return -1;
    return std::min(firstRemoved, list.rowCount() - 1);
}

} // namespace quillet

#include "portablecopyimport.h"

#include "batchfilejournal.h"
#include "batchfileprocessing.h"
#include "foreignpath.h"
#include "transferfolders.h"
#include "transfermove.h"
#include "transferrefusals.h"

#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/appstate.h"
#include "lib/debuglog.h"
#include "lib/errorhandler.h"
#include "lib/fileutils.h"
#include "lib/findfiles.h"
#include "lib/inifile.h"
#include "lib/texthelpers.h"
#include "lib/userprompt.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace quillet {

namespace {

bool sameBytes(const QString &a, const QString &b)
{
    QFile fa(a), fb(b);
    if (fa.size() != fb.size() || !fa.open(QIODevice::ReadOnly) || !fb.open(QIODevice::ReadOnly))
        return false;
    return fa.readAll() == fb.readAll();
}

// True when one of this PC's batchfiles holds exactly the device batchfile's text: an import cut
// off between the copy and the deletion of the original adopted it already.
bool alreadyAdopted(const QString &file, const QString &pcName)
{
    const QString pattern = QStringLiteral("_Batchfile_*_") + pcName + QStringLiteral(".log");
    for (const QFileInfo &own : QDir(AppPaths::dataDir()).entryInfoList({pattern}, QDir::Files)) {
        if (sameBytes(file, own.absoluteFilePath()))
            return true;
    }
    return false;
}

// The files directly in a device folder matching a pattern (links included, so that they can be
// refused by name).
QStringList filesIn(const QString &folder, const QString &pattern)
{
    QStringList out;
    for (const QFileInfo &info : QDir(folder).entryInfoList({pattern}, QDir::Files | QDir::System, QDir::Name))
        out << info.absoluteFilePath();
    return out;
}

} // namespace

PortableCopyImport::PortableCopyImport(std::function<void()> refresh, FamilyDatabase *db)
    : m_refresh(std::move(refresh))
    , m_db(db)
{
}

QString PortableCopyImport::DeviceSettingsFile(const QString &xfrDir)
{
    return lib_JoinPath(xfrDir, QLatin1String(AppPaths::kExeBase) + QStringLiteral(".ini"));
}

QString PortableCopyImport::AdoptedName(const QString &name, const QString &pcName, const QDateTime &now)
{
    const QRegularExpression taken(QStringLiteral("^_Batchfile_.{12}_") + QRegularExpression::escape(pcName)
                                       + QStringLiteral("\\.log$"),
                                   QRegularExpression::CaseInsensitiveOption);
    if (pcName.isEmpty() || !taken.match(name).hasMatch())
        return QString();
    const QString own = AppPaths::dataFile(name);
    if (!QFileInfo::exists(own) && own.compare(Batchfile::CurrentName(pcName), Qt::CaseInsensitive) != 0)
        return own;
    // Both journals survive: the adopted one takes the next free closing stamp, later than every
    // batchfile this PC has closed, so the replay on the other PCs keeps their order.
    QDateTime when = now;
    while (QFileInfo::exists(Batchfile::ClosedName(pcName, when)))
        when = when.addSecs(1);
    return Batchfile::ClosedName(pcName, when);
}

QString PortableCopyImport::ImportFromPortableCopy()
{
    const QString xfr = ReadSetting(QStringLiteral("PortableCopyXfrDir"));
    const QString srcDir = ReadSetting(QStringLiteral("SrcDir"));
    if (xfr.isEmpty())
        return QString();
    const QString ini = DeviceSettingsFile(xfr);
    if (!QFileInfo(ini).isFile()) {
        lib_MsgWarning(QStringLiteral("Can not see any Portable Copy device\r\n(looking for INI file at Portable Copy "
                                      "transfer dir as specified in Settings) ie. ")
                       + ini + QStringLiteral(")"));
        return QString();
    }
    if (!lib_MsgYesNo(QStringLiteral("Portable Copy device found. Do you want to import its files & batchfiles?")))
        return QString();
    const QString folder = originalsFolder(xfr, ini);
    if (folder.isEmpty())
        return QString();
    if (!TransferFolders::AskImportFiles(folder, srcDir))
        return QString();
    if (!lib_DirExists(folder)) {
        lib_MsgWarning(QStringLiteral("Portable Copy Source Dir (") + folder + QStringLiteral(") does not exist"));
        return QString();
    }
    if (!TransferFolders::SourceDirExists(srcDir))
        return QString();
    BusyPointer busy;
    QSet<QString> movedNames;
    const int moved = moveOriginals(folder, srcDir, movedNames);
    const int adopted = adoptBatchfiles(xfr, movedNames);
    if (moved + adopted > 0 && m_refresh)
        m_refresh();
    deleteUndoFiles(xfr);
    const QString text = lib_FormatCount(moved, QStringLiteral("file")) + QStringLiteral(" imported");
    lib_MsgInfo(text);
    return text;
}

QString PortableCopyImport::originalsFolder(const QString &xfrDir, const QString &deviceIni)
{
    // Read as the portable copy reads it: its administrator file (beside its settings file) wins.
    const QString key = QStringLiteral("PortCopyOrigCopyDir");
    const QString adminIni = lib_JoinPath(xfrDir, QLatin1String(AppPaths::kExeBase) + QStringLiteral("P.ini"));
    QString value = IniFile::read(adminIni, QStringLiteral("Settings"), key);
    if (value.trimmed().isEmpty())
        value = IniFile::read(deviceIni, QStringLiteral("Settings"), key);
    // A relative value is relative to the device's own folder, where its settings file lies.
    const QString folder = QDir::cleanPath(ResolveRelativeDir(value.trimmed(), xfrDir));
    // The folder named by the device must be on the device: a settings file that names one of
    // this PC's folders would otherwise have its files moved into the Source Dir.
    QString device = lib_DrivePart(xfrDir);
    if (device.isEmpty() || device == QLatin1String("/"))
        device = lib_DirPart(QDir::cleanPath(xfrDir));
    const QString mine[] = {ReadSetting(QStringLiteral("SrcDir")), ReadSetting(QStringLiteral("TgtDir")),
                            AppPaths::dataDir()};
    bool ownFolder = false;
    for (const QString &own : mine)
        ownFolder = ownFolder || (!own.isEmpty() && lib_DirExists(own) && ForeignPath::isInside(own, folder));
    const bool onDevice = lib_DirExists(device) && ForeignPath::isInside(device, folder);
    if (value.trimmed().isEmpty() || ownFolder || !onDevice) {
        lib_MsgWarning(QStringLiteral("The Portable Copy device's settings name the folder ") + folder
                       + QStringLiteral(" for its photos, which is not on the device (") + device
                       + QStringLiteral("). Nothing was imported. Please check the setting PortCopyOrigCopyDir in ")
                       + deviceIni);
        return QString();
    }
    return folder;
}

int PortableCopyImport::moveOriginals(const QString &folder, const QString &srcDir, QSet<QString> &movedNames)
{
    // The folder's own files only, moved flat into the Source Dir.
    const QStringList files = filesIn(folder, QStringLiteral("*"));
    UserPrompt &port = prompt();
    appState().cancel = false;
    port.progressShow(QStringLiteral("Importing from Portable Copy device..."));
    port.progressInit(int(files.size()));
    TransferRefusals refused;
    int moved = 0;
    for (int i = 0; i < files.size() && !appState().cancel; ++i) {
        const QString &file = files.at(i);
        const ForeignPath target = ForeignPath::resolve(srcDir, lib_FilePart(file));
        QString problem = target.ok() ? TransferNameProblem(target.path()) : target.refusal();
        if (problem.isEmpty() && QFileInfo(file).isSymLink())
            problem = QStringLiteral("it is a link to another place");
        try {
            if (problem.isEmpty()) {
                TransferMoveFile(file, target.path());
                movedNames.insert(lib_FilePart(file).toLower());
                ++moved;
            }
        } catch (const Error &e) {
            problem = e.description().section(QStringLiteral("\r\n"), 1, 1);
        }
        if (!problem.isEmpty())
            refused.add(file, problem);
        port.progressUpdate(i + 1, i + 1);
    }
    port.progressHide();
    refused.report(folder);
    return moved;
}

int PortableCopyImport::adoptBatchfiles(const QString &xfrDir, const QSet<QString> &movedNames)
{
    const QString pcName = ReadSetting(QStringLiteral("PCname"));
    TransferRefusals refused;
    QStringList taken;
    for (const QString &file : filesIn(xfrDir, QStringLiteral("_Batchfile_*.log"))) {
        if (AdoptedName(lib_FilePart(file), pcName, QDateTime::currentDateTime()).isEmpty())
            continue; // another PC's journal stays on the device
        if (QFileInfo(file).isSymLink()) {
            refused.add(file, QStringLiteral("it is a link to another place"));
            continue;
        }
        taken << file;
    }
    // Carried out here first, then taken over: an import cut off in between carries a journal out
    // again (its done copy keeps the rotations from being made twice) but never loses one.
    // Adopted before by an import that was cut off after its copy: the journal is here already,
    // and was carried out before that copy was made.
    QStringList toCarryOut;
    for (const QString &file : std::as_const(taken)) {
        if (!alreadyAdopted(file, pcName))
            toCarryOut << file;
    }
    // A run stopped by the user leaves the journals it did not finish on the device, to be carried
    // out by the next import (the malformed ones it could not carry out go on as they are).
    QStringList left;
    if (!toCarryOut.isEmpty())
        left = BatchfileProcessing(m_db).ReplayAdopted(toCarryOut, movedNames);
    if (!left.isEmpty()) {
        lib_MsgWarning(QStringLiteral("The import was stopped. ") + lib_FormatCount(int(left.size()), QStringLiteral("batchfile"))
                       + QStringLiteral(" of the Portable Copy stayed on the device (") + xfrDir
                       + QStringLiteral("). Choose Import From Portable Copy again to finish."));
    }
    int adopted = 0;
    for (const QString &file : std::as_const(taken)) {
        if (left.contains(file))
            continue;
        try {
            if (alreadyAdopted(file, pcName)) {
                lib_KillFile(file, true);
            } else {
                const QString target = AdoptedName(lib_FilePart(file), pcName, QDateTime::currentDateTime());
                TransferMoveFile(file, target);
                DebugLog(QStringLiteral("Adopted batchfile ") + file + QStringLiteral(" as ") + target);
            }
            ++adopted;
        } catch (const Error &e) {
            refused.add(file, e.description().section(QStringLiteral("\r\n"), 1, 1));
        }
    }
    refused.report(xfrDir);
    return adopted;
}

void PortableCopyImport::deleteUndoFiles(const QString &xfrDir)
{
    for (const QString &file : filesIn(xfrDir, QStringLiteral("_Undos_*.log"))) {
        try {
            lib_KillFile(file);
        } catch (const Error &e) {
            lib_ErrorHandler(QStringLiteral("mnuImportFromPortableCopy_Click()"), e, false);
        }
    }
}

} // namespace quillet

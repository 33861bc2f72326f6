#include "batchfilereplay.h"

#include "batchfilejournal.h"
#include "foreignpath.h"

#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "imaging/copyresizedimage.h"
#include "imaging/rotatejpeg.h"
#include "lib/appstate.h"
#include "lib/debuglog.h"
#include "lib/error.h"
#include "lib/fileutils.h"
#include "lib/userprompt.h"
#include "workspace/photooperations.h"

#include <QDir>
#include <QFileInfo>
#include <QSqlRecord>

namespace quillet {

namespace {

const QString kSourceNotFound = QStringLiteral("source file not found");
const QString kOk = QStringLiteral("ok");
const QString kIgnoredBatchOnly = QStringLiteral("ignored, BatchOnly is set");
const QString kRotateFailed = QStringLiteral("failed to rotate file");

// An operand as it may be shown in the debug log: control characters written as \xNN.
QString printable(const QString &text)
{
    QString out;
    for (const QChar c : text.left(300)) {
        if (c.unicode() < 0x20 || c.unicode() == 0x7f)
            out += QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0'));
        else
            out += c;
    }
    return text.size() > 300 ? out + QStringLiteral("...") : out;
}

bool isSourceFile(const QString &path)
{
    return QFileInfo(path).isFile();
}

// Runs a library file operation whose failure is a result line rather than an error report.
template<typename F>
bool attempt(F &&operation)
{
    try {
        return operation();
    } catch (const Error &) {
        return false;
    }
}

// The ".~NN" temporaries an interrupted copy to `target` may have left (see lib_CopyFile).
void removeStaleCopyTemporaries(const QString &target)
{
    const QString stem = lib_PathWithoutExt(target) + QStringLiteral(".~");
    for (int n = 0; n < 100; ++n) {
        const QString temp = stem + QString::number(n).rightJustified(2, QLatin1Char('0'));
        if (QFileInfo(temp).isFile())
            QFile::remove(temp);
    }
}

} // namespace

ReplaySettings ReplaySettings::read(FamilyDatabase *db)
{
    ReplaySettings s;
    s.srcDir = ReadSetting(QStringLiteral("SrcDir"));
    s.tgtDir = ReadSetting(QStringLiteral("TgtDir"));
    s.pcName = ReadSetting(QStringLiteral("PCname"));
    s.batchOnly = ReadSettingBool(QStringLiteral("BatchOnly"));
    s.targetResize = ReadSettingBool(QStringLiteral("TargetResize"));
    s.resizeMD = qint16(ReadSettingInt(QStringLiteral("TargetResizeMD")));
    s.resizeQ = qint16(ReadSettingInt(QStringLiteral("TargetResizeQ")));
    const int excluded = ReadSettingInt(QStringLiteral("ResizeExclFam"));
    if (excluded > 0 && db && db->isOpen()) {
        const QList<QSqlRecord> rows =
            db->select(QStringLiteral("SELECT * FROM tblFamilies WHERE FamilyID=") + QString::number(excluded));
        if (!rows.isEmpty()) {
            s.excludedFolder = rows.first().value(QStringLiteral("FirstName")).toString();
            const QVariant last = rows.first().value(QStringLiteral("LastName"));
            if (!last.isNull())
                s.excludedFolder += QLatin1Char(' ') + last.toString();
        }
    }
    return s;
}

BatchfileReplay::BatchfileReplay(const ReplaySettings &settings, ReplayOutcome &outcome)
    : m_settings(settings)
    , m_outcome(outcome)
    , m_srcBase(settings.srcDir)
    , m_tgtBase(settings.tgtDir)
{
}

bool BatchfileReplay::isRotationDoneResult(const QString &line)
{
    const QString head = line.left(11);
    return head == QLatin1String("Results: ok") || head == QLatin1String("Results: sk");
}

bool BatchfileReplay::run(const BatchfileContent &content, QFile &done)
{
    const QByteArray header = content.srcDir.toUtf8() + "\r\n" + content.tgtDir.toUtf8() + "\r\n"
        + BatchfileReader::countPrefix().toUtf8() + QByteArray::number(content.processedCount + 1) + "\r\n";
    done.write(header);
    done.flush();
    UserPrompt &port = prompt();
    appState().cancel = false;
    int operationsDone = 0;
    for (const BatchfileEntry &entry : content.entries) {
        if (appState().cancel)
            return false;
        const bool rotationDone = m_rotationsDone.contains(operationsDone)
            || (entry.lineAfter && isRotationDoneResult(*entry.lineAfter));
        const QString result = apply(entry, rotationDone);
        // The entry goes on record with its result as soon as it is carried out, so a run that
        // is killed leaves a done copy that tells the next run which rotations took place.
        QByteArray lines = entry.opcode.toUtf8() + "\r\n";
        for (const QByteArray &raw : entry.rawOperands)
            lines += raw + "\r\n";
        done.write(lines + "Results: " + result.toUtf8() + "\r\n");
        done.flush();
        record(result, done.fileName());
        ++operationsDone;
        port.progressUpdate(operationsDone, operationsDone);
    }
    return true;
}

void BatchfileReplay::record(const QString &result, const QString &donePath)
{
    if (result == kSourceNotFound) {
        if (m_outcome.notFound.size() < ReplayOutcome::kMaxListed)
            m_outcome.notFound << donePath;
    } else if (result.startsWith(QLatin1String("failed")) && result != kRotateFailed) {
        m_outcome.noErrors = false;
        if (m_outcome.failures.size() < ReplayOutcome::kMaxListed)
            m_outcome.failures << donePath;
    }
}

QString BatchfileReplay::resolve(const BatchfileEntry &entry, int index, ForeignBase &base, QString &refusal)
{
    const QString operand = entry.operands.value(index);
    const ForeignPath path = base.resolve(operand);
    QString why = entry.defect.isEmpty() ? path.refusal() : entry.defect;
    if (why.isEmpty())
        return path.path();
    DebugLog(QStringLiteral("   Refused operand \"") + printable(operand) + QStringLiteral("\" of ") + entry.opcode
             + QStringLiteral(" on line ") + QString::number(entry.lineNumber) + QStringLiteral(": ") + why);
    refusal = QStringLiteral("failed, path refused (") + why + QLatin1Char(')');
    return QString();
}

QString BatchfileReplay::apply(const BatchfileEntry &entry, bool rotationDone)
{
    const QString &op = entry.opcode;
    const auto is = [&op](const char *opcode) { return op == QLatin1String(opcode); };
    if (m_settings.batchOnly && (is(Batchfile::kCopySource) || is(Batchfile::kDeleteTargetFile)))
        return kIgnoredBatchOnly;
    // Every operand is resolved under its base folder before anything is touched: a CS target and
    // every operand of DTD, DTF and NTD under the Target Dir, the rest under the Source Dir (an NS
    // new name is checked as written there; its name part is placed beside the photo later).
    const bool targetOps = is(Batchfile::kDeleteTargetDir) || is(Batchfile::kDeleteTargetFile)
        || is(Batchfile::kRenameTargetDir);
    QStringList paths;
    for (int i = 0; i < entry.operands.size(); ++i) {
        const bool underTarget = targetOps || (is(Batchfile::kCopySource) && i == 1);
        QString refusal;
        paths << resolve(entry, i, underTarget ? m_tgtBase : m_srcBase, refusal);
        if (!refusal.isEmpty())
            return refusal;
    }
    if (is(Batchfile::kCopySource))
        return copySource(entry, paths.at(0), paths.at(1));
    if (is(Batchfile::kRenameSource))
        return renameSource(entry, paths.at(0));
    if (is(Batchfile::kDeleteSource))
        return deleteSource(paths.at(0));
    if (is(Batchfile::kMoveSource))
        return moveSource(paths.at(0));
    if (is(Batchfile::kRotateSourceLeft) || is(Batchfile::kRotateSourceRight))
        return rotateSource(paths.at(0), is(Batchfile::kRotateSourceRight), rotationDone);
    if (is(Batchfile::kDeleteTargetDir))
        return attempt([&] { return lib_DeleteDir(paths.at(0), false); }) ? kOk : QStringLiteral("failed to delete dir");
    if (is(Batchfile::kDeleteTargetFile))
        return deleteTargetFile(paths.at(0));
    if (is(Batchfile::kRenameTargetDir))
        return renameTargetDir(paths.at(0), paths.at(1));
    return QStringLiteral("failed, unknown opcode");
}

QString BatchfileReplay::copySource(const BatchfileEntry &entry, const QString &src, const QString &target)
{
    if (!isSourceFile(src))
        return kSourceNotFound;
    if (!lib_MakePath(lib_DirPart(target)))
        return QStringLiteral("failed to make tgt dir");
    if (QFileInfo(target).isDir())
        return QStringLiteral("failed to copy file"); // never replace a folder by a photo
    if (m_resumed)
        removeStaleCopyTemporaries(target);
    QString familyFolder = entry.operands.value(1);
    familyFolder.replace(QLatin1Char('/'), QLatin1Char('\\'));
    familyFolder = familyFolder.section(QLatin1Char('\\'), 0, 0);
    bool copied = false;
    if (m_settings.targetResize && familyFolder != m_settings.excludedFolder)
        copied = CopyResizedImage(src, target, m_settings.resizeMD, m_settings.resizeQ);
    else
        copied = attempt([&] { return lib_CopyFile(src, target, true); });
    return copied ? kOk : QStringLiteral("failed to copy file");
}

QString BatchfileReplay::renameSource(const BatchfileEntry &entry, const QString &src)
{
    // The new name's file-name part, in the source photo's own folder.
    QString newName = entry.operands.value(1);
    newName.replace(QLatin1Char('/'), QLatin1Char('\\'));
    newName = newName.section(QLatin1Char('\\'), -1);
    QString sourceRelative = entry.operands.value(0);
    sourceRelative.replace(QLatin1Char('/'), QLatin1Char('\\'));
    const int cut = sourceRelative.lastIndexOf(QLatin1Char('\\'));
    BatchfileEntry renamed = entry;
    renamed.operands[1] = cut < 0 ? newName : sourceRelative.left(cut + 1) + newName;
    QString refusal;
    const QString target = resolve(renamed, 1, m_srcBase, refusal);
    if (!refusal.isEmpty())
        return refusal;
    if (!isSourceFile(src))
        return kSourceNotFound;
    if (target == src)
        return kOk; // nothing to do; the "new name exists" rule below would delete the photo
    if (QFile::rename(src, target))
        return kOk;
    // Renamed earlier by another route: the photo is there under its new name already.
    if (QFileInfo(target).isFile() && attempt([&] { return lib_KillFile(src, true); }))
        return kOk;
    return QStringLiteral("failed to rename file");
}

QString BatchfileReplay::deleteSource(const QString &src)
{
    if (QFileInfo(src).isDir())
        return QStringLiteral("failed to delete file");
    return attempt([&] { return lib_KillFile(src); }) ? kOk : QStringLiteral("failed to delete file");
}

QString BatchfileReplay::moveSource(const QString &src)
{
    const QString putAside = PhotoOperations::PutAsideDir();
    lib_MakePath(putAside);
    const QString destination = putAside + QFileInfo(src).fileName();
    if (!isSourceFile(src))
        return kSourceNotFound;
    if (m_settings.targetResize) {
        if (!CopyResizedImage(src, destination, m_settings.resizeMD, m_settings.resizeQ))
            return QStringLiteral("failed to move (with resize) file");
        attempt([&] { return lib_KillFile(src); });
        return kOk;
    }
    const bool moved = attempt([&] { return lib_CopyFile(src, destination, true) && lib_KillFile(src, true); });
    return moved ? kOk : QStringLiteral("failed to move file");
}

QString BatchfileReplay::rotateSource(const QString &src, bool clockwise, bool rotationDone)
{
    if (!isSourceFile(src))
        return kSourceNotFound;
    if (rotationDone)
        return QStringLiteral("skipped, already rotated");
    return RotateJpeg(src, clockwise) ? kOk : kRotateFailed;
}

QString BatchfileReplay::deleteTargetFile(const QString &file)
{
    if (QFileInfo(file).isDir())
        return QStringLiteral("failed to delete file");
    return attempt([&] { return lib_KillFile(file, true); }) ? kOk : QStringLiteral("failed to delete file");
}

QString BatchfileReplay::renameTargetDir(const QString &from, const QString &to)
{
    // Never onto an existing name: a rename that replaced an empty folder would hide the mistake.
    if (QFileInfo::exists(to) || !QDir().rename(from, to))
        return QStringLiteral("failed to rename dir");
    return kOk;
}

} // namespace quillet

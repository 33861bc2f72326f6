#include "batchfilejournal.h"

#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/debuglog.h"
#include "lib/error.h"
#include "lib/errorhandler.h"
#include "lib/deferredsync.h"
#include "lib/fileutils.h"

#include <QDateTime>
#include <QFileInfo>

#include <unistd.h>

namespace quillet::Batchfile {

namespace {

QString g_currentPath;

} // namespace

int OperandCount(const QString &line)
{
    static const QHash<QString, int> counts = {
        {QStringLiteral("CS"), 2},  {QStringLiteral("NS"), 2},  {QStringLiteral("DS"), 1},
        {QStringLiteral("MS"), 1},  {QStringLiteral("RSL"), 1}, {QStringLiteral("RSR"), 1},
        {QStringLiteral("DTD"), 1}, {QStringLiteral("DTF"), 1}, {QStringLiteral("NTD"), 2},
    };
    return counts.value(line, -1);
}

QString CurrentName(const QString &pcName)
{
    return AppPaths::dataFile(QStringLiteral("_Batchfile_999999999999_") + pcName + QStringLiteral(".log"));
}

QString ClosedName(const QString &pcName, const QDateTime &when)
{
    return AppPaths::dataFile(QStringLiteral("_Batchfile_") + when.toString(QStringLiteral("yyMMddHHmmss"))
                              + QLatin1Char('_') + pcName + QStringLiteral(".log"));
}

QString CurrentPath()
{
    return g_currentPath;
}

void SetCurrentPath(const QString &path)
{
    g_currentPath = path;
}

void SetBatchfileName(bool closeCurrent)
{
    const QString pcName = ReadSetting(QStringLiteral("PCname"));
    const QString current = CurrentName(pcName);
    if (closeCurrent && QFileInfo::exists(current)) {
        const QString closed = ClosedName(pcName, QDateTime::currentDateTime());
        if (!QFileInfo::exists(closed))
            QFile::rename(current, closed);
    }
    g_currentPath = current;
}

int CountLines(const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return 0;
    int lines = 0;
    char last = '\n';
    QByteArray chunk;
    while (!(chunk = f.read(1 << 16)).isEmpty()) {
        lines += int(chunk.count('\n'));
        last = chunk.back();
    }
    return last == '\n' ? lines : lines + 1;
}

void InitBatchfile(const std::function<void()> &processBatchfiles)
{
    lib_Stopwatch(1);
    try {
        g_currentPath.clear();
        if (ReadSetting(QStringLiteral("CreateBatchs")) == QLatin1String("1")) {
            SetBatchfileName(false);
            const bool foldersSet = !ReadSetting(QStringLiteral("SrcDir")).isEmpty()
                && !ReadSetting(QStringLiteral("TgtDir")).isEmpty();
            if (foldersSet && QFileInfo::exists(g_currentPath) && CountLines(g_currentPath) > 2500) {
                lib_Stopwatch(2); // the time spent on the questions is the user's, not the procedure's
                if (!lib_MsgYesNo(QStringLiteral("There are a large number of entries in the current batchfile.  "
                                                 "Are you sure that you intended the batch feature to be on?"))
                    && lib_MsgYesNo(QStringLiteral("Shall I turn the feature off and delete the current batchfile?"))) {
                    WriteSetting(QStringLiteral("CreateBatchs"), QStringLiteral("0"));
                    lib_KillFile(g_currentPath);
                    g_currentPath.clear();
                }
                lib_Stopwatch(3);
            }
        }
    } catch (const Error &e) {
        lib_ErrorHandler(QStringLiteral("InitBatchfile"), e);
    }
    DebugLogTiming(QStringLiteral("InitBatchfile"));
    if (processBatchfiles)
        processBatchfiles();
}

QString RelativePath(const QString &fullPath, const QString &baseDir)
{
    QString base = baseDir;
    while (base.size() > 1 && base.endsWith(QLatin1Char('/')))
        base.chop(1);
    QString relative = fullPath.mid(base.size() + 1);
    return relative.replace(QLatin1Char('/'), QLatin1Char('\\'));
}

QString NativePath(const QString &baseDir, const QString &relative)
{
    QString r = relative;
    return lib_JoinPath(baseDir, r.replace(QLatin1Char('\\'), QLatin1Char('/')));
}

} // namespace quillet::Batchfile

namespace quillet {

BatchfileWriter::BatchfileWriter()
{
    const QString path = Batchfile::CurrentPath();
    if (path.isEmpty())
        throw Error(kLibErrorNumber, QStringLiteral("OpenBatchfileForAppend"),
                    QStringLiteral("No current batchfile: batchfiles are turned off"));
    const bool isNew = !QFileInfo::exists(path);
    m_file.setFileName(path);
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Append))
        throw Error(kErrPathFileAccess, QStringLiteral("OpenBatchfileForAppend"),
                    m_file.errorString() + QStringLiteral("\r\nFile:") + path);
    if (isNew) {
        const QString header = ReadSetting(QStringLiteral("SrcDir")) + QStringLiteral("\r\n")
            + ReadSetting(QStringLiteral("TgtDir")) + QStringLiteral("\r\nNumber of times processed: 0\r\n");
        m_file.write(header.toUtf8());
        m_file.flush();
    }
}

BatchfileWriter::~BatchfileWriter()
{
    close();
}

void BatchfileWriter::entry(const char *opcode, const QStringList &operands)
{
    QByteArray lines = QByteArray(opcode) + "\r\n";
    for (const QString &operand : operands)
        lines += operand.toUtf8() + "\r\n";
    if (m_file.write(lines) != lines.size() || !m_file.flush())
        throw Error(kErrPathFileAccess, QStringLiteral("OpenBatchfileForAppend"),
                    m_file.errorString() + QStringLiteral("\r\nFile:") + m_file.fileName());
    if (DeferredSync::active())
        DeferredSync::note(m_file.fileName());
    else
        ::fsync(m_file.handle());
}

void BatchfileWriter::close()
{
    if (m_file.isOpen())
        m_file.close();
}

} // namespace quillet

#include "fileutils.h"

#include "deferredsync.h"

#include "appstate.h"
#include "error.h"
#include "errorhandler.h"
#include "findfiles.h"
#include "userprompt.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QThread>

#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillet {

namespace {

QString libSource(const char *routine)
{
    return QStringLiteral("Lib09.") + QLatin1String(routine);
}

// Qt puts trashed files below the data location; on a fresh account that folder may not exist yet,
// and without it the trash would be made in the current folder.
void ensureTrashHome()
{
    QDir().mkpath(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
}

bool removeOnce(const QString &path, bool permanently)
{
    if (!permanently) {
        ensureTrashHome();
        QFile trashed(path);
        if (trashed.moveToTrash())
            return true;
        // The volume has no trash (a USB disk mounted without one, a read-only home): delete.
    }
    return QFile::remove(path);
}

bool isDrivePath(const QString &path)
{
    static const QRegularExpression drive(QStringLiteral("^[A-Za-z]:"));
    return drive.match(path).hasMatch();
}

bool isNetworkPath(const QString &path)
{
    return path.startsWith(QLatin1String("\\\\")) || path.startsWith(QLatin1String("//"));
}

} // namespace

bool lib_KillFile(const QString &path, bool permanently)
{
    QFileInfo info(path);
    if (!info.exists() && !info.isSymLink())
        return true;
    if (removeOnce(path, permanently))
        return true;
    // A write-protected file: make it writable and try again, as a user would in a file manager.
    QFile::setPermissions(path, QFile::permissions(path) | QFileDevice::WriteOwner);
    if (!QFileInfo::exists(path))
        return true;
    if (!lib_IsFileLocked(path) && removeOnce(path, permanently))
        return true;
    if (!QFileInfo::exists(path))
        return true;
    throw Error(kErrPathFileAccess, libSource("lib_KillFile"),
                QStringLiteral("Path/File access error\r\nFile:") + path);
}

bool lib_MakePath(const QString &path)
{
    QString p = path.trimmed();
    if (p.size() >= 2 && p.startsWith(QLatin1Char('"')) && p.endsWith(QLatin1Char('"')))
        p = p.mid(1, p.size() - 2);
    if (p.isEmpty())
        return false;
    BusyPointer busy;
    if (QDir().mkpath(p))
        return true;
    // The system's reason, for the caller's message (a read-only disk, no space, no permission).
    const int error = errno;
    if (QFileInfo(p).isDir())
        return true;
    appState().lastSystemError = QString::fromLocal8Bit(std::strerror(error));
    return false;
}

namespace {

// The hundred temporary names of a copy to `target` ("x.~00" to "x.~99" for "x.jpg"), from a
// random one on. at(i) is empty where the name is the source or the target itself, which may be
// of that form too.
class TempNames
{
public:
    static constexpr int kCount = 100;

    TempNames(const QString &target, const QString &source)
        : m_stem(lib_PathWithoutExt(target) + QStringLiteral(".~"))
        , m_sourceAbs(QFileInfo(source).absoluteFilePath())
        , m_targetAbs(QFileInfo(target).absoluteFilePath())
        , m_start(QRandomGenerator::global()->bounded(kCount))
    {
    }
    QString at(int i) const
    {
        const QString name = m_stem + QString::number((m_start + i) % kCount).rightJustified(2, QLatin1Char('0'));
        const QString nameAbs = QFileInfo(name).absoluteFilePath();
        return nameAbs == m_sourceAbs || nameAbs == m_targetAbs ? QString() : name;
    }

private:
    QString m_stem;
    QString m_sourceAbs;
    QString m_targetAbs;
    int m_start;
};

} // namespace

QString lib_TempCopyName(const QString &target, const QString &source)
{
    const TempNames names(target, source);
    for (int i = 0; i < TempNames::kCount; ++i) {
        const QString name = names.at(i);
        if (!name.isEmpty() && !QFileInfo::exists(name))
            return name;
    }
    throw Error(kLibErrorNumber, libSource("lib_CopyFile"),
                QStringLiteral("Failed to copy file\r\nNo free temporary name for ") + target);
}

namespace {

// The system's reason for the failure that just happened on `file` ("No space left on device"),
// which Qt does not always carry into its own error text.
QString systemReason(const QFileDevice &file)
{
    const int error = errno;
    return error != 0 ? QString::fromLocal8Bit(std::strerror(error)) : file.errorString();
}

// Flushes the copy and reads the source's access and modification times as they are once it
// has been read, for the target.
QString finishCopy(QFile &in, QFile &out, const QString &temp, timespec dates[2])
{
    struct stat st {};
    if (::fstat(in.handle(), &st) != 0)
        return QString::fromLocal8Bit(std::strerror(errno));
    dates[0] = st.st_atim;
    dates[1] = st.st_mtim;
    errno = 0;
    if (!out.flush())
        return systemReason(out);
    if (DeferredSync::active())
        DeferredSync::note(temp);
    else if (::fsync(out.handle()) != 0)
        return QString::fromLocal8Bit(std::strerror(errno));
    return QString();
}

// The blocks of a copy made by hand. One buffer per thread: a run of copies allocates (and
// faults in) its pages once, not once per file.
constexpr qint64 kCopyBlock = 1 << 20;
// The blocks of a copy whose bytes go to a sink: small enough to stay in the processor's cache
// while the sink and the write both read them (a mapping of the source instead of the reading
// measured slower: setting up and tearing down the pages costs more than the copy it saves).
constexpr qint64 kSinkBlock = 256 * 1024;

char *copyBuffer()
{
    thread_local const std::unique_ptr<char[]> buffer(new char[kCopyBlock]);
    return buffer.get();
}

// Creates the temporary of a copy to `target` under a name no file has yet: another copy (on
// another thread or in another program) may be choosing one in the same folder at this moment.
// `temp` receives the name once the file is created. Unbuffered: the bytes go out in large blocks
// anyway, and a failed write then carries the system's reason (a full disk) rather than a
// buffered flush's "Unknown error".
QString createTemp(QFile &out, const QString &target, const QString &source, QString &temp)
{
    const TempNames names(target, source);
    for (int i = 0; i < TempNames::kCount; ++i) {
        const QString name = names.at(i);
        if (name.isEmpty())
            continue;
        out.setFileName(name);
        if (out.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
            temp = name;
            return QString();
        }
        const QFileInfo taken(name);
        if (!taken.exists() && !taken.isSymLink())
            return out.errorString();
    }
    return QStringLiteral("No free temporary name for ") + target;
}

// Copies the bytes and flushes them to the disk, so that after the rename the target is complete
// even if the machine stops. Returns an empty text on success, else the system's reason. `dates`
// receives the source's access and modification times.
QString copyBytes(const QString &source, const QString &target, QString &temp, const CopyProgress &progress,
                  qint64 &done, timespec dates[2])
{
    QFile in(source);
    if (!in.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return in.errorString();
    QFile out;
    if (const QString failure = createTemp(out, target, source, temp); !failure.isEmpty())
        return failure;
    auto finish = [&]() { return finishCopy(in, out, temp, dates); };
    const qint64 total = in.size();
    done = 0;
    if (!progress) {
        // In the kernel, without a trip through this process (and as a reflink where the file
        // system can share blocks).
        while (done < total) {
            const ssize_t n = ::copy_file_range(in.handle(), nullptr, out.handle(), nullptr, size_t(total - done), 0);
            if (n <= 0)
                break;
            done += n;
        }
        if (done == total)
            return finish();
        // Not possible here (another file system, an old kernel): copy the rest by hand.
        in.seek(done);
        out.seek(done);
    }
    char *const buffer = copyBuffer();
    for (;;) {
        const qint64 n = in.read(buffer, kCopyBlock);
        if (n < 0)
            return in.errorString();
        if (n == 0)
            break;
        errno = 0;
        if (out.write(buffer, n) != n)
            return systemReason(out);
        done += n;
        if (progress && !progress(done, total))
            return QStringLiteral("Copy cancelled");
    }
    if (done != total)
        return QStringLiteral("The file changed size while it was copied");
    return finish();
}

// copyBytes past a sink. The first block is read before the temporary is created: a source that
// cannot be read leaves nothing behind.
QString copyBytesThrough(const QString &source, const QString &target, QString &temp, CopySink &sink, qint64 &done,
                         timespec dates[2])
{
    QFile in(source);
    if (!in.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return in.errorString();
    const qint64 total = in.size();
    char *const buffer = copyBuffer();
    done = 0;
    qint64 n = in.read(buffer, kSinkBlock);
    if (n < 0)
        return in.errorString();
    if (n > 0)
        sink.take(buffer, n);
    QFile out;
    if (const QString failure = createTemp(out, target, source, temp); !failure.isEmpty())
        return failure;
    while (n > 0) {
        errno = 0;
        if (out.write(buffer, n) != n)
            return systemReason(out);
        done += n;
        n = in.read(buffer, kSinkBlock);
        if (n < 0)
            return in.errorString();
        if (n > 0)
            sink.take(buffer, n);
    }
    // Read to its end: a source that grew or shrank on the way gives no copy.
    if (done != total)
        return QStringLiteral("The file changed size while it was copied");
    return finishCopy(in, out, temp, dates);
}

// One copy; `size` receives its size.
bool copyOne(const QString &source, const QString &targetIn, bool overwrite, const CopyProgress &progress,
             CopySink *sink = nullptr, qint64 *size = nullptr)
{
    const QString target = targetIn.endsWith(QLatin1Char('/'))
        ? targetIn + QFileInfo(source).fileName() : targetIn;
    if (QFileInfo(source).absoluteFilePath() == QFileInfo(target).absoluteFilePath())
        return false;
    if (!overwrite && QFileInfo::exists(target))
        return false;

    QString temp;
    qint64 copied = 0;
    timespec dates[2] {};
    const QString failure = sink ? copyBytesThrough(source, target, temp, *sink, copied, dates)
                                 : copyBytes(source, target, temp, progress, copied, dates);
    if (!failure.isEmpty()) {
        if (!temp.isEmpty())
            QFile::remove(temp);
        throw Error(kLibErrorNumber, libSource("lib_CopyFile"),
                    QStringLiteral("Failed to copy file\r\n") + failure + QStringLiteral("\r\nSrc=") + source
                        + QStringLiteral("\r\nTgt=") + (temp.isEmpty() ? target : temp));
    }
    bool removed = false;
    try {
        removed = lib_KillFile(target);
    } catch (const Error &) {
        removed = false;
    }
    if (!removed) {
        QFile::remove(temp);
        throw Error(kLibErrorNumber, libSource("lib_CopyFile"),
                    QStringLiteral("Failed to copy file\r\nCould not delete existing target file"));
    }
    const QByteArray targetName = QFile::encodeName(target);
    const bool renamed = ::rename(QFile::encodeName(temp).constData(), targetName.constData()) == 0;
    if (!renamed) {
        const QString reason = QString::fromLocal8Bit(std::strerror(errno));
        QFile::remove(temp);
        throw Error(kLibErrorNumber, libSource("lib_CopyFile"),
                    QStringLiteral("Failed to copy file\r\n") + reason + QStringLiteral("\r\nSrc=") + source
                        + QStringLiteral("\r\nTgt=") + target);
    }
    // The source's dates, set on the name (some network file systems set the modified time
    // themselves when a written file is closed).
    if (::utimensat(AT_FDCWD, targetName.constData(), dates, 0) != 0)
        throw Error(kErrPathFileAccess, libSource("lib_FileDate"),
                    QString::fromLocal8Bit(std::strerror(errno)) + QStringLiteral("\r\nFile:") + target);
    if (size)
        *size = copied;
    return true;
}

} // namespace

qint64 lib_CopyFileThrough(const QString &source, const QString &target, bool overwrite, CopySink &sink)
{
    BusyPointer busy;
    qint64 size = -1;
    return copyOne(source, target, overwrite, {}, &sink, &size) ? size : -1;
}

bool lib_CopyFile(const QString &source, const QString &target, bool overwrite, const CopyProgress &progress)
{
    BusyPointer busy;
    const QString name = QFileInfo(source).fileName();
    if (!name.contains(QLatin1Char('*')) && !name.contains(QLatin1Char('?')))
        return copyOne(source, target, overwrite, progress);

    const QString folder = target.endsWith(QLatin1Char('/')) ? target : target + QLatin1Char('/');
    lib_clsFindFiles finder;
    bool all = true;
    for (bool found = finder.FindFirstFile(lib_DirPart(source), name, false); found; found = finder.FindNextFile()) {
        if (!finder.IsDir())
            all = copyOne(finder.FullFile(), folder, overwrite, progress) && all;
    }
    return all;
}

bool lib_DeleteDir(const QString &dir, bool contentsOnly, int timeout, bool permanently)
{
    const QString trimmed = dir.trimmed();
    QString refusal;
    if (isNetworkPath(trimmed))
        refusal = QStringLiteral("UNCs are not yet supported");
    else if (!QDir::isAbsolutePath(trimmed) && !isDrivePath(trimmed))
        refusal = QStringLiteral("Directory ") + dir + QStringLiteral(" invalid (either no drive or dir specified)");
    else if (trimmed.endsWith(QLatin1String(":\\")) || trimmed.endsWith(QLatin1String(":/"))
             || QDir::cleanPath(trimmed) == lib_DrivePart(trimmed))
        refusal = QStringLiteral("Directory ") + dir + QStringLiteral(" invalid (drive root not allowed)");
    if (!refusal.isEmpty()) {
        lib_MsgError(refusal, timeout);
        return false;
    }
    if (!contentsOnly) {
        if (!QFileInfo(trimmed).exists())
            return true;
        if (!permanently) {
            ensureTrashHome();
            if (QFile::moveToTrash(trimmed))
                return true;
        }
        return QDir(trimmed).removeRecursively();
    }
    bool all = true;
    const QFileInfoList entries =
        QDir(trimmed).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo &entry : entries) {
        if (entry.isDir() && !entry.isSymLink())
            all = lib_DeleteDir(entry.absoluteFilePath(), false, timeout, permanently) && all;
        else
            all = lib_KillFile(entry.absoluteFilePath(), permanently) && all;
    }
    return all;
}

QDateTime lib_FileDate(const QString &path, QChar which)
{
    const QFileInfo info(path);
    if (!info.exists())
        return QDateTime();
    switch (which.toUpper().unicode()) {
    case 'C': {
        const QDateTime birth = info.birthTime();
        return birth.isValid() ? birth : info.metadataChangeTime();
    }
    case 'A':
        return info.lastRead();
    default:
        return info.lastModified();
    }
}

void lib_SetFileDate(const QString &path, QChar which, const QDateTime &date)
{
    const QChar w = which.toUpper();
    if (w == QLatin1Char('C'))
        return; // POSIX file systems do not let a program set the creation time
    timespec times[2];
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_nsec = UTIME_OMIT;
    const qint64 ms = date.toMSecsSinceEpoch();
    timespec &slot = (w == QLatin1Char('A')) ? times[0] : times[1];
    slot.tv_sec = time_t(ms / 1000);
    slot.tv_nsec = long((ms % 1000) * 1000000);
    if (::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0) != 0)
        throw Error(kErrPathFileAccess, libSource("lib_FileDate"),
                    QString::fromLocal8Bit(std::strerror(errno)) + QStringLiteral("\r\nFile:") + path);
}

bool lib_FileExists(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() && !info.isDir();
}

bool lib_DirExists(const QString &path)
{
    return !path.isEmpty() && QFileInfo(path).isDir();
}

bool lib_IsFileLocked(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return false;
    // POSIX locks are advisory: what keeps a file from being renamed or deleted is its folder.
    return !QFileInfo(info.absolutePath()).isWritable();
}

QString lib_JoinPath(const QString &left, const QString &right)
{
    if (left.isEmpty())
        return right;
    if (right.isEmpty())
        return left;
    const bool leftSep = left.endsWith(QLatin1Char('/'));
    const bool rightSep = right.startsWith(QLatin1Char('/'));
    if (leftSep && rightSep)
        return left + right.mid(1);
    if (leftSep || rightSep)
        return left + right;
    return left + QLatin1Char('/') + right;
}

QString lib_DrivePart(const QString &path)
{
    if (isDrivePath(path))
        return path.left(2).toUpper();
    const QStringList parts = QDir::cleanPath(path).split(QLatin1Char('/'), Qt::SkipEmptyParts);
    if (isNetworkPath(path))
        return parts.size() >= 2 ? QStringLiteral("//") + parts[0] + QLatin1Char('/') + parts[1] : path;
    if (parts.size() >= 3 && parts[0] == QLatin1String("media"))
        return QStringLiteral("/media/") + parts[1] + QLatin1Char('/') + parts[2];
    if (parts.size() >= 4 && parts[0] == QLatin1String("run") && parts[1] == QLatin1String("media"))
        return QStringLiteral("/run/media/") + parts[2] + QLatin1Char('/') + parts[3];
    if (parts.size() >= 2 && parts[0] == QLatin1String("mnt"))
        return QStringLiteral("/mnt/") + parts[1];
    return QStringLiteral("/");
}

QString lib_DirPart(const QString &path)
{
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    if (slash < 0)
        return QString();
    return slash == 0 ? QStringLiteral("/") : path.left(slash);
}

QString lib_FilePart(const QString &path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

QString lib_PathWithoutExt(const QString &path)
{
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    const int dot = path.lastIndexOf(QLatin1Char('.'));
    return dot > slash + 1 ? path.left(dot) : path;
}

QString lib_AbsolutePath(const QString &path, const QString &baseDir)
{
    const QString base = baseDir.isEmpty() ? QDir::currentPath() : baseDir;
    QString p = path;
    p.replace(QLatin1String("..\\"), QLatin1String("../"));
    if (p.contains(QLatin1String("../"))) {
        const int ups = p.count(QLatin1String("../"));
        QString result = QDir::cleanPath(base);
        for (int i = 0; i < ups; ++i)
            result = lib_DirPart(result).isEmpty() ? result : lib_DirPart(result);
        return lib_JoinPath(result, p.mid(p.lastIndexOf(QLatin1String("../")) + 3));
    }
    if (QDir::isAbsolutePath(p) || isDrivePath(p) || isNetworkPath(p))
        return path;
    return lib_JoinPath(base, p);
}

QString lib_SpecialFolder(int code)
{
    switch (code) {
    case kFolderDocuments:
        return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    case kFolderPictures:
        return QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    case kFolderAppData:
        return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    default:
        return QString();
    }
}

QString ExpandSpecialDir(const QString &path, bool toPlaceholder)
{
    static const QString pics = QStringLiteral("<My Pictures>");
    static const QString docs = QStringLiteral("<My Documents>");
    const QString picturesDir = lib_SpecialFolder(kFolderPictures);
    const QString documentsDir = lib_SpecialFolder(kFolderDocuments);
    auto underFolder = [&path](const QString &folder) {
        return !folder.isEmpty()
            && (path == folder || path.startsWith(folder + QLatin1Char('/')));
    };
    if (!toPlaceholder) {
        if (path.startsWith(pics, Qt::CaseInsensitive))
            return lib_JoinPath(picturesDir, path.mid(pics.size()));
        if (path.startsWith(docs, Qt::CaseInsensitive))
            return lib_JoinPath(documentsDir, path.mid(docs.size()));
        return path;
    }
    if (underFolder(picturesDir))
        return lib_JoinPath(pics, path.mid(picturesDir.size()));
    if (underFolder(documentsDir))
        return lib_JoinPath(docs, path.mid(documentsDir.size()));
    return path;
}

QString lib_BrowseForFolder(const QString &startDir, const QString &promptText)
{
    // A setting not yet made (a fresh installation) or a folder that is gone would start the
    // chooser in the program's own folder: the user's photos are nearer in Pictures.
    const bool usable = !startDir.isEmpty() && QFileInfo(startDir).isDir();
    return prompt().browseForFolder(usable ? startDir : lib_SpecialFolder(kFolderPictures), promptText);
}

QString lib_OpenFileDialog(const QString &description, const QString &extension, const QString &startDir,
                           const QString &title)
{
    return prompt().openFileDialog(description, extension, startDir,
                                   title.isEmpty() ? QStringLiteral("Open") : title);
}

QString lib_SaveFileDialog(const QString &description, const QString &extension, const QString &startDir,
                           const QString &title)
{
    return prompt().saveFileDialog(description, extension, startDir,
                                   title.isEmpty() ? QStringLiteral("Save As") : title);
}

bool lib_RunApplication(const QString &commandLine, bool wait, int timeoutSeconds, int *exitCode)
{
    QStringList args = QProcess::splitCommand(commandLine);
    if (args.isEmpty())
        return false;
    const QString program = args.takeFirst();
    const QFileInfo info(program);
    if (info.isFile() && !info.isExecutable())
        return prompt().openWithDefaultProgram(info.absoluteFilePath());

    if (!wait) {
        if (!QProcess::startDetached(program, args))
            throw Error(kLibErrorNumber, libSource("lib_RunApplication"),
                        QStringLiteral("Could not start the program\r\nCommand:") + commandLine);
        return true;
    }
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(program, args);
    if (!process.waitForStarted(1000))
        throw Error(kLibErrorNumber, libSource("lib_RunApplication"),
                    process.errorString() + QStringLiteral("\r\nCommand:") + commandLine);
    QElapsedTimer clock;
    clock.start();
    while (process.state() != QProcess::NotRunning && clock.elapsed() < qint64(timeoutSeconds) * 1000) {
        process.waitForFinished(50);
        prompt().processEvents();
    }
    if (exitCode)
        *exitCode = process.state() == QProcess::NotRunning ? process.exitCode() : -1;
    return process.state() == QProcess::NotRunning;
}

} // namespace quillet

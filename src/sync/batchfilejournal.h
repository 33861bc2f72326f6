#pragma once

#include <QFile>
#include <QString>
#include <QStringList>
#include <functional>

namespace quillet {

// The journal of every file operation this PC performs on its Source Dir and Target Dir, so that
// another PC can replay it. Batchfiles live in the data folder:
//   current:  _Batchfile_999999999999_<PCname>.log  (new entries are appended here)
//   closed:   _Batchfile_<yymmddhhnnss>_<PCname>.log
// Lines end with CR LF. Lines 1-3 are the header (Source Dir, Target Dir, "Number of times
// processed: 0"); then entries: an opcode line followed by its operand lines. Operands are paths
// relative to the Source or Target Dir with "\" as separator, the exchange format between PCs.
// Text is UTF-8 on every PC.
namespace Batchfile {

inline constexpr const char *kCopySource = "CS";
inline constexpr const char *kRenameSource = "NS";
inline constexpr const char *kDeleteSource = "DS";
inline constexpr const char *kMoveSource = "MS";
inline constexpr const char *kRotateSourceLeft = "RSL";
inline constexpr const char *kRotateSourceRight = "RSR";
inline constexpr const char *kDeleteTargetDir = "DTD";
inline constexpr const char *kDeleteTargetFile = "DTF";
inline constexpr const char *kRenameTargetDir = "NTD";

// Number of operand lines that follow an opcode, or -1 when the line is no opcode (compared
// exactly, upper case, against the whole line).
int OperandCount(const QString &line);

QString CurrentName(const QString &pcName);
QString ClosedName(const QString &pcName, const QDateTime &when);

// The process-wide path of the current batchfile; empty while journaling is off.
QString CurrentPath();
void SetCurrentPath(const QString &path);

// Computes the current batchfile path for the present PCname. With closeCurrent, an existing
// current batchfile is first renamed to its closed name stamped now; a rename that fails (two
// closings in the same second) leaves the file as it is, silently.
void SetBatchfileName(bool closeCurrent);

// Start-up and after a settings change: sets the current path when journaling is on, asks about
// a current batchfile of more than 2500 lines, logs the time taken, then runs `processBatchfiles`
// (the replay of other PCs' batchfiles) in every case.
void InitBatchfile(const std::function<void()> &processBatchfiles = {});
// Number of lines of a file (0 when missing).
int CountLines(const QString &path);

// A path relative to a base folder: the characters after the base and its separator, with "\" as
// separator. A photo directly in the base is its bare name.
QString RelativePath(const QString &fullPath, const QString &baseDir);
// The native full path of a journal operand.
QString NativePath(const QString &baseDir, const QString &relative);

} // namespace Batchfile

// Opens the current batchfile for appending (creating it with its three header lines when
// missing) and writes entries, each flushed to disk as it is written so a crash loses at most the
// entry being written. Callers check CreateBatchs first. Throws Error when the file cannot be opened.
class BatchfileWriter
{
public:
    BatchfileWriter();
    ~BatchfileWriter();
    BatchfileWriter(const BatchfileWriter &) = delete;
    BatchfileWriter &operator=(const BatchfileWriter &) = delete;

    void entry(const char *opcode, const QStringList &operands);
    void close();

private:
    QFile m_file;
};


} // namespace quillet

#pragma once

#include <QByteArrayList>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

class QIODevice;

namespace quillet {

// One entry of a batchfile: the opcode line and its operand lines, as read.
struct BatchfileEntry
{
    QString opcode;
    QStringList operands;        // decoded (UTF-8); an overlong line is cut
    QByteArrayList rawOperands;  // the bytes as they stand in the file, for the done batchfile
    // Why an operand cannot be used although it was read (a line too long to be a path, bytes that
    // are no UTF-8 text); empty when every operand is usable.
    QString defect;
    // The line after the last operand, when there is one: the old "Results: " line in a batchfile
    // that was processed before (the rotation look-ahead), else the next opcode.
    std::optional<QString> lineAfter;
    int lineNumber = 0;          // 1-based line of the opcode
};

// A batchfile read whole: the header and the entries, or what is wrong with it.
struct BatchfileContent
{
    enum class Problem { None, Unreadable, TooLarge, MissingHeader, BadCount, TruncatedEntry };

    Problem problem = Problem::None;
    QString problemText;  // what is wrong, for a message to the user; empty when fine
    QString srcDir;       // header line 1
    QString tgtDir;       // header line 2
    int processedCount = 0;
    QList<BatchfileEntry> entries;

    bool ok() const { return problem == Problem::None; }
    // The number of opcode lines: the progress maximum.
    int operationCount() const { return int(entries.size()); }
};

// Reads batchfiles that arrive from another machine. Pure parsing, no file operations: what it
// reads is untrusted, so it never fails by exception, never reads past its input and bounds every
// line. Lines end in CR LF or LF. After the three header lines, a line that is exactly one of the
// nine opcodes starts an entry whose operand lines follow, whatever they hold; any other line
// between entries (an old "Results: " line, an empty line, garbage) is skipped. An operand line
// missing at the end, or cut off without its line end, makes the whole file TruncatedEntry (it
// may still be arriving), with the complete entries before it kept.
class BatchfileReader
{
public:
    // Longer lines cannot be paths; they are cut to this many bytes and marked as a defect.
    static constexpr int kMaxLineBytes = 8192;
    // Larger inputs are not read at all.
    static constexpr qint64 kMaxFileBytes = 256LL * 1024 * 1024;

    static BatchfileContent parse(const QByteArray &bytes);
    static BatchfileContent read(QIODevice &device);
    static BatchfileContent readFile(const QString &path);

    // The header line 3 prefix; the count follows it.
    static QString countPrefix() { return QStringLiteral("Number of times processed: "); }
};

} // namespace quillet

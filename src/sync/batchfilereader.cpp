#include "batchfilereader.h"

#include "batchfilejournal.h"

#include <QFile>
#include <QIODevice>
#include <QStringDecoder>

namespace quillet {

namespace {

struct Line
{
    QByteArray raw;    // without its line end, cut to kMaxLineBytes
    QString text;
    bool terminated = true;
    QString defect;
};

// Splits the input into lines one at a time.
class LineSource
{
public:
    explicit LineSource(const QByteArray &bytes) : m_bytes(bytes) {}

    std::optional<Line> next()
    {
        if (m_pos >= m_bytes.size())
            return std::nullopt;
        qsizetype end = m_bytes.indexOf('\n', m_pos);
        Line line;
        line.terminated = end >= 0;
        if (end < 0)
            end = m_bytes.size();
        qsizetype length = end - m_pos;
        if (length > 0 && m_bytes.at(m_pos + length - 1) == '\r')
            --length;
        if (length > BatchfileReader::kMaxLineBytes) {
            line.defect = QStringLiteral("line of %1 bytes, too long for a path").arg(length);
            length = BatchfileReader::kMaxLineBytes;
        }
        line.raw = m_bytes.mid(m_pos, length);
        QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        line.text = utf8(line.raw);
        if (utf8.hasError() && line.defect.isEmpty())
            line.defect = QStringLiteral("bytes that are no UTF-8 text");
        m_pos = end + 1;
        return line;
    }

private:
    const QByteArray &m_bytes;
    qsizetype m_pos = 0;
};

BatchfileContent failed(BatchfileContent content, BatchfileContent::Problem problem, const QString &text)
{
    content.problem = problem;
    content.problemText = text;
    return content;
}

} // namespace

BatchfileContent BatchfileReader::parse(const QByteArray &bytes)
{
    using Problem = BatchfileContent::Problem;
    BatchfileContent content;
    if (bytes.size() > kMaxFileBytes)
        return failed(content, Problem::TooLarge, QStringLiteral("the file is larger than 256 MB"));
    LineSource source(bytes);
    std::optional<Line> header[3];
    for (auto &line : header) {
        line = source.next();
        if (!line || !line->terminated)
            return failed(content, Problem::MissingHeader, QStringLiteral("its three header lines are not complete"));
    }
    content.srcDir = header[0]->text;
    content.tgtDir = header[1]->text;
    const QString countLine = header[2]->text;
    bool isNumber = false;
    const int count = countLine.mid(countPrefix().size()).trimmed().toInt(&isNumber);
    if (!countLine.startsWith(countPrefix()) || !isNumber || count < 0)
        return failed(content, Problem::BadCount,
                      QStringLiteral("its third line should read \"Number of times processed: \" and a number"));
    content.processedCount = count;

    int lineNumber = 3;
    BatchfileEntry *open = nullptr; // the last entry, waiting for the line after it
    for (std::optional<Line> line = source.next(); line; line = source.next()) {
        ++lineNumber;
        if (open) {
            open->lineAfter = line->text;
            open = nullptr;
        }
        const int operandCount = Batchfile::OperandCount(line->text);
        if (operandCount < 0)
            continue;
        BatchfileEntry entry;
        entry.opcode = line->text;
        entry.lineNumber = lineNumber;
        for (int i = 0; i < operandCount; ++i) {
            std::optional<Line> operand = source.next();
            if (!operand || !operand->terminated)
                return failed(content, Problem::TruncatedEntry,
                              QStringLiteral("the entry %1 on line %2 has an operand line missing at the end")
                                  .arg(entry.opcode).arg(entry.lineNumber));
            ++lineNumber;
            entry.operands << operand->text;
            entry.rawOperands << operand->raw;
            if (entry.defect.isEmpty() && !operand->defect.isEmpty())
                entry.defect = operand->defect;
        }
        content.entries << entry;
        open = &content.entries.last();
    }
    return content;
}

BatchfileContent BatchfileReader::read(QIODevice &device)
{
    QByteArray bytes;
    for (;;) {
        const QByteArray chunk = device.read(1 << 20);
        if (chunk.isEmpty())
            break;
        bytes += chunk;
        if (bytes.size() > kMaxFileBytes)
            break; // parse() says it is too large
    }
    return parse(bytes);
}

BatchfileContent BatchfileReader::readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        BatchfileContent content;
        content.problem = BatchfileContent::Problem::Unreadable;
        content.problemText = QStringLiteral("it cannot be read (%1)").arg(file.errorString());
        return content;
    }
    return read(file);
}

} // namespace quillet

#include "csvworkbook.h"

#include "lib/error.h"

#include <QStringDecoder>

namespace quillet {

namespace {

bool isLineEnd(char c)
{
    return c == '\n' || c == '\r';
}

} // namespace

qsizetype CsvWorkbook::bodyStart(const QByteArray &bytes)
{
    return bytes.startsWith("\xEF\xBB\xBF") ? 3 : 0;
}

char CsvWorkbook::separatorOf(const QByteArray &bytes)
{
    // The separator that splits the first record into the most fields, the record read exactly as
    // records() reads it (quotes count only at the start of a field); a comma when none splits it.
    // A quote elsewhere must not decide, or marking a row could change the separator of the file.
    char best = ',';
    qsizetype most = 1;
    for (const char separator : {',', ';', '\t'}) {
        qsizetype fields = 1;
        try {
            const QList<Record> first = records(bytes, separator, 1);
            if (!first.isEmpty())
                fields = first.first().fields.size();
        } catch (const Error &) {
            // a quote this separator would leave open: not the file's separator
        }
        if (fields > most) {
            most = fields;
            best = separator;
        }
    }
    return best;
}

QList<CsvWorkbook::Record> CsvWorkbook::records(const QByteArray &bytes, char separator, qsizetype maxRecords)
{
    QList<Record> out;
    qsizetype pos = bodyStart(bytes);
    const qsizetype size = bytes.size();
    while (pos < size && out.size() < maxRecords) {
        Record record;
        for (;;) {
            Field field{pos, pos};
            if (pos < size && bytes.at(pos) == '"') {
                for (++pos;; pos += 2) {
                    pos = bytes.indexOf('"', pos);
                    if (pos < 0)
                        malformed(QStringLiteral("the quoted text that begins in row ") + QString::number(out.size() + 1)
                                  + QStringLiteral(" has no closing quote"));
                    if (pos + 1 >= size || bytes.at(pos + 1) != '"')
                        break;
                }
                ++pos;
            }
            while (pos < size && bytes.at(pos) != separator && !isLineEnd(bytes.at(pos)))
                ++pos;
            field.end = pos;
            record.fields << field;
            if (pos >= size || bytes.at(pos) != separator)
                break;
            ++pos;
        }
        record.end = pos;
        pos += (pos + 1 < size && bytes.at(pos) == '\r' && bytes.at(pos + 1) == '\n') ? 2 : 1;
        out << record;
    }
    return out;
}

QString CsvWorkbook::decoded(const QByteArray &bytes, const Field &field) const
{
    QByteArray raw = bytes.mid(field.start, field.end - field.start);
    if (raw.startsWith('"')) {
        // "a ""b"" c" -> a "b" c; anything after the closing quote is kept as it stands.
        QByteArray plain;
        qsizetype i = 1;
        for (; i < raw.size(); ++i) {
            if (raw.at(i) == '"' && i + 1 < raw.size() && raw.at(i + 1) == '"')
                plain += raw.at(i++);
            else if (raw.at(i) == '"')
                break;
            else
                plain += raw.at(i);
        }
        raw = plain + raw.mid(i + 1);
    }
    return m_utf8 ? QString::fromUtf8(raw) : QString::fromLatin1(raw);
}

QByteArray CsvWorkbook::encoded(const QString &text, char separator) const
{
    QByteArray bytes = m_utf8 ? text.toUtf8() : text.toLatin1();
    if (bytes.contains(separator) || bytes.contains('"') || bytes.contains('\n') || bytes.contains('\r'))
        bytes = '"' + bytes.replace("\"", "\"\"") + '"';
    return bytes;
}

void CsvWorkbook::parse(const QByteArray &bytes)
{
    // Stateless: a sequence cut short at the end is an error too, not a wait for more bytes, or a
    // file ending in one lead byte would read as UTF-8 and, once marked, as Latin-1.
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString asUtf8 = utf8(bytes);
    m_utf8 = !utf8.hasError();
    m_separator = separatorOf(bytes);
    const QList<Record> rows = records(bytes, m_separator, kMaxRows);
    for (int r = 0; r < rows.size(); ++r)
        for (int c = 0; c < rows.at(r).fields.size() && c < kMaxColumns; ++c)
            store(r + 1, c + 1, decoded(bytes, rows.at(r).fields.at(c)));
}

QByteArray CsvWorkbook::rewrite(const QByteArray &original, const QMap<int, QMap<int, QString>> &edits) const
{
    const QList<Record> rows = records(original, m_separator, edits.lastKey());
    QByteArray out;
    qsizetype copied = 0; // original bytes up to here are in `out`
    auto copyTo = [&](qsizetype pos) {
        out += original.mid(copied, pos - copied);
        copied = pos;
    };
    for (auto e = edits.cbegin(); e != edits.cend(); ++e) {
        const bool anyText = std::any_of(e.value().cbegin(), e.value().cend(), [](const QString &t) { return !t.isEmpty(); });
        if (e.key() > rows.size()) {
            if (anyText)
                malformed(QStringLiteral("row ") + QString::number(e.key()) + QStringLiteral(" is not in the file"));
            continue;
        }
        const Record &record = rows.at(e.key() - 1);
        qsizetype fields = record.fields.size();
        for (auto c = e.value().cbegin(); c != e.value().cend(); ++c) {
            if (c.key() <= record.fields.size()) {
                const Field &f = record.fields.at(c.key() - 1);
                copyTo(f.start);
                out += encoded(c.value(), m_separator);
                copied = f.end;
            } else if (!c.value().isEmpty()) {
                copyTo(record.end);
                out += QByteArray(c.key() - fields, m_separator) + encoded(c.value(), m_separator);
                fields = c.key();
            }
        }
    }
    copyTo(original.size());
    return out;
}

} // namespace quillet

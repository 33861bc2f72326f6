#include "xmlsplice.h"

#include "workbook.h"

#include "lib/error.h"

#include <QStringDecoder>

#include <algorithm>

namespace quillet {

namespace {

QString decodedUtf8(const QByteArray &utf8, bool *ok)
{
    QStringDecoder decode(QStringDecoder::Utf8);
    QString text = decode(utf8);
    *ok = !decode.hasError();
    return text;
}

} // namespace

// The reader works on the decoded text, so its offsets are positions in m_text; given the whole
// text at once, it knows where the document ends.
XmlSplice::XmlSplice(const QByteArray &utf8, const QString &part)
    : m_part(part)
    , m_text(decodedUtf8(utf8, &m_utf8))
    , m_reader(m_text)
{
    if (!m_utf8)
        fail(QStringLiteral("the text is not UTF-8"));
}

QXmlStreamReader::TokenType XmlSplice::next()
{
    const QXmlStreamReader::TokenType token = m_reader.readNext();
    if (m_reader.hasError())
        fail(m_reader.errorString() + QStringLiteral(" (line ") + QString::number(m_reader.lineNumber())
             + QLatin1Char(')'));
    if (token == QXmlStreamReader::StartDocument) {
        const QStringView encoding = m_reader.documentEncoding();
        if (!encoding.isEmpty() && encoding.compare(QLatin1String("UTF-8"), Qt::CaseInsensitive) != 0)
            fail(QStringLiteral("the text is not UTF-8"));
    }
    return token;
}

bool XmlSplice::nextChild()
{
    for (;;) {
        switch (next()) {
        case QXmlStreamReader::StartElement:
            return true;
        case QXmlStreamReader::EndElement:
            return false;
        case QXmlStreamReader::EndDocument:
            fail(QStringLiteral("the document ends inside an element"));
        default:
            break;
        }
    }
}

qint64 XmlSplice::tagStart() const
{
    // A tag cannot contain '<' (not even in attribute values), so the last one before the end of
    // the token is where the tag begins.
    const qint64 end = tokenEnd();
    return end > 0 ? m_text.lastIndexOf(QLatin1Char('<'), end - 1) : 0;
}

void XmlSplice::replace(qint64 from, qint64 to, const QString &with)
{
    m_edits.append({from, to, with});
}

QByteArray XmlSplice::result() const
{
    QList<Edit> edits = m_edits;
    std::stable_sort(edits.begin(), edits.end(), [](const Edit &a, const Edit &b) { return a.from < b.from; });
    QString out;
    out.reserve(m_text.size() + 256);
    qint64 at = 0;
    for (const Edit &e : edits) {
        if (e.from < at)
            throw Error(kLibErrorNumber, QStringLiteral("XmlSplice"),
                        QStringLiteral("Internal error: overlapping changes in ") + m_part);
        out += QStringView(m_text).mid(at, e.from - at);
        out += e.with;
        at = e.to;
    }
    out += QStringView(m_text).mid(at);
    return out.toUtf8();
}

QString XmlSplice::escaped(QStringView text, bool attribute)
{
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        switch (c.unicode()) {
        case u'&': out += QStringLiteral("&amp;"); break;
        case u'<': out += QStringLiteral("&lt;"); break;
        case u'>': out += QStringLiteral("&gt;"); break;
        case u'"': out += attribute ? QStringLiteral("&quot;") : QStringLiteral("\""); break;
        case u'\t': out += attribute ? QStringLiteral("&#9;") : QStringLiteral("\t"); break;
        case u'\n': out += attribute ? QStringLiteral("&#10;") : QStringLiteral("\n"); break;
        case u'\r': out += QStringLiteral("&#13;"); break;
        default: out += c;
        }
    }
    return out;
}

QString XmlSplice::startTag(QStringView qualifiedName, const QXmlStreamAttributes &attributes, bool selfClosing)
{
    QString tag = QLatin1Char('<') + qualifiedName.toString();
    for (const QXmlStreamAttribute &a : attributes)
        tag += QLatin1Char(' ') + a.qualifiedName().toString() + QStringLiteral("=\"") + escaped(a.value(), true)
            + QLatin1Char('"');
    return tag + (selfClosing ? QStringLiteral("/>") : QStringLiteral(">"));
}

QXmlStreamAttributes XmlSplice::withAttribute(const QXmlStreamAttributes &attributes, const QString &qualifiedName,
                                              const QString &value)
{
    QXmlStreamAttributes out;
    bool found = false;
    for (const QXmlStreamAttribute &a : attributes) {
        if (a.qualifiedName() != qualifiedName) {
            out.append(a);
        } else if (!value.isEmpty()) {
            out.append(qualifiedName, value);
            found = true;
        } else {
            found = true;
        }
    }
    if (!found && !value.isEmpty())
        out.append(qualifiedName, value);
    return out;
}

QString XmlSplice::qualified(const QString &prefix, const char *local)
{
    return prefix.isEmpty() ? QString::fromLatin1(local) : prefix + QLatin1Char(':') + QLatin1String(local);
}

void XmlSplice::fail(const QString &description) const
{
    throw Error(kErrBadFileFormat, QStringLiteral("XmlSplice"),
                QStringLiteral("The workbook cannot be read: ") + m_part + QStringLiteral(": ") + description);
}

} // namespace quillet

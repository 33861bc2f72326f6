#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QXmlStreamReader>

namespace quillet {

// One XML part of a workbook, read with QXmlStreamReader and changed by splicing: a change
// replaces a span of the original text and every other character stays exactly as it was, so
// whatever the program does not understand (other elements, attributes, formatting of the text,
// namespace prefixes) survives a rewrite.
//
// The part must be UTF-8 (as every .xlsx and .ods part is); anything else is refused with
// Error(kErrBadFileFormat). The reader expands no external entities and limits internal ones.
class XmlSplice
{
public:
    // `part` names the part in messages ("xl/worksheets/sheet1.xml").
    XmlSplice(const QByteArray &utf8, const QString &part);

    QXmlStreamReader &reader() { return m_reader; }
    const QString &text() const { return m_text; }
    // Reads the next token; throws Error(kErrBadFileFormat) on malformed XML.
    QXmlStreamReader::TokenType next();
    // Moves to the next child element of the current element (skipping text and comments);
    // false when the current element ends instead.
    bool nextChild();
    // Where the current token ends in text().
    qint64 tokenEnd() const { return m_reader.characterOffset(); }
    // Where the current start or end tag begins in text() (its '<').
    qint64 tagStart() const;

    // Replaces text()[from, to) by `with` in result(). Spans must not overlap; insertions at the
    // same place keep the order in which they were made.
    void replace(qint64 from, qint64 to, const QString &with);
    bool changed() const { return !m_edits.isEmpty(); }
    // The part with every replacement made, as UTF-8.
    QByteArray result() const;

    // Text escaped for element content or (attribute = true) for a double-quoted attribute value.
    static QString escaped(QStringView text, bool attribute);
    // A start tag made anew: "<name a="v" ...>" or "<name .../>".
    static QString startTag(QStringView qualifiedName, const QXmlStreamAttributes &attributes, bool selfClosing);
    // The attributes with the one of that qualified name set to `value` (added at the end when
    // missing), or removed when `value` is empty.
    static QXmlStreamAttributes withAttribute(const QXmlStreamAttributes &attributes, const QString &qualifiedName,
                                              const QString &value);
    // "prefix:local", or "local" when the prefix is empty.
    static QString qualified(const QString &prefix, const char *local);

    // Throws Error(kErrBadFileFormat) naming the part.
    [[noreturn]] void fail(const QString &description) const;

private:
    struct Edit
    {
        qint64 from;
        qint64 to;
        QString with;
    };

    QString m_part;
    bool m_utf8 = false;
    QString m_text;
    QXmlStreamReader m_reader;
    QList<Edit> m_edits;
};

} // namespace quillet

#include "odsworkbook.h"

#include "xmlsplice.h"
#include "ziparchive.h"

namespace quillet {

namespace {

const QString kContent = QStringLiteral("content.xml");
const QLatin1String kOfficeNs("urn:oasis:names:tc:opendocument:xmlns:office:1.0");
const QLatin1String kTableNs("urn:oasis:names:tc:opendocument:xmlns:table:1.0");
const QLatin1String kTextNs("urn:oasis:names:tc:opendocument:xmlns:text:1.0");

// A repeat count as written, kept within what any spreadsheet has (a whole sheet is 2^20 rows).
qint64 repeatCount(const QXmlStreamAttributes &a, const char *name)
{
    bool ok = false;
    const qint64 n = a.value(kTableNs, QLatin1String(name)).toLongLong(&ok);
    return ok ? qBound(qint64(1), n, qint64(1) << 20) : 1;
}

bool is(const QXmlStreamReader &r, QLatin1String ns, const char *name)
{
    return r.namespaceUri() == ns && r.name() == QLatin1String(name);
}

bool isCell(const QXmlStreamReader &r)
{
    return is(r, kTableNs, "table-cell") || is(r, kTableNs, "covered-table-cell");
}

// Groups of rows inside a table whose rows count like the table's own.
bool isRowGroup(const QXmlStreamReader &r)
{
    return is(r, kTableNs, "table-header-rows") || is(r, kTableNs, "table-row-group") || is(r, kTableNs, "table-rows");
}

// The shown text of a cell: its paragraphs joined by line breaks, comments left out.
QString cellText(XmlSplice &xml)
{
    QString text;
    int paragraphs = 0;
    int inParagraph = 0;
    for (int depth = 1; depth > 0;) {
        const QXmlStreamReader::TokenType token = xml.next();
        const QXmlStreamReader &r = xml.reader();
        if (token == QXmlStreamReader::EndElement) {
            --depth;
            if (inParagraph > depth)
                inParagraph = 0;
        } else if (token == QXmlStreamReader::Characters && inParagraph) {
            text += r.text();
        } else if (token != QXmlStreamReader::StartElement) {
            continue;
        } else if (is(r, kOfficeNs, "annotation")) {
            xml.reader().skipCurrentElement();
        } else if (is(r, kTextNs, "p") || is(r, kTextNs, "h")) {
            ++depth;
            if (!inParagraph) {
                text += paragraphs++ ? QStringLiteral("\n") : QString();
                inParagraph = depth;
            }
        } else if (is(r, kTextNs, "s")) {
            ++depth;
            text += QString(qBound(1, r.attributes().value(kTextNs, QLatin1String("c")).toInt(), 1000), u' ');
        } else {
            ++depth;
            text += is(r, kTextNs, "tab") ? QStringLiteral("\t")
                : is(r, kTextNs, "line-break") ? QStringLiteral("\n") : QString();
        }
    }
    return text;
}

} // namespace

QVariant OdsWorkbook::cellValue(XmlSplice &xml, const QXmlStreamAttributes &a)
{
    const QString text = cellText(xml);
    const QStringView type = a.value(kOfficeNs, QLatin1String("value-type"));
    if (type == QLatin1String("float") || type == QLatin1String("percentage") || type == QLatin1String("currency")) {
        bool ok = false;
        const double d = a.value(kOfficeNs, QLatin1String("value")).toDouble(&ok);
        return ok ? QVariant(d) : QVariant(text);
    }
    if (type == QLatin1String("boolean"))
        return a.value(kOfficeNs, QLatin1String("boolean-value")) == QLatin1String("true");
    if (type == QLatin1String("date"))
        return a.value(kOfficeNs, QLatin1String("date-value")).toString();
    if (type == QLatin1String("time"))
        return a.value(kOfficeNs, QLatin1String("time-value")).toString();
    if (type == QLatin1String("string") && a.hasAttribute(kOfficeNs, QLatin1String("string-value")))
        return a.value(kOfficeNs, QLatin1String("string-value")).toString();
    return text.isEmpty() ? QVariant() : QVariant(text);
}

OdsWorkbook::RowSpan OdsWorkbook::scanRow(XmlSplice &xml, qint64 row, OdsWorkbook *sink) const
{
    RowSpan span;
    span.row = row;
    span.repeat = repeatCount(xml.reader().attributes(), "number-rows-repeated");
    span.element = {xml.reader().qualifiedName().toString(), xml.reader().attributes(), xml.tagStart(), xml.tokenEnd()};
    qint64 column = 1;
    while (xml.nextChild()) {
        if (!isCell(xml.reader())) {
            xml.reader().skipCurrentElement();
            continue;
        }
        CellSpan cell;
        cell.column = column;
        cell.repeat = repeatCount(xml.reader().attributes(), "number-columns-repeated");
        cell.element = {xml.reader().qualifiedName().toString(), xml.reader().attributes(), xml.tagStart(),
                        xml.tokenEnd()};
        const QVariant value = cellValue(xml, cell.element.attributes);
        cell.element.end = xml.tokenEnd();
        cell.element.selfClosing = cell.element.end == cell.element.openEnd;
        for (qint64 r = row; sink && value.isValid() && r < row + span.repeat && r <= kMaxRows; ++r)
            for (qint64 c = column; c < column + cell.repeat && c <= kMaxColumns; ++c)
                sink->store(int(r), int(c), value);
        column += cell.repeat;
        span.cells << cell;
    }
    span.element.end = xml.tokenEnd();
    span.element.selfClosing = span.element.end == span.element.openEnd;
    return span;
}

QList<OdsWorkbook::RowSpan> OdsWorkbook::scan(XmlSplice &xml, Prefixes &prefixes, OdsWorkbook *sink) const
{
    QList<RowSpan> rows;
    int depth = 0; // inside the first table
    qint64 row = 1;
    while (xml.next() != QXmlStreamReader::EndDocument) {
        QXmlStreamReader &r = xml.reader();
        for (const QXmlStreamNamespaceDeclaration &d : r.namespaceDeclarations()) {
            QString *prefix = d.namespaceUri() == kOfficeNs ? &prefixes.office
                : d.namespaceUri() == kTableNs ? &prefixes.table
                : d.namespaceUri() == kTextNs  ? &prefixes.text : nullptr;
            if (prefix && prefix->isNull())
                *prefix = d.prefix().isNull() ? QStringLiteral("") : d.prefix().toString();
        }
        if (r.isEndElement() && depth > 0 && --depth == 0)
            break; // the end of the first table
        if (!r.isStartElement())
            continue;
        if (depth == 0) {
            depth = is(r, kTableNs, "table") ? 1 : 0;
        } else if (is(r, kTableNs, "table-row")) {
            rows << scanRow(xml, row, sink);
            row += rows.last().repeat;
            if (row > kMaxRows)
                break;
        } else if (isRowGroup(r)) {
            ++depth;
        } else {
            r.skipCurrentElement();
        }
    }
    return rows;
}

void OdsWorkbook::parse(const QByteArray &bytes)
{
    const ZipArchive zip(bytes);
    if (!zip.contains(kContent))
        malformed(QStringLiteral("the archive has no content.xml (it is not an .ods spreadsheet)"));
    XmlSplice xml(zip.entry(kContent), kContent);
    Prefixes prefixes;
    scan(xml, prefixes, this);
}

QString OdsWorkbook::repeated(const XmlSplice &xml, const Element &e, const QString &attribute, qint64 repeat)
{
    const QString tag = XmlSplice::startTag(
        e.name, XmlSplice::withAttribute(e.attributes, attribute, repeat > 1 ? QString::number(repeat) : QString()),
        e.selfClosing);
    return tag + xml.text().mid(e.openEnd, e.end - e.openEnd);
}

QString OdsWorkbook::editedRow(const XmlSplice &xml, const RowSpan &row, const QMap<int, QString> &edits,
                               const Prefixes &p)
{
    const QString cellName = XmlSplice::qualified(p.table, "table-cell");
    const QString columnsRepeated = XmlSplice::qualified(p.table, "number-columns-repeated");
    const QString styleName = XmlSplice::qualified(p.table, "style-name");
    QString out = XmlSplice::startTag(row.element.name,
                                      XmlSplice::withAttribute(row.element.attributes,
                                                               XmlSplice::qualified(p.table, "number-rows-repeated"),
                                                               QString()),
                                      false);
    auto newCell = [&](const QString &style, const QString &text) -> QString {
        QString cell = QLatin1Char('<') + cellName;
        if (!style.isEmpty())
            cell += QLatin1Char(' ') + styleName + QStringLiteral("=\"") + XmlSplice::escaped(style, true) + u'"';
        if (text.isEmpty())
            return cell + QStringLiteral("/>");
        const QString para = XmlSplice::qualified(p.text, "p");
        return cell + QLatin1Char(' ') + XmlSplice::qualified(p.office, "value-type") + QStringLiteral("=\"string\"><")
            + para + u'>' + XmlSplice::escaped(text, false) + QStringLiteral("</") + para + QStringLiteral("></")
            + cellName + u'>';
    };
    qint64 column = 1; // the first column after the row's cells
    auto edit = edits.cbegin();
    for (const CellSpan &cell : row.cells) {
        qint64 from = cell.column; // the first column of this run not yet written
        for (; edit != edits.cend() && edit.key() < cell.column + cell.repeat; ++edit) {
            const QString style = cell.element.attributes.value(styleName).toString();
            if (edit.key() > from)
                out += repeated(xml, cell.element, columnsRepeated, edit.key() - from);
            out += newCell(style, edit.value());
            from = edit.key() + 1;
        }
        const qint64 rest = cell.column + cell.repeat - from;
        if (rest == cell.repeat)
            out += xml.text().mid(cell.element.start, cell.element.end - cell.element.start);
        else if (rest > 0)
            out += repeated(xml, cell.element, columnsRepeated, rest);
        column = cell.column + cell.repeat;
    }
    for (; edit != edits.cend(); ++edit) {
        if (edit.value().isEmpty())
            continue;
        if (edit.key() > column)
            out += QLatin1Char('<') + cellName + u' ' + columnsRepeated + QStringLiteral("=\"")
                + QString::number(edit.key() - column) + QStringLiteral("\"/>");
        out += newCell(QString(), edit.value());
        column = edit.key() + 1;
    }
    return out + QStringLiteral("</") + row.element.name + u'>';
}

QString OdsWorkbook::rowRun(const XmlSplice &xml, const RowSpan &row, const QMap<int, QMap<int, QString>> &edits,
                            const Prefixes &p)
{
    const QString rowsRepeated = XmlSplice::qualified(p.table, "number-rows-repeated");
    QString out;
    qint64 from = row.row; // the first row of this run not yet written
    for (auto e = edits.lowerBound(int(row.row)); e != edits.cend() && e.key() < row.row + row.repeat; ++e) {
        if (e.key() > from)
            out += repeated(xml, row.element, rowsRepeated, e.key() - from);
        out += editedRow(xml, row, e.value(), p);
        from = e.key() + 1;
    }
    if (row.row + row.repeat > from)
        out += repeated(xml, row.element, rowsRepeated, row.row + row.repeat - from);
    return out;
}

QByteArray OdsWorkbook::rewrite(const QByteArray &original, const QMap<int, QMap<int, QString>> &edits) const
{
    const ZipArchive zip(original);
    XmlSplice xml(zip.entry(kContent), kContent);
    Prefixes prefixes;
    const QList<RowSpan> rows = scan(xml, prefixes, nullptr);
    if (prefixes.office.isNull() || prefixes.table.isNull() || prefixes.text.isNull())
        xml.fail(QStringLiteral("the document does not declare the OpenDocument namespaces"));
    QMap<int, QMap<int, QString>> missing = edits; // rows to be marked that no row element covers
    for (const RowSpan &row : rows) {
        const auto first = edits.lowerBound(int(qMin<qint64>(row.row, kMaxRows + 1)));
        if (first == edits.cend() || first.key() >= row.row + row.repeat)
            continue;
        xml.replace(row.element.start, row.element.end, rowRun(xml, row, edits, prefixes));
        for (auto e = first; e != edits.cend() && e.key() < row.row + row.repeat; ++e)
            missing.remove(e.key());
    }
    for (const QMap<int, QString> &cells : std::as_const(missing))
        for (const QString &text : cells)
            if (!text.isEmpty())
                xml.fail(QStringLiteral("a row to be marked is not in the table"));
    return zip.replaced(kContent, xml.result());
}

} // namespace quillet

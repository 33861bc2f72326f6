#include "xlsxworkbook.h"

#include "xmlsplice.h"
#include "ziparchive.h"

#include <QDir>
#include <QRegularExpression>

namespace quillet {

namespace {

struct Relationship
{
    QString type;
    QString target; // an archive path
};

// A relationship target resolved against the folder of the part that names it.
QString resolvePart(const QString &folder, const QString &target)
{
    if (target.startsWith(QLatin1Char('/')))
        return QDir::cleanPath(target.mid(1));
    return QDir::cleanPath(folder.isEmpty() ? target : folder + QLatin1Char('/') + target);
}

QString folderOf(const QString &part)
{
    const qsizetype slash = part.lastIndexOf(QLatin1Char('/'));
    return slash < 0 ? QString() : part.left(slash);
}

// The relationships of a part, by Id ("rId1"); none when the part has no relationship file.
QHash<QString, Relationship> relationships(const ZipArchive &zip, const QString &part)
{
    const QString folder = folderOf(part);
    const QString rels = (folder.isEmpty() ? QString() : folder + QLatin1Char('/')) + QStringLiteral("_rels/")
        + part.mid(folder.isEmpty() ? 0 : folder.size() + 1) + QStringLiteral(".rels");
    QHash<QString, Relationship> out;
    if (!zip.contains(rels))
        return out;
    XmlSplice xml(zip.entry(rels), rels);
    while (xml.next() != QXmlStreamReader::EndDocument) {
        if (xml.reader().isStartElement() && xml.reader().name() == QLatin1String("Relationship")) {
            const QXmlStreamAttributes a = xml.reader().attributes();
            out.insert(a.value(QLatin1String("Id")).toString(),
                       {a.value(QLatin1String("Type")).toString(),
                        resolvePart(folder, a.value(QLatin1String("Target")).toString())});
        }
    }
    return out;
}

QString targetOfType(const QHash<QString, Relationship> &rels, QLatin1String typeEnd)
{
    for (const Relationship &r : rels)
        if (r.type.endsWith(typeEnd))
            return r.target;
    return QString();
}

// The r:id of the first <sheet> of the workbook part (its tab order).
QString firstSheetId(XmlSplice &xml)
{
    while (xml.next() != QXmlStreamReader::EndDocument) {
        if (!xml.reader().isStartElement() || xml.reader().name() != QLatin1String("sheet"))
            continue;
        for (const QXmlStreamAttribute &a : xml.reader().attributes())
            if (a.name() == QLatin1String("id") && !a.namespaceUri().isEmpty())
                return a.value().toString();
    }
    xml.fail(QStringLiteral("the workbook has no worksheet"));
}

// The text of an <si> or <is> element: its <t> texts, leaving out phonetic runs (<rPh>).
QString richText(XmlSplice &xml)
{
    QString text;
    int depth = 1;
    int skipDepth = 0;
    bool inText = false;
    while (depth > 0) {
        switch (xml.next()) {
        case QXmlStreamReader::StartElement:
            ++depth;
            if (xml.reader().name() == QLatin1String("rPh") && skipDepth == 0)
                skipDepth = depth;
            inText = xml.reader().name() == QLatin1String("t") && skipDepth == 0;
            break;
        case QXmlStreamReader::EndElement:
            if (depth == skipDepth)
                skipDepth = 0;
            --depth;
            inText = false;
            break;
        case QXmlStreamReader::Characters:
            if (inText)
                text += xml.reader().text();
            break;
        case QXmlStreamReader::EndDocument:
            xml.fail(QStringLiteral("the document ends inside a text"));
        default:
            break;
        }
    }
    return text;
}

QStringList sharedStrings(const ZipArchive &zip, const QString &part)
{
    QStringList out;
    if (part.isEmpty() || !zip.contains(part))
        return out;
    XmlSplice xml(zip.entry(part), part);
    while (xml.next() != QXmlStreamReader::EndDocument)
        if (xml.reader().isStartElement() && xml.reader().name() == QLatin1String("si"))
            out << richText(xml);
    return out;
}

// "M12" -> column 13, row 12; zeros when the reference is not one.
QPair<int, int> cellReference(QStringView ref)
{
    static const QRegularExpression pattern(QStringLiteral("^\\$?([A-Za-z]{1,3})\\$?([0-9]{1,7})$"));
    const QRegularExpressionMatch m = pattern.match(ref.toString());
    if (!m.hasMatch())
        return {0, 0};
    return {Workbook::columnNumber(m.capturedView(1)), m.capturedView(2).toInt()};
}

} // namespace

void XlsxWorkbook::readStructure(const ZipArchive &zip)
{
    QString workbookPart = targetOfType(relationships(zip, QString()), QLatin1String("/officeDocument"));
    if (workbookPart.isEmpty())
        workbookPart = QStringLiteral("xl/workbook.xml");
    if (!zip.contains(workbookPart))
        malformed(QStringLiteral("the archive has no workbook part (it is not an .xlsx workbook)"));
    const QHash<QString, Relationship> rels = relationships(zip, workbookPart);
    XmlSplice workbookXml(zip.entry(workbookPart), workbookPart);
    const QString sheetId = firstSheetId(workbookXml);
    m_sheetPart = rels.value(sheetId).target;
    if (m_sheetPart.isEmpty() || !zip.contains(m_sheetPart))
        malformed(QStringLiteral("the first worksheet is missing from the archive"));
    m_sharedStrings = sharedStrings(zip, targetOfType(rels, QLatin1String("/sharedStrings")));
}

void XlsxWorkbook::parse(const QByteArray &bytes)
{
    m_sheetPart.clear();
    m_sharedStrings.clear();
    const ZipArchive zip(bytes);
    readStructure(zip);
    XmlSplice xml(zip.entry(m_sheetPart), m_sheetPart);
    scan(xml, this);
}

QList<XlsxWorkbook::RowSpan> XlsxWorkbook::scan(XmlSplice &xml, XlsxWorkbook *sink) const
{
    QList<RowSpan> rows;
    int previousRow = 0;
    bool inSheetData = false;
    while (xml.next() != QXmlStreamReader::EndDocument) {
        const QStringView name = xml.reader().name();
        if (xml.reader().isStartElement() && name == QLatin1String("sheetData")) {
            inSheetData = true;
        } else if (xml.reader().isEndElement() && name == QLatin1String("sheetData")) {
            inSheetData = false;
        } else if (inSheetData && xml.reader().isStartElement() && name == QLatin1String("row")) {
            rows << scanRow(xml, previousRow, sink);
            previousRow = rows.last().row;
        }
    }
    return rows;
}

XlsxWorkbook::RowSpan XlsxWorkbook::scanRow(XmlSplice &xml, int previousRow, XlsxWorkbook *sink) const
{
    RowSpan row;
    const QStringView r = xml.reader().attributes().value(QLatin1String("r"));
    row.row = r.isEmpty() ? previousRow + 1 : r.toInt();
    if (row.row <= previousRow)
        xml.fail(QStringLiteral("row ") + r.toString() + QStringLiteral(" is out of order"));
    row.start = xml.tagStart();
    row.prefix = xml.reader().prefix().toString();
    const qint64 openEnd = xml.tokenEnd();
    int previousColumn = 0;
    while (xml.nextChild()) {
        if (xml.reader().name() == QLatin1String("c")) {
            row.cells << scanCell(xml, row.row, previousColumn, sink);
            previousColumn = row.cells.last().column;
        } else {
            xml.reader().skipCurrentElement();
        }
    }
    row.closeStart = xml.tokenEnd() == openEnd ? -1 : xml.tagStart();
    row.end = xml.tokenEnd();
    return row;
}

XlsxWorkbook::CellSpan XlsxWorkbook::scanCell(XmlSplice &xml, int row, int previousColumn, XlsxWorkbook *sink) const
{
    CellSpan cell;
    const QXmlStreamAttributes a = xml.reader().attributes();
    const QStringView ref = a.value(QLatin1String("r"));
    const QPair<int, int> at = cellReference(ref);
    cell.column = ref.isEmpty() ? previousColumn + 1 : at.first;
    if (cell.column <= previousColumn || (!ref.isEmpty() && at.second != row))
        xml.fail(QStringLiteral("cell ") + ref.toString() + QStringLiteral(" is out of place"));
    cell.style = a.value(QLatin1String("s")).toString();
    cell.start = xml.tagStart();
    const QVariant value = cellValue(xml, a.value(QLatin1String("t")).toString());
    cell.end = xml.tokenEnd();
    if (sink)
        sink->store(row, cell.column, value);
    return cell;
}

QVariant XlsxWorkbook::cellValue(XmlSplice &xml, const QString &type) const
{
    QString v;
    QString inlineText;
    while (xml.nextChild()) {
        if (xml.reader().name() == QLatin1String("v"))
            v = xml.reader().readElementText();
        else if (xml.reader().name() == QLatin1String("is"))
            inlineText = richText(xml);
        else
            xml.reader().skipCurrentElement();
        if (xml.reader().hasError())
            xml.fail(xml.reader().errorString());
    }
    if (type == QLatin1String("s")) {
        bool ok = false;
        const int index = v.toInt(&ok);
        if (!ok || index < 0 || index >= m_sharedStrings.size())
            xml.fail(QStringLiteral("a cell names a shared text that does not exist"));
        return m_sharedStrings.at(index);
    }
    if (type == QLatin1String("inlineStr"))
        return inlineText;
    if (type == QLatin1String("b"))
        return v.isEmpty() ? QVariant() : QVariant(v.trimmed() == QLatin1String("1"));
    if (type == QLatin1String("str") || type == QLatin1String("e") || type == QLatin1String("d"))
        return v;
    bool ok = false;
    const double number = v.toDouble(&ok);
    return ok ? QVariant(number) : QVariant(v);
}

QString XlsxWorkbook::cellXml(const RowSpan &row, int column, const QString &style, const QString &text)
{
    const QString c = XmlSplice::qualified(row.prefix, "c");
    QString xml = QLatin1Char('<') + c + QStringLiteral(" r=\"") + columnName(column) + QString::number(row.row)
        + QLatin1Char('"');
    if (!style.isEmpty())
        xml += QStringLiteral(" s=\"") + XmlSplice::escaped(style, true) + QLatin1Char('"');
    if (text.isEmpty())
        return xml + QStringLiteral("/>");
    const QString is = XmlSplice::qualified(row.prefix, "is");
    const QString t = XmlSplice::qualified(row.prefix, "t");
    return xml + QStringLiteral(" t=\"inlineStr\"><") + is + QStringLiteral("><") + t
        + QStringLiteral(" xml:space=\"preserve\">") + XmlSplice::escaped(text, false) + QStringLiteral("</") + t
        + QStringLiteral("></") + is + QStringLiteral("></") + c + QLatin1Char('>');
}

void XlsxWorkbook::editRow(XmlSplice &xml, const RowSpan &row, const QMap<int, QString> &edits)
{
    QString appended; // cells that go after every existing one
    for (auto e = edits.cbegin(); e != edits.cend(); ++e) {
        const auto cell = std::find_if(row.cells.cbegin(), row.cells.cend(),
                                       [&](const CellSpan &c) { return c.column >= e.key(); });
        if (cell != row.cells.cend() && cell->column == e.key())
            xml.replace(cell->start, cell->end, cellXml(row, e.key(), cell->style, e.value()));
        else if (e.value().isEmpty())
            continue; // nothing there, nothing to empty
        else if (cell != row.cells.cend())
            xml.replace(cell->start, cell->start, cellXml(row, e.key(), QString(), e.value()));
        else
            appended += cellXml(row, e.key(), QString(), e.value());
    }
    if (appended.isEmpty())
        return;
    if (row.closeStart >= 0) {
        xml.replace(row.closeStart, row.closeStart, appended);
    } else {
        // <row r="5"/> opens up to hold its first cells.
        xml.replace(row.end - 2, row.end,
                    QLatin1Char('>') + appended + QStringLiteral("</") + XmlSplice::qualified(row.prefix, "row")
                        + QLatin1Char('>'));
    }
}

QByteArray XlsxWorkbook::rewrite(const QByteArray &original, const QMap<int, QMap<int, QString>> &edits) const
{
    const ZipArchive zip(original);
    XmlSplice xml(zip.entry(m_sheetPart), m_sheetPart);
    const QList<RowSpan> rows = scan(xml, nullptr);
    for (auto e = edits.cbegin(); e != edits.cend(); ++e) {
        const auto row = std::find_if(rows.cbegin(), rows.cend(), [&](const RowSpan &r) { return r.row == e.key(); });
        if (row != rows.cend()) {
            editRow(xml, *row, e.value());
        } else if (std::any_of(e.value().cbegin(), e.value().cend(), [](const QString &t) { return !t.isEmpty(); })) {
            xml.fail(QStringLiteral("row ") + QString::number(e.key()) + QStringLiteral(" is not in the worksheet"));
        }
    }
    return zip.replaced(m_sheetPart, xml.result());
}

} // namespace quillet

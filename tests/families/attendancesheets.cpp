#include "attendancesheets.h"

#include <quazip/quazip.h>
#include <quazip/quazipfile.h>
#include <quazip/quazipnewinfo.h>

#include <QBuffer>
#include <QFile>
#include <QStringList>
#include <QTest>

namespace quillet::test {

namespace {

const char *const kHeaders[10] = {"Mon AM", "Mon PM", "Tue AM", "Tue PM", "Wed AM",
                                  "Wed PM", "Thu AM", "Thu PM", "Fri AM", "Fri PM"};
constexpr int kMark = 13; // column M
constexpr int kNote = 14; // column N

QString esc(QString text)
{
    return text.replace(u'&', QStringLiteral("&amp;")).replace(u'<', QStringLiteral("&lt;"))
        .replace(u'>', QStringLiteral("&gt;")).replace(u'"', QStringLiteral("&quot;"));
}

QString ref(int column, int row)
{
    return QString(QChar(u'A' + column - 1)) + QString::number(row);
}

int trueCount(const QString &days)
{
    return int(days.count(u'1'));
}

// Interned texts of an .xlsx, in order of first use.
struct SharedStrings
{
    QStringList list;
    int index(const QString &text)
    {
        if (!list.contains(text))
            list << text;
        return int(list.indexOf(text));
    }
    QString cell(int column, int row, const QString &text, const char *style = nullptr)
    {
        return QStringLiteral("<c r=\"%1\"%2 t=\"s\"><v>%3</v></c>")
            .arg(ref(column, row), style ? QStringLiteral(" s=\"%1\"").arg(QLatin1String(style)) : QString())
            .arg(index(text));
    }
};

QString xlsxRow(const SheetRow &r, SharedStrings &strings)
{
    QString xml = QStringLiteral("<row r=\"%1\">").arg(r.row);
    const bool header = r.row == 1;
    // One name as an inline string, as some generators write them.
    xml += r.name == QLatin1String("Ella Stone")
        ? QStringLiteral("<c r=\"A%1\" t=\"inlineStr\"><is><t>Ella Stone</t></is></c>").arg(r.row)
        : strings.cell(1, r.row, r.name, header ? "1" : nullptr);
    for (int i = 0; i < 10; ++i) {
        if (header) {
            xml += strings.cell(2 + i, r.row, QLatin1String(kHeaders[i]), "1");
        } else if (i < r.days.size() && r.days.at(i) != u' ') {
            // Row 10 carries numbers, the others booleans.
            xml += QStringLiteral("<c r=\"%1\"%2><v>%3</v></c>")
                       .arg(ref(2 + i, r.row), r.row == 10 ? QString() : QStringLiteral(" t=\"b\""), r.days.at(i));
        }
    }
    if (!header && !r.days.isEmpty())
        xml += QStringLiteral("<c r=\"L%1\"><f>COUNTIF(B%1:K%1,TRUE)</f><v>%2</v></c>").arg(r.row).arg(trueCount(r.days));
    if (!r.mark.isEmpty())
        xml += strings.cell(kMark, r.row, r.mark, header ? "1" : nullptr);
    else if (r.row == 7)
        xml += QStringLiteral("<c r=\"M7\" s=\"2\"/>"); // a styled, empty cell
    if (!r.note.isEmpty())
        xml += strings.cell(kNote, r.row, r.note);
    return xml + QStringLiteral("</row>");
}

const char kXmlDecl[] = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\r\n";
const char kMainNs[] = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
const char kRelNs[] = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";

QByteArray xlsxSheet(const QString &sheetData)
{
    return (QLatin1String(kXmlDecl) + QStringLiteral("<worksheet xmlns=\"%1\" xmlns:r=\"%2\"><dimension ref=\"A1:N101\"/>"
                                                   "<sheetViews><sheetView workbookViewId=\"0\"/></sheetViews>"
                                                   "<cols><col min=\"1\" max=\"1\" width=\"24\" customWidth=\"1\"/></cols>"
                                                   "<sheetData>%3</sheetData>"
                                                   "<pageMargins left=\"0.7\" right=\"0.7\" top=\"0.75\" bottom=\"0.75\" "
                                                   "header=\"0.3\" footer=\"0.3\"/></worksheet>")
                                        .arg(QLatin1String(kMainNs), QLatin1String(kRelNs), sheetData))
        .toUtf8();
}

QByteArray xlsxStyles()
{
    return (QLatin1String(kXmlDecl)
            + QStringLiteral(
                "<styleSheet xmlns=\"%1\"><fonts count=\"2\"><font><sz val=\"11\"/><name val=\"Calibri\"/></font>"
                "<font><b/><sz val=\"11\"/><name val=\"Calibri\"/></font></fonts><fills count=\"2\"><fill><patternFill "
                "patternType=\"none\"/></fill><fill><patternFill patternType=\"gray125\"/></fill></fills><borders "
                "count=\"1\"><border><left/><right/><top/><bottom/><diagonal/></border></borders><cellStyleXfs "
                "count=\"1\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\"/></cellStyleXfs><cellXfs "
                "count=\"3\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\" xfId=\"0\"/><xf numFmtId=\"0\" "
                "fontId=\"1\" fillId=\"0\" borderId=\"0\" xfId=\"0\" applyFont=\"1\"/><xf numFmtId=\"0\" fontId=\"0\" "
                "fillId=\"1\" borderId=\"0\" xfId=\"0\" applyFill=\"1\"/></cellXfs></styleSheet>")
                  .arg(QLatin1String(kMainNs)))
        .toUtf8();
}

// The parts of an .xlsx that do not depend on its rows: content types, relationships, the
// workbook with its two sheets, and the styles.
QList<QPair<QString, QByteArray>> xlsxPackage()
{
    const QString types = QLatin1String(kXmlDecl) + QStringLiteral(
        "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
        "<Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
        "<Default Extension=\"xml\" ContentType=\"application/xml\"/>"
        "<Override PartName=\"/xl/workbook.xml\" ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml\"/>"
        "<Override PartName=\"/xl/worksheets/sheet1.xml\" ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml\"/>"
        "<Override PartName=\"/xl/worksheets/sheet2.xml\" ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml\"/>"
        "<Override PartName=\"/xl/styles.xml\" ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.styles+xml\"/>"
        "<Override PartName=\"/xl/sharedStrings.xml\" ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.sharedStrings+xml\"/>"
        "</Types>");
    const QString rootRels = QLatin1String(kXmlDecl) + QStringLiteral(
        "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
        "<Relationship Id=\"rId1\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument\" Target=\"xl/workbook.xml\"/>"
        "</Relationships>");
    // The sheets are listed Days first although their relationships run the other way round.
    const QString workbook = QLatin1String(kXmlDecl) + QStringLiteral(
        "<workbook xmlns=\"%1\" xmlns:r=\"%2\"><sheets><sheet name=\"Days\" sheetId=\"1\" r:id=\"rId2\"/>"
        "<sheet name=\"Notes\" sheetId=\"2\" r:id=\"rId1\"/></sheets></workbook>").arg(QLatin1String(kMainNs), QLatin1String(kRelNs));
    const QString workbookRels = QLatin1String(kXmlDecl) + QStringLiteral(
        "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
        "<Relationship Id=\"rId1\" Type=\"%1/worksheet\" Target=\"worksheets/sheet2.xml\"/>"
        "<Relationship Id=\"rId2\" Type=\"%1/worksheet\" Target=\"worksheets/sheet1.xml\"/>"
        "<Relationship Id=\"rId3\" Type=\"%1/styles\" Target=\"styles.xml\"/>"
        "<Relationship Id=\"rId4\" Type=\"%1/sharedStrings\" Target=\"sharedStrings.xml\"/>"
        "</Relationships>").arg(QLatin1String(kRelNs));
    return {{QStringLiteral("[Content_Types].xml"), types.toUtf8()},
            {QStringLiteral("_rels/.rels"), rootRels.toUtf8()},
            {QStringLiteral("xl/workbook.xml"), workbook.toUtf8()},
            {QStringLiteral("xl/_rels/workbook.xml.rels"), workbookRels.toUtf8()},
            {QStringLiteral("xl/styles.xml"), xlsxStyles()}};
}

} // namespace

QList<SheetRow> attendanceRows()
{
    return {
        {1, QStringLiteral("Child"), QString(), QStringLiteral("Found"), QString()},
        {2, QStringLiteral("Jack Smith"), QStringLiteral("1000000000"), QString(), QString()},
        {3, QStringLiteral("Jill Smith"), QStringLiteral("0000000001"), QStringLiteral("y"), QString()},
        {4, QStringLiteral("Tom & Ann Brown"), QStringLiteral("0011000000"), QString(), QString()},
        {5, QStringLiteral("Tom Brown"), QStringLiteral("0000100000"), QStringLiteral("y"), QString()},
        {7, QStringLiteral("  Sean O'Brien "), QStringLiteral("1101000000"), QString(), QString()},
        {8, QStringLiteral("Ella Stone"), QStringLiteral("0000001000"), QString(), QStringLiteral("new")},
        {9, QStringLiteral("Old Family"), QStringLiteral("1111111111"), QString(), QString()},
        {10, QStringLiteral("Nobody Known"), QStringLiteral("00000 0000"), QStringLiteral("y"), QString()},
        {11, QStringLiteral("Brown, \"Tommy\""), QStringLiteral("0000000000"), QString(), QString()},
        {101, QStringLiteral("Late Child"), QStringLiteral("1111111111"), QString(), QString()},
    };
}

QByteArray makeXlsx(const QList<SheetRow> &rows)
{
    SharedStrings strings;
    QString sheetData;
    for (const SheetRow &r : rows)
        sheetData += xlsxRow(r, strings);
    const QByteArray sheet1 = xlsxSheet(sheetData);
    const QByteArray sheet2 = xlsxSheet(strings.cell(1, 1, QStringLiteral("Tom Brown"))
                                            .prepend(QStringLiteral("<row r=\"1\">")) + QStringLiteral("</row>"));
    QString shared = QLatin1String(kXmlDecl) + QStringLiteral("<sst xmlns=\"%1\" count=\"%2\" uniqueCount=\"%2\">")
                                                  .arg(QLatin1String(kMainNs)).arg(strings.list.size());
    for (const QString &s : std::as_const(strings.list))
        shared += QStringLiteral("<si><t xml:space=\"preserve\">") + esc(s) + QStringLiteral("</t></si>");
    shared += QStringLiteral("</sst>");
    QList<QPair<QString, QByteArray>> parts = xlsxPackage();
    parts.append({QStringLiteral("xl/sharedStrings.xml"), shared.toUtf8()});
    parts.append({QStringLiteral("xl/worksheets/sheet1.xml"), sheet1});
    parts.append({QStringLiteral("xl/worksheets/sheet2.xml"), sheet2});
    return makeZip(parts);
}

namespace {

const char kOdsNamespaces[] =
    "xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\" "
    "xmlns:style=\"urn:oasis:names:tc:opendocument:xmlns:style:1.0\" "
    "xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\" "
    "xmlns:table=\"urn:oasis:names:tc:opendocument:xmlns:table:1.0\" "
    "xmlns:fo=\"urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0\" "
    "xmlns:of=\"urn:oasis:names:tc:opendocument:xmlns:of:1.2\" office:version=\"1.2\"";

QString odsString(const QString &text, const char *style = nullptr)
{
    QString para = esc(text);
    para.replace(u' ', QStringLiteral("<text:s/>")); // every blank kept, as the format wants it
    return QStringLiteral("<table:table-cell%1 office:value-type=\"string\"><text:p>%2</text:p></table:table-cell>")
        .arg(style ? QStringLiteral(" table:style-name=\"%1\"").arg(QLatin1String(style)) : QString(), para);
}

// Runs of empty cells are written once with a repeat count, as spreadsheet programs do.
QString odsRow(const SheetRow &r)
{
    QStringList cells(kNote + 1);
    const bool header = r.row == 1;
    cells[1] = odsString(r.name, header ? "ce1" : nullptr);
    for (int i = 0; i < 10; ++i) {
        if (header)
            cells[2 + i] = odsString(QLatin1String(kHeaders[i]), "ce1");
        else if (i < r.days.size() && r.days.at(i) != u' ')
            cells[2 + i] = QStringLiteral("<table:table-cell office:value-type=\"boolean\" office:boolean-value=\"%1\">"
                                          "<text:p>%2</text:p></table:table-cell>")
                               .arg(r.days.at(i) == u'1' ? QStringLiteral("true") : QStringLiteral("false"),
                                    r.days.at(i) == u'1' ? QStringLiteral("TRUE") : QStringLiteral("FALSE"));
    }
    if (!header && !r.days.isEmpty())
        cells[12] = QStringLiteral("<table:table-cell table:formula=\"of:=COUNTIF([.B%1:.K%1];1)\" "
                                   "office:value-type=\"float\" office:value=\"%2\"><text:p>%2</text:p></table:table-cell>")
                        .arg(r.row).arg(trueCount(r.days));
    if (!r.mark.isEmpty())
        cells[kMark] = odsString(r.mark);
    if (!r.note.isEmpty())
        cells[kNote] = odsString(r.note);
    QString xml = QStringLiteral("<table:table-row table:style-name=\"ro1\">");
    int empty = 0;
    auto flush = [&](int count) {
        if (count > 1)
            xml += QStringLiteral("<table:table-cell table:number-columns-repeated=\"%1\"/>").arg(count);
        else if (count == 1)
            xml += QStringLiteral("<table:table-cell/>");
    };
    for (int c = 1; c <= kNote; ++c) {
        if (cells[c].isEmpty()) {
            ++empty;
            continue;
        }
        flush(empty);
        empty = 0;
        xml += cells[c];
    }
    flush(empty + 1024 - kNote);
    return xml + QStringLiteral("</table:table-row>");
}

QString odsBlankRows(int count)
{
    return QStringLiteral("<table:table-row table:style-name=\"ro1\"%1><table:table-cell "
                          "table:number-columns-repeated=\"1024\"/></table:table-row>")
        .arg(count > 1 ? QStringLiteral(" table:number-rows-repeated=\"%1\"").arg(count) : QString());
}

} // namespace

QByteArray makeOds(const QList<SheetRow> &rows)
{
    QString table = QStringLiteral("<table:table table:name=\"Days\" table:style-name=\"ta1\">"
                                   "<table:table-column table:style-name=\"co1\" table:number-columns-repeated=\"1024\"/>");
    int next = 1;
    for (const SheetRow &r : rows) {
        if (r.row > next)
            table += odsBlankRows(r.row - next);
        table += odsRow(r);
        next = r.row + 1;
    }
    table += odsBlankRows(1048576 - next + 1) + QStringLiteral("</table:table>");
    const QString notes = QStringLiteral("<table:table table:name=\"Notes\"><table:table-column/><table:table-row>")
        + odsString(QStringLiteral("Tom Brown")) + QStringLiteral("</table:table-row></table:table>");
    const QString content = QLatin1String(kXmlDecl) + QStringLiteral("<office:document-content ") + QLatin1String(kOdsNamespaces)
        + QStringLiteral("><office:automatic-styles><style:style style:name=\"ce1\" style:family=\"table-cell\">"
                         "<style:text-properties fo:font-weight=\"bold\"/></style:style></office:automatic-styles>"
                         "<office:body><office:spreadsheet>")
        + table + notes + QStringLiteral("</office:spreadsheet></office:body></office:document-content>");
    const QString manifest = QLatin1String(kXmlDecl) + QStringLiteral(
        "<manifest:manifest xmlns:manifest=\"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0\" manifest:version=\"1.2\">"
        "<manifest:file-entry manifest:full-path=\"/\" manifest:media-type=\"application/vnd.oasis.opendocument.spreadsheet\"/>"
        "<manifest:file-entry manifest:full-path=\"content.xml\" manifest:media-type=\"text/xml\"/>"
        "<manifest:file-entry manifest:full-path=\"styles.xml\" manifest:media-type=\"text/xml\"/>"
        "</manifest:manifest>");
    const QString styles = QLatin1String(kXmlDecl) + QStringLiteral("<office:document-styles ") + QLatin1String(kOdsNamespaces)
        + QStringLiteral("/>");
    return makeZip({{QStringLiteral("mimetype"), QByteArray("application/vnd.oasis.opendocument.spreadsheet")},
                    {QStringLiteral("content.xml"), content.toUtf8()},
                    {QStringLiteral("styles.xml"), styles.toUtf8()},
                    {QStringLiteral("META-INF/manifest.xml"), manifest.toUtf8()}});
}

QByteArray makeCsv(const QList<SheetRow> &rows, char separator)
{
    auto field = [&](const QString &text) {
        QByteArray bytes = text.toUtf8();
        if (bytes.contains(separator) || bytes.contains('"'))
            bytes = '"' + bytes.replace("\"", "\"\"") + '"';
        return bytes;
    };
    QByteArray out;
    int next = 1;
    for (const SheetRow &r : rows) {
        for (; next < r.row; ++next)
            out += "\r\n"; // a blank row
        QList<QByteArray> fields{field(r.name)};
        for (int i = 0; i < 10; ++i) {
            const QChar d = i < r.days.size() ? r.days.at(i) : u' ';
            fields << (r.row == 1 ? QByteArray(kHeaders[i])
                                  : d == u'1' ? QByteArray("TRUE") : d == u'0' ? QByteArray("FALSE") : QByteArray());
        }
        fields << (r.row > 1 && !r.days.isEmpty() ? QByteArray::number(trueCount(r.days)) : QByteArray());
        fields << field(r.mark) << field(r.note);
        while (fields.size() > 1 && fields.last().isEmpty())
            fields.removeLast(); // short rows, as many programs write them
        out += fields.join(separator) + "\r\n";
        next = r.row + 1;
    }
    return out;
}

QByteArray attendanceSample(const QString &format, char csvSeparator)
{
    if (format == QLatin1String("xlsx"))
        return makeXlsx(attendanceRows());
    if (format == QLatin1String("ods"))
        return makeOds(attendanceRows());
    if (format == QLatin1String("csv"))
        return makeCsv(attendanceRows(), csvSeparator);
    QFile file(QStringLiteral(QUILLET_FAMILIES_TESTDATA "/attendance.xls"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void addFormatRows(std::initializer_list<const char *> formats)
{
    QTest::addColumn<QString>("format");
    for (const char *f : formats)
        QTest::newRow(f) << QString::fromLatin1(f);
}

QMap<QString, QByteArray> zipEntries(const QByteArray &archive)
{
    QMap<QString, QByteArray> out;
    QByteArray bytes = archive;
    QBuffer buffer(&bytes);
    QuaZip zip(&buffer);
    if (!zip.open(QuaZip::mdUnzip))
        return out;
    for (bool more = zip.goToFirstFile(); more; more = zip.goToNextFile()) {
        QuaZipFile file(&zip);
        if (file.open(QIODevice::ReadOnly))
            out.insert(zip.getCurrentFileName(), file.readAll());
    }
    return out;
}

QByteArray makeZip(const QList<QPair<QString, QByteArray>> &entries)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QuaZip zip(&buffer);
    zip.open(QuaZip::mdCreate);
    for (const auto &entry : entries) {
        QuaZipFile file(&zip);
        const bool stored = entry.first == QLatin1String("mimetype");
        file.open(QIODevice::WriteOnly, QuaZipNewInfo(entry.first), nullptr, 0, stored ? 0 : Z_DEFLATED,
                  stored ? 0 : Z_DEFAULT_COMPRESSION);
        file.write(entry.second);
        file.close();
    }
    zip.close();
    return bytes;
}

} // namespace quillet::test

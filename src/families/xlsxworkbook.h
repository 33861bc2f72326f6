#pragma once

#include "workbook.h"

#include <QStringList>

namespace quillet {

class XmlSplice;

// An Office Open XML workbook (.xlsx): a zip archive of XML parts. The first sheet of the
// workbook's tab order is read, with its shared strings. Writing changes only that sheet's part,
// and in it only the edited cells (as inline strings, keeping each cell's style); the other parts
// are copied as they are stored.
class XlsxWorkbook final : public Workbook
{
public:
    bool isWritable() const override { return true; }

    // The archive path of the first worksheet, once read (for tests that compare parts).
    const QString &sheetPart() const { return m_sheetPart; }

protected:
    void parse(const QByteArray &bytes) override;
    QByteArray rewrite(const QByteArray &original, const QMap<int, QMap<int, QString>> &edits) const override;

private:
    struct CellSpan
    {
        int column = 0;
        qint64 start = 0;
        qint64 end = 0;
        QString style;
    };
    struct RowSpan
    {
        int row = 0;
        qint64 start = 0;
        qint64 end = 0;
        qint64 closeStart = -1; // where "</row>" begins; -1 for a self-closing row
        QString prefix;
        QList<CellSpan> cells;
    };

    // Reads every row of the sheet part and returns where rows and cells are; with a sink, the
    // cells' values are stored into it.
    QList<RowSpan> scan(XmlSplice &xml, XlsxWorkbook *sink) const;
    RowSpan scanRow(XmlSplice &xml, int previousRow, XlsxWorkbook *sink) const;
    CellSpan scanCell(XmlSplice &xml, int row, int previousColumn, XlsxWorkbook *sink) const;
    QVariant cellValue(XmlSplice &xml, const QString &type) const;
    void readStructure(const class ZipArchive &zip);
    static QString cellXml(const RowSpan &row, int column, const QString &style, const QString &text);
    static void editRow(XmlSplice &xml, const RowSpan &row, const QMap<int, QString> &edits);

    QString m_sheetPart;
    QStringList m_sharedStrings;
};

} // namespace quillet

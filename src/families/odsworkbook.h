#pragma once

#include "workbook.h"

#include <QXmlStreamAttributes>

namespace quillet {

class XmlSplice;

// An OpenDocument spreadsheet (.ods): a zip archive whose content.xml holds the tables. The first
// table is read. Rows and cells may stand for several through their repeat counts; writing splits
// such a run around the edited cell and changes nothing else in content.xml, and copies every
// other part (the uncompressed "mimetype" first among them) as it is stored.
class OdsWorkbook final : public Workbook
{
public:
    bool isWritable() const override { return true; }

protected:
    void parse(const QByteArray &bytes) override;
    QByteArray rewrite(const QByteArray &original, const QMap<int, QMap<int, QString>> &edits) const override;

private:
    // The prefixes the document declares for the three namespaces written into new cells.
    struct Prefixes
    {
        QString office;
        QString table;
        QString text;
    };
    struct Element
    {
        QString name; // qualified
        QXmlStreamAttributes attributes;
        qint64 start = 0;
        qint64 openEnd = 0;
        qint64 end = 0;
        bool selfClosing = false;
    };
    struct CellSpan
    {
        Element element;
        qint64 column = 0; // the first column it stands for
        qint64 repeat = 1;
    };
    struct RowSpan
    {
        Element element;
        qint64 row = 0;
        qint64 repeat = 1;
        QList<CellSpan> cells;
    };

    QList<RowSpan> scan(XmlSplice &xml, Prefixes &prefixes, OdsWorkbook *sink) const;
    RowSpan scanRow(XmlSplice &xml, qint64 row, OdsWorkbook *sink) const;
    static QVariant cellValue(XmlSplice &xml, const QXmlStreamAttributes &attributes);
    // The element's text with its repeat attribute set to `repeat` (left out for 1).
    static QString repeated(const XmlSplice &xml, const Element &e, const QString &attribute, qint64 repeat);
    static QString editedRow(const XmlSplice &xml, const RowSpan &row, const QMap<int, QString> &edits,
                             const Prefixes &p);
    static QString rowRun(const XmlSplice &xml, const RowSpan &row, const QMap<int, QMap<int, QString>> &edits,
                          const Prefixes &p);
};

} // namespace quillet

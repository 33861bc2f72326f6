#pragma once

#include "workbook.h"

namespace quillet {

// A comma-separated text (.csv) as spreadsheet programs write it: one row per record, fields
// separated by commas (or, as some locales write it, semicolons or tabs; the first line decides),
// fields in double quotes where they hold a separator, a quote ("") or a line break. UTF-8 with or
// without a byte-order mark; text that is not valid UTF-8 is read as Latin-1.
//
// Writing changes the bytes of the edited fields only (adding separators where a row is shorter),
// so line ends, quoting and every other field stay as they were.
class CsvWorkbook final : public Workbook
{
public:
    bool isWritable() const override { return true; }

protected:
    void parse(const QByteArray &bytes) override;
    QByteArray rewrite(const QByteArray &original, const QMap<int, QMap<int, QString>> &edits) const override;

private:
    struct Field
    {
        qsizetype start = 0; // byte span, quotes included
        qsizetype end = 0;
    };
    struct Record
    {
        QList<Field> fields;
        qsizetype end = 0; // where its line end begins
    };

    // Splits the bytes into records (all of them, or up to `maxRecords`).
    static QList<Record> records(const QByteArray &bytes, char separator, qsizetype maxRecords);
    static char separatorOf(const QByteArray &bytes);
    static qsizetype bodyStart(const QByteArray &bytes);
    QString decoded(const QByteArray &bytes, const Field &field) const;
    QByteArray encoded(const QString &text, char separator) const;

    bool m_utf8 = true;
    char m_separator = ',';
};

} // namespace quillet

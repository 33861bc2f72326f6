// The office's workbook, any bytes, in each of the four formats (the first byte chooses): read
// without ever failing other than by the format error; a writable one marked in column M and
// written again reads back with the marks and every other cell as it was.
// The .xls is read in a child process by the program; here its reading (libfreexl) runs in-process,
// and what it prints must always be understood by the program's side. With the first byte's high
// bit set, the .xls input is instead taken as a child's printed output, for the program's parser.
#include "fuzzsupport.h"

#include "families/workbook.h"
#include "families/xlsworkbook.h"
#include "lib/error.h"
#include "xlsreader/xlsreading.h"

#include <QFile>

#include <string>

using namespace quillet;

int QuilletFuzzOne(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    static const char *const kNames[] = {"book.xlsx", "book.ods", "book.xls", "book.csv"};
    const QString name = QLatin1String(kNames[data[0] % 4]);
    const QByteArray bytes = fuzz::bytes(data + 1, size - 1);
    if (data[0] % 4 == 2) {
        XlsWorkbook book;
        if (data[0] & 0x80) {
            try {
                book.readPrinted(bytes);
            } catch (const Error &) {
            }
            return 0;
        }
        const QString path = fuzz::writeScratch(name, data + 1, size - 1);
        std::string printed;
        const std::string reason = xlsreader::readCells(QFile::encodeName(path).constData(), printed);
        fuzz::check(reason.empty() != printed.empty(), "a reason or the cells, never both");
        if (reason.empty()) {
            try {
                book.readPrinted(QByteArray::fromStdString(printed));
            } catch (const Error &) {
                fuzz::fail("the program does not understand the reader's output");
            }
        }
        return 0;
    }
    std::unique_ptr<Workbook> book = Workbook::forFileName(name);
    fuzz::check(book != nullptr, "every format has a reader");
    try {
        book->read(bytes);
    } catch (const Error &) {
        return 0;
    }
    if (!book->isWritable())
        return 0;
    const int rows = 6;
    QList<QString> before;
    for (int row = 1; row <= rows; ++row) {
        for (int column = 1; column <= 12; ++column)
            before << book->text(row, column);
    }
    // The import marks the rows whose name it found: rows with a text in column A.
    QList<bool> marked;
    for (int row = 1; row <= rows; ++row) {
        marked << !book->text(row, 1).trimmed().isEmpty();
        if (marked.last())
            book->setText(row, 13, QStringLiteral("y"));
    }
    QByteArray written;
    try {
        written = book->written();
    } catch (const Error &) {
        return 0; // refused with a message, the file left as it was
    }
    std::unique_ptr<Workbook> again = Workbook::forFileName(name);
    try {
        again->read(written);
    } catch (const Error &) {
        fuzz::fail("a workbook it read and marked cannot be read again");
    }
    int i = 0;
    for (int row = 1; row <= rows; ++row) {
        for (int column = 1; column <= 12; ++column)
            fuzz::check(again->text(row, column) == before.at(i++), "unmarked cells keep their values");
        if (marked.at(row - 1))
            fuzz::check(again->text(row, 13) == QStringLiteral("y"), "the mark reads back");
    }
    return 0;
}

QUILLET_FUZZ_TARGET

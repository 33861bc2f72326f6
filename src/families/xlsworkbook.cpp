#include "xlsworkbook.h"

#include "lib/error.h"

#include <QDir>
#include <QTemporaryFile>

#include <freexl.h>

namespace quillet {

namespace {

QString freexlProblem(int code)
{
    switch (code) {
    case FREEXL_INSUFFICIENT_MEMORY:
        return QStringLiteral("there is not enough memory to read it");
    case FREEXL_BIFF_WORKBOOK_NOT_FOUND:
    case FREEXL_INVALID_CFBF_HEADER:
    case FREEXL_CFBF_INVALID_SIGNATURE:
        return QStringLiteral("it is not an .xls workbook");
    case FREEXL_BIFF_ILLEGAL_SHEET_INDEX:
        return QStringLiteral("the workbook has no worksheet");
    case FREEXL_UNSUPPORTED_CHARSET:
    case FREEXL_INVALID_CHARACTER:
        return QStringLiteral("its text uses a character set that cannot be read");
    default:
        return QStringLiteral("the file is damaged (code ") + QString::number(code) + QLatin1Char(')');
    }
}

// Closes the library's handle on every way out.
struct Handle
{
    const void *handle = nullptr;
    ~Handle()
    {
        if (handle)
            freexl_close(handle);
    }
};

} // namespace

void XlsWorkbook::parse(const QByteArray &bytes)
{
    // The library reads from a path only: the bytes go through a private temporary file.
    QTemporaryFile file(QDir::tempPath() + QStringLiteral("/Qlt-XXXXXX.xls"));
    if (!file.open() || file.write(bytes) != bytes.size() || !file.flush())
        throw Error(kErrPathFileAccess, QStringLiteral("XlsWorkbook"),
                    QStringLiteral("A temporary copy cannot be written: ") + file.errorString());
    Handle h;
    const int opened = freexl_open(QFile::encodeName(file.fileName()).constData(), &h.handle);
    if (opened != FREEXL_OK)
        malformed(freexlProblem(opened));
    unsigned int info = 0;
    if (freexl_get_info(h.handle, FREEXL_BIFF_PASSWORD, &info) == FREEXL_OK && info == FREEXL_BIFF_OBFUSCATED)
        malformed(QStringLiteral("the workbook is protected with a password"));
    readSheet(h.handle);
}

void XlsWorkbook::readSheet(const void *handle)
{
    int rc = freexl_select_active_worksheet(handle, 0);
    unsigned int rows = 0;
    unsigned short columns = 0;
    if (rc == FREEXL_OK)
        rc = freexl_worksheet_dimensions(handle, &rows, &columns);
    if (rc != FREEXL_OK)
        malformed(freexlProblem(rc));
    for (unsigned int r = 0; r < rows && r < unsigned(kMaxRows); ++r) {
        for (unsigned short c = 0; c < columns && c < kMaxColumns; ++c) {
            FreeXL_CellValue value;
            rc = freexl_get_cell_value(handle, r, c, &value);
            if (rc != FREEXL_OK)
                malformed(freexlProblem(rc));
            switch (value.type) {
            case FREEXL_CELL_INT:
                store(int(r + 1), c + 1, double(value.value.int_value));
                break;
            case FREEXL_CELL_DOUBLE:
                store(int(r + 1), c + 1, value.value.double_value);
                break;
            case FREEXL_CELL_NULL:
                break;
            default: // texts, and dates and times as ISO texts
                store(int(r + 1), c + 1, QString::fromUtf8(value.value.text_value));
            }
        }
    }
}

QByteArray XlsWorkbook::rewrite(const QByteArray &original, const QMap<int, QMap<int, QString>> &) const
{
    return original; // never reached: written() refuses read-only formats
}

} // namespace quillet

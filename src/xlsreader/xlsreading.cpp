#include "xlsreading.h"

#include <freexl.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>

namespace quillet::xlsreader {

namespace {

std::string problem(int code)
{
    switch (code) {
    case FREEXL_INSUFFICIENT_MEMORY:
        return "there is not enough memory to read it";
    case FREEXL_BIFF_WORKBOOK_NOT_FOUND:
    case FREEXL_INVALID_CFBF_HEADER:
    case FREEXL_CFBF_INVALID_SIGNATURE:
        return "it is not an .xls workbook";
    case FREEXL_BIFF_ILLEGAL_SHEET_INDEX:
        return "the workbook has no worksheet";
    case FREEXL_UNSUPPORTED_CHARSET:
    case FREEXL_INVALID_CHARACTER:
        return "its text uses a character set that cannot be read";
    default:
        return "the file is damaged (code " + std::to_string(code) + ")";
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

void cell(std::string &out, unsigned row, unsigned column, char type, const char *bytes, std::size_t length)
{
    char head[64];
    std::snprintf(head, sizeof head, "%u %u %c %zu\n", row, column, type, length);
    out += head;
    out.append(bytes, length);
    out += '\n';
}

} // namespace

std::string readCells(const char *path, std::string &out)
{
    out.clear();
    Handle h;
    int rc = freexl_open(path, &h.handle);
    if (rc != FREEXL_OK)
        return problem(rc);
    unsigned int info = 0;
    if (freexl_get_info(h.handle, FREEXL_BIFF_PASSWORD, &info) == FREEXL_OK && info == FREEXL_BIFF_OBFUSCATED)
        return "the workbook is protected with a password";
    rc = freexl_select_active_worksheet(h.handle, 0);
    unsigned int rows = 0;
    unsigned short columns = 0;
    if (rc == FREEXL_OK)
        rc = freexl_worksheet_dimensions(h.handle, &rows, &columns);
    if (rc != FREEXL_OK)
        return problem(rc);
    out = kMagic;
    for (unsigned int r = 0; r < rows && r < unsigned(kMaxRows); ++r) {
        for (unsigned short c = 0; c < columns && c < kMaxColumns; ++c) {
            FreeXL_CellValue value;
            rc = freexl_get_cell_value(h.handle, r, c, &value);
            if (rc != FREEXL_OK) {
                out.clear();
                return problem(rc);
            }
            double number = 0;
            switch (value.type) {
            case FREEXL_CELL_NULL:
                continue;
            case FREEXL_CELL_INT:
                number = double(value.value.int_value);
                break;
            case FREEXL_CELL_DOUBLE:
                number = value.value.double_value;
                break;
            default: { // texts, and dates and times as ISO texts
                const char *text = value.value.text_value ? value.value.text_value : "";
                cell(out, r + 1, c + 1, 's', text, std::strlen(text));
                if (out.size() > kMaxOutput) {
                    out.clear();
                    return "the workbook holds more text than an attendance list can";
                }
                continue;
            }
            }
            std::uint64_t bits;
            static_assert(sizeof bits == sizeof number);
            std::memcpy(&bits, &number, sizeof bits);
            char hex[17];
            std::snprintf(hex, sizeof hex, "%016" PRIx64, bits);
            cell(out, r + 1, c + 1, 'n', hex, 16);
        }
    }
    out += kEnd;
    return {};
}

} // namespace quillet::xlsreader

#pragma once

#include <string>

// The reading of old binary .xls workbooks (BIFF) through libfreexl. The library is not trusted
// with damaged files, so the program never calls this itself: the small executable
// quillet-xlsreader does, and the program reads what it prints (XlsWorkbook).
//
// The printed form, all ASCII apart from the texts' bytes:
//   "QXLS 1\n"
//   per kept cell, in row-major order: "<row> <column> <type> <length>\n" then <length> bytes and "\n";
//     row 1..kMaxRows, column 1..kMaxColumns (1-based); type 'n': a number as the 16 hexadecimal
//     digits of its IEEE double bits; type 's': a text in UTF-8 (dates and times as ISO texts)
//   "end\n"
// Empty cells are left out. A workbook that cannot be read has no printed form, only a reason.
namespace quillet::xlsreader {

inline constexpr int kMaxRows = 1000;
inline constexpr int kMaxColumns = 64;
// More than a workbook of kMaxRows x kMaxColumns sensible cells can print.
inline constexpr std::size_t kMaxOutput = 32u * 1024 * 1024;
inline constexpr const char *kMagic = "QXLS 1\n";
inline constexpr const char *kEnd = "end\n";
// The executable's exit status for a workbook it refused (reason on stderr); 0 when it printed
// the cells; anything else means it did not finish as intended (a crash, a sanitizer's report).
inline constexpr int kExitRefused = 3;

// Reads the first worksheet of the .xls file at path into out, in the printed form. Returns an
// empty string when read, else the reason in a few words ("it is not an .xls workbook").
std::string readCells(const char *path, std::string &out);

} // namespace quillet::xlsreader

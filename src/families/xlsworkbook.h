#pragma once

#include "workbook.h"

namespace quillet {

// The binary workbook of older office programs (.xls, BIFF). It cannot be written: isWritable() is
// false and the import reports the rows it would have marked instead.
//
// The file is read by the executable quillet-xlsreader (libfreexl) in a child process, which prints
// the cells (xlsreader/xlsreading.h); a damaged file can at worst end that child. A child that
// crashes, hangs past the time limit or prints more or other than its form gives the format error
// "The workbook could not be read: ..." and no cells.
class XlsWorkbook final : public Workbook
{
public:
    bool isWritable() const override { return false; }

    // The reader executable: beside the running program, else the one of the build tree.
    static QString readerProgram();
    // Another reader and time limit (tests: a reader that crashes or hangs); an empty program
    // restores readerProgram() and a limit of 0 the default.
    static void setReader(const QString &program, int timeLimitMs);

    // Fills the cells from the reader's printed form; throws the format error when the form is
    // broken. Public for the fuzz target, which runs the reading in-process.
    void readPrinted(const QByteArray &printed);

protected:
    void parse(const QByteArray &bytes) override;
    QByteArray rewrite(const QByteArray &original, const QMap<int, QMap<int, QString>> &edits) const override;
};

} // namespace quillet

#pragma once

#include "workbook.h"

namespace quillet {

// The binary workbook of older office programs (.xls, BIFF), read through libfreexl. It cannot be
// written: isWritable() is false and the import reports the rows it would have marked instead.
class XlsWorkbook final : public Workbook
{
public:
    bool isWritable() const override { return false; }

protected:
    void parse(const QByteArray &bytes) override;
    QByteArray rewrite(const QByteArray &original, const QMap<int, QMap<int, QString>> &edits) const override;

private:
    void readSheet(const void *handle);
};

} // namespace quillet

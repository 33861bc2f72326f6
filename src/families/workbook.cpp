#include "workbook.h"
#include "lib/atomicwrite.h"

#include "csvworkbook.h"
#include "odsworkbook.h"
#include "xlsworkbook.h"
#include "xlsxworkbook.h"

#include "lib/error.h"

#include <QFile>
#include <QFileInfo>

#include <cmath>

namespace quillet {

namespace {

// An office workbook is a few hundred kilobytes; anything far larger is not one.
constexpr qint64 kMaxFileSize = 64 * 1024 * 1024;

const QString kSource = QStringLiteral("Workbook");

} // namespace

Workbook::~Workbook() = default;

std::unique_ptr<Workbook> Workbook::forFileName(const QString &fileName)
{
    const QString suffix = QFileInfo(fileName).suffix().toLower();
    if (suffix == QLatin1String("xlsx"))
        return std::make_unique<XlsxWorkbook>();
    if (suffix == QLatin1String("ods"))
        return std::make_unique<OdsWorkbook>();
    if (suffix == QLatin1String("xls"))
        return std::make_unique<XlsWorkbook>();
    if (suffix == QLatin1String("csv"))
        return std::make_unique<CsvWorkbook>();
    return nullptr;
}

QStringList Workbook::extensions()
{
    return {QStringLiteral("xlsx"), QStringLiteral("xls"), QStringLiteral("ods"), QStringLiteral("csv")};
}

void Workbook::load(const QString &path)
{
    QFile file(path);
    if (!file.exists())
        throw Error(kErrFileNotFound, kSource, QStringLiteral("File not found: ") + path);
    if (!file.open(QIODevice::ReadOnly))
        throw Error(kErrPathFileAccess, kSource, file.errorString() + QStringLiteral("\r\nFile: ") + path);
    if (file.size() > kMaxFileSize)
        throw Error(kErrBadFileFormat, kSource,
                    QStringLiteral("The file is too large to be a workbook\r\nFile: ") + path);
    const QByteArray bytes = file.readAll();
    try {
        read(bytes);
    } catch (const Error &e) {
        throw Error(e.number(), kSource, e.description() + QStringLiteral("\r\nFile: ") + path);
    }
}

void Workbook::save(const QString &path) const
{
    // A save-and-rename would quietly replace a file the user made read-only; respect the user's choice.
    if (QFileInfo::exists(path) && !(QFile::permissions(path) & QFileDevice::WriteOwner))
        throw Error(kErrPathFileAccess, kSource,
                    QStringLiteral("Path/File access error: the file is read-only\r\nFile: ") + path);
    const QByteArray bytes = written();
    const QString failure = WriteFileAtomically(path, bytes);
    if (!failure.isEmpty())
        throw Error(kErrPathFileAccess, kSource, failure + QStringLiteral("\r\nFile: ") + path);
}

void Workbook::read(const QByteArray &bytes)
{
    m_cells.clear();
    m_edits.clear();
    m_original = bytes;
    parse(bytes);
}

QByteArray Workbook::written() const
{
    if (!isWritable())
        throw Error(kErrPathFileAccess, kSource, QStringLiteral("Workbooks of this type cannot be written"));
    return m_edits.isEmpty() ? m_original : rewrite(m_original, m_edits);
}

QVariant Workbook::cell(int row, int column) const
{
    return m_cells.value(key(row, column));
}

QString Workbook::text(int row, int column) const
{
    const QVariant v = cell(row, column);
    switch (v.typeId()) {
    case QMetaType::Bool:
        return v.toBool() ? QStringLiteral("TRUE") : QStringLiteral("FALSE");
    case QMetaType::Double: {
        const double d = v.toDouble();
        if (std::isfinite(d) && d == std::floor(d) && std::fabs(d) < 1e15)
            return QString::number(qint64(d));
        return QString::number(d, 'g', 15);
    }
    default:
        return v.toString();
    }
}

void Workbook::setText(int row, int column, const QString &text)
{
    if (row < 1 || row > kMaxRows || column < 1 || column > kMaxColumns)
        throw Error(kLibErrorNumber, kSource,
                    QStringLiteral("Cell outside the worksheet: ") + columnName(column) + QString::number(row));
    if (cell(row, column) == QVariant(text) || (text.isEmpty() && !cell(row, column).isValid()))
        return; // unchanged cells stay out of the file's rewrite
    m_edits[row][column] = text;
    m_cells.remove(key(row, column));
    store(row, column, text);
}

void Workbook::store(int row, int column, const QVariant &value)
{
    if (row < 1 || row > kMaxRows || column < 1 || column > kMaxColumns)
        return;
    if (!value.isValid() || (value.typeId() == QMetaType::QString && value.toString().isEmpty()))
        return;
    m_cells.insert(key(row, column), value);
}

void Workbook::malformed(const QString &description)
{
    throw Error(kErrBadFileFormat, kSource, QStringLiteral("The workbook cannot be read: ") + description);
}

QString Workbook::columnName(int column)
{
    QString name;
    for (int c = column; c > 0; c = (c - 1) / 26)
        name.prepend(QChar(u'A' + (c - 1) % 26));
    return name;
}

int Workbook::columnNumber(QStringView name)
{
    int column = 0;
    for (const QChar ch : name) {
        const char16_t u = ch.toUpper().unicode();
        if (u < u'A' || u > u'Z' || column > 100000)
            return 0;
        column = column * 26 + (u - u'A' + 1);
    }
    return column;
}

} // namespace quillet

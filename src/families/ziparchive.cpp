#include "ziparchive.h"

#include "workbook.h"

#include "lib/error.h"

#include <quazip/quazip.h>
#include <quazip/quazipfile.h>
#include <quazip/quazipfileinfo.h>
#include <quazip/quazipnewinfo.h>

#include <QBuffer>

namespace quillet {

namespace {

constexpr quint16 kFlagEncrypted = 0x0001;
constexpr quint16 kFlagUtf8Names = 0x0800;

[[noreturn]] void fail(const QString &description)
{
    throw Error(kErrBadFileFormat, QStringLiteral("ZipArchive"),
                QStringLiteral("The workbook cannot be read: ") + description);
}

// Reads an open entry to its end, refusing more than the limit.
QByteArray readAll(QuaZipFile &file, const QString &name)
{
    QByteArray out;
    char chunk[65536];
    for (;;) {
        const qint64 n = file.read(chunk, sizeof chunk);
        if (n < 0)
            fail(QStringLiteral("the archive entry ") + name + QStringLiteral(" is damaged"));
        if (n == 0)
            break;
        if (out.size() + n > ZipArchive::kMaxEntrySize)
            fail(QStringLiteral("the archive entry ") + name + QStringLiteral(" is too large"));
        out.append(chunk, n);
    }
    return out;
}

// Copies one stored entry byte for byte (still compressed) into the archive being written.
void copyRaw(QuaZip &from, QuaZip &to, const QString &name)
{
    QuaZipFile in(&from);
    int method = 0;
    int level = 0;
    if (!in.open(QIODevice::ReadOnly, &method, &level, true))
        fail(QStringLiteral("the archive entry ") + name + QStringLiteral(" cannot be opened"));
    QuaZipFileInfo64 info;
    in.getFileInfo(&info);
    const QByteArray raw = readAll(in, name);
    in.close();
    QuaZipFile out(&to);
    if (!out.open(QIODevice::WriteOnly, QuaZipNewInfo(info), nullptr, info.crc, method, level, true)
        || out.write(raw) != raw.size())
        fail(QStringLiteral("the archive entry ") + name + QStringLiteral(" cannot be copied"));
    out.close();
}

void writeEntry(QuaZip &from, QuaZip &to, const QByteArray &content)
{
    QuaZipFileInfo64 info;
    from.getCurrentFileInfo(&info);
    QuaZipNewInfo newInfo(info);
    newInfo.uncompressedSize = ulong(content.size());
    QuaZipFile out(&to);
    // An entry that was stored uncompressed stays so; everything else is deflated as usual.
    const int method = info.method == 0 ? 0 : Z_DEFLATED;
    if (!out.open(QIODevice::WriteOnly, newInfo, nullptr, 0, method) || out.write(content) != content.size())
        fail(QStringLiteral("the archive entry ") + info.name + QStringLiteral(" cannot be written"));
    out.close();
}

} // namespace

ZipArchive::ZipArchive(const QByteArray &bytes)
    : m_bytes(bytes)
{
    QBuffer buffer(&m_bytes);
    QuaZip zip(&buffer);
    if (!zip.open(QuaZip::mdUnzip))
        fail(QStringLiteral("it is not a zip archive, or the archive is damaged"));
    for (bool more = zip.goToFirstFile(); more; more = zip.goToNextFile()) {
        QuaZipFileInfo64 info;
        if (!zip.getCurrentFileInfo(&info))
            fail(QStringLiteral("the archive's table of contents is damaged"));
        if (info.flags & kFlagEncrypted)
            fail(QStringLiteral("the workbook is protected with a password"));
        m_names << info.name;
    }
    if (zip.getZipError() != UNZ_OK)
        fail(QStringLiteral("the archive's table of contents is damaged"));
    zip.close();
}

QByteArray ZipArchive::entry(const QString &name) const
{
    QByteArray bytes = m_bytes;
    QBuffer buffer(&bytes);
    QuaZip zip(&buffer);
    if (!zip.open(QuaZip::mdUnzip) || !zip.setCurrentFile(name, QuaZip::csSensitive))
        fail(QStringLiteral("the archive has no entry ") + name);
    QuaZipFile file(&zip);
    if (!file.open(QIODevice::ReadOnly))
        fail(QStringLiteral("the archive entry ") + name + QStringLiteral(" cannot be opened"));
    const QByteArray content = readAll(file, name);
    file.close();
    if (file.getZipError() != UNZ_OK) // a checksum that does not match
        fail(QStringLiteral("the archive entry ") + name + QStringLiteral(" is damaged"));
    return content;
}

QByteArray ZipArchive::replaced(const QString &name, const QByteArray &content) const
{
    QByteArray source = m_bytes;
    QBuffer in(&source);
    QuaZip from(&in);
    QByteArray result;
    QBuffer out(&result);
    QuaZip to(&out);
    if (!from.open(QuaZip::mdUnzip) || !to.open(QuaZip::mdCreate))
        fail(QStringLiteral("the archive cannot be rewritten"));
    // Sizes and checksums are known before each entry is written, so no data descriptors: the
    // local headers then read like those of the original.
    to.setDataDescriptorWritingEnabled(false);
    for (bool more = from.goToFirstFile(); more; more = from.goToNextFile()) {
        QuaZipFileInfo64 info;
        from.getCurrentFileInfo(&info);
        to.setUtf8Enabled(info.flags & kFlagUtf8Names);
        if (info.name == name)
            writeEntry(from, to, content);
        else
            copyRaw(from, to, info.name);
    }
    to.setComment(from.getComment());
    to.close();
    if (to.getZipError() != ZIP_OK)
        fail(QStringLiteral("the archive cannot be rewritten"));
    return result;
}

} // namespace quillet

#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace quillet {

// A zip archive held in memory (the container of .xlsx and .ods workbooks).
//
// Reading is limited: an entry that would unpack to more than kMaxEntrySize is refused, so a
// crafted archive cannot exhaust memory. Failures throw Error(kErrBadFileFormat).
class ZipArchive
{
public:
    static constexpr qint64 kMaxEntrySize = 64 * 1024 * 1024;

    // Checks that the bytes are a readable archive and lists its entries.
    explicit ZipArchive(const QByteArray &bytes);

    const QStringList &names() const { return m_names; }
    bool contains(const QString &name) const { return m_names.contains(name); }
    // The unpacked content of an entry.
    QByteArray entry(const QString &name) const;
    // The archive again with one entry's content replaced. Every other entry is copied as it is
    // stored (its compressed bytes, checksum, time, attributes and place in the order), so readers
    // that care about order or storage (the uncompressed "mimetype" first in .ods) are served.
    QByteArray replaced(const QString &name, const QByteArray &content) const;

private:
    QByteArray m_bytes;
    QStringList m_names;
};

} // namespace quillet

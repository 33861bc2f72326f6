#include "clsexifreader.h"

#include "lib/error.h"

#include <QFile>
#include <QSet>

namespace quillet {

namespace {

// The first read: one page holds the start-of-image marker, the APP1 header and, in camera files,
// the first IFD with the pointer to the Exif sub-IFD. A walk that needs more grows the read.
constexpr qint64 kHeadSize = 4 * 1024;
// The bytes kept after a load for the embedded thumbnail (an EXIF block is at most 64 KiB).
constexpr qint64 kKeptSize = 64 * 1024;

constexpr qint32 kTagExifSubIfd = 34665;
constexpr qint32 kTagThumbnailOffset = 513;
constexpr qint32 kTagThumbnailLength = 514;
constexpr qint32 kTagDateTimeOriginal = 36867;

QString source() { return QStringLiteral("clsEXIFreader"); }

Error readError(const QFile &file)
{
    return Error(kErrPathFileAccess, source(),
                 QStringLiteral("Path/File access error\r\nFile:") + file.fileName());
}

// Size in bytes of one value of an EXIF type; 0 for types this reader does not decode.
int elementSize(qint32 type)
{
    switch (type) {
    case 1: case 2: case 6: case 7: return 1;
    case 3: case 8: return 2;
    case 4: case 9: return 4;
    case 5: case 10: return 8;
    default: return 0;
    }
}

// The bytes of one file as the parse sees them: the head first, grown when the parse asks for a
// byte beyond what was read (to that byte and at least twice the size, so a walk through a large
// maker note reads a few times, not once per entry). Every bound is checked against the file's
// real size, so a parse of the head gives exactly the result of a parse of the whole file.
class ByteSource
{
public:
    explicit ByteSource(QFile &file) : m_file(file), m_size(file.size())
    {
        m_data = readAt(0, std::min(m_size, kHeadSize));
    }

    qint64 size() const { return m_size; }
    const QByteArray &data() const { return m_data; }

    // True when [pos, pos + len) lies inside the file; nothing is read.
    bool inFile(qint64 pos, qint64 len) const { return pos >= 0 && len >= 0 && pos + len <= m_size; }
    // True when [pos, pos + len) lies inside the file; reads up to it when needed.
    bool need(qint64 pos, qint64 len)
    {
        if (!inFile(pos, len))
            return false;
        if (pos + len > m_data.size()) {
            const qint64 end = std::min(m_size, std::max(pos + len, 2 * qint64(m_data.size())));
            m_data += readAt(m_data.size(), end - m_data.size());
        }
        return true;
    }

    quint8 byte(qint64 pos) const { return quint8(m_data[pos]); }
    // Unsigned value of `len` bytes (1 to 4) in the file's byte order.
    quint32 number(qint64 pos, int len) const
    {
        quint32 v = 0;
        for (int i = 0; i < len; ++i)
            v |= quint32(byte(pos + i)) << (m_intel ? 8 * i : 8 * (len - 1 - i));
        return v;
    }
    void setIntel(bool intel) { m_intel = intel; }

private:
    QByteArray readAt(qint64 pos, qint64 len)
    {
        if (len <= 0)
            return {};
        if (!m_file.seek(pos))
            throw readError(m_file);
        QByteArray bytes = m_file.read(len);
        if (bytes.size() != len)
            throw readError(m_file);
        return bytes;
    }

    QFile &m_file;
    qint64 m_size;
    QByteArray m_data;
    bool m_intel = true;
};

// The position of the first byte pair FF E1 from the third byte on, or -1. Scans the head
// first and the rest of the file only when the head has none.
qint64 findFirstApp1(ByteSource &src)
{
    qint64 from = 2;
    for (;;) {
        const QByteArray &d = src.data();
        const qint64 last = d.size() - 2;
        for (qint64 i = from; i <= last; ++i) {
            if (quint8(d[i]) == 0xFF && quint8(d[i + 1]) == 0xE1)
                return i;
        }
        if (d.size() >= src.size())
            return -1;
        from = std::max<qint64>(2, last + 1);
        src.need(0, src.size());
    }
}

// Walks the IFDs of one EXIF block into a table of records.
class IfdWalk
{
public:
    // With a `wanted` tag other than 0 the walk records only the first entry with that tag and
    // stops there; the other entries' values are checked against the file's size but not read,
    // so the walk stops where a full walk would and the answer is the full walk's.
    IfdWalk(ByteSource &src, qint64 tiffBase, QList<ExifTagRecord> &records, qint32 wanted = 0)
        : m_src(src), m_base(tiffBase), m_records(records), m_wanted(wanted)
    {
    }

    // First IFD, the IFDs chained after it, then the Exif sub-IFD. Stops quietly where an
    // offset leaves the file or an IFD would be walked twice.
    void run(quint32 firstIfdOffset)
    {
        qint64 pos = m_base + firstIfdOffset;
        bool subIfdWalked = false;
        while (!m_found && m_visited.size() < 1000 && !m_visited.contains(pos)) {
            m_visited.insert(pos);
            quint32 link = 0;
            if (!walkIfd(pos, &link))
                return;
            if (link != 0) {
                pos = m_base + link;
            } else if (!subIfdWalked && m_subIfdOffset != 0) {
                subIfdWalked = true;
                pos = m_base + m_subIfdOffset;
            } else {
                return;
            }
        }
    }

private:
    // One IFD; false when the walk must stop. `link` receives the next-IFD offset.
    bool walkIfd(qint64 pos, quint32 *link)
    {
        if (!m_src.need(pos, 2))
            return false;
        const int count = int(m_src.number(pos, 2));
        for (int i = 0; i < count && !m_found; ++i) {
            if (!readEntry(pos + 2 + qint64(i) * 12))
                return false;
        }
        if (m_found)
            return false;
        const qint64 linkPos = pos + 2 + qint64(count) * 12;
        if (!m_src.need(linkPos, 4))
            return false;
        *link = m_src.number(linkPos, 4);
        return true;
    }

    bool readEntry(qint64 entry)
    {
        if (!m_src.need(entry, 12))
            return false;
        ExifTagRecord rec;
        rec.Tag = qint32(m_src.number(entry, 2));
        rec.Type = qint32(m_src.number(entry + 2, 2));
        rec.Count = qint32(m_src.number(entry + 4, 4));
        rec.ValueOffset = qint32(m_src.number(entry + 8, 4));
        const bool keep = m_wanted == 0 || rec.Tag == m_wanted;
        const bool read = keep || rec.Tag == kTagExifSubIfd;

        const qint64 size = qint64(quint32(rec.Count)) * elementSize(rec.Type);
        qint64 dataPos = entry + 8;
        if (size > 4) {
            dataPos = m_base + quint32(rec.ValueOffset);
            if (!(read ? m_src.need(dataPos, size) : m_src.inFile(dataPos, size)))
                return false;
        }
        if (read)
            rec.Value = decode(rec, dataPos, size > 4);
        if (rec.Tag == kTagExifSubIfd)
            m_subIfdOffset = rec.Value.toUInt();
        if (keep) {
            m_records.append(rec);
            m_found = m_wanted != 0;
        }
        return true;
    }

    QVariant decode(const ExifTagRecord &rec, qint64 pos, bool atOffset) const
    {
        switch (rec.Type) {
        case 1: case 6:
            return decodeBytes(rec.Count, pos);
        case 2: case 7: {
            const qint64 len = atOffset ? rec.Count : 4;
            return QString::fromLatin1(m_src.data().constData() + pos, len);
        }
        case 3: case 8:
            return decodeNumbers(rec.Count, pos, 2);
        case 4: case 9:
            return decodeNumbers(rec.Count, pos, 4);
        case 5: case 10:
            if (rec.Count < 1)
                return {};
            return QString(QString::number(m_src.number(pos, 4)) + QLatin1Char('/')
                           + QString::number(m_src.number(pos + 4, 4)));
        default:
            return {};
        }
    }

    // One byte gives its number; several give their decimal numbers joined as text.
    QVariant decodeBytes(qint32 count, qint64 pos) const
    {
        if (count <= 1)
            return uint(m_src.byte(pos));
        QString text;
        for (qint32 i = 0; i < count; ++i)
            text += QString::number(m_src.byte(pos + i));
        return text;
    }

    QVariant decodeNumbers(qint32 count, qint64 pos, int width) const
    {
        if (count <= 1)
            return uint(m_src.number(pos, width));
        QVariantList list;
        for (qint32 i = 0; i < count; ++i)
            list.append(uint(m_src.number(pos + qint64(i) * width, width)));
        return list;
    }

    ByteSource &m_src;
    qint64 m_base;
    QList<ExifTagRecord> &m_records;
    qint32 m_wanted = 0;
    bool m_found = false;
    quint32 m_subIfdOffset = 0;
    QSet<qint64> m_visited;
};

// Two-digit (or four-digit) number at a 0-based position of an EXIF date text.
bool datePart(const QString &text, int pos, int len, int *value)
{
    bool ok = false;
    *value = text.mid(pos, len).trimmed().toInt(&ok);
    return ok;
}

} // namespace

void clsEXIFreader::setPicFile(const QString &path)
{
    m_picFile = path;
    clear();
}

void clsEXIFreader::clear()
{
    m_attempted = false;
    m_loaded = false;
    m_records.clear();
    m_tiffBase = 0;
    m_head.clear();
}

void clsEXIFreader::Load(const QString &path)
{
    load(path, 0);
}

void clsEXIFreader::load(const QString &path, qint32 wanted)
{
    if (!path.isEmpty())
        m_picFile = path;
    clear();
    m_attempted = true;

    QFile file(m_picFile);
    // Unbuffered: the reads are few and exact, and a buffer would only copy them twice.
    if (m_picFile.isEmpty() || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        const bool missing = !QFile::exists(m_picFile);
        throw Error(missing ? kErrFileNotFound : kErrPathFileAccess, source(),
                    (missing ? QStringLiteral("File not found") : QStringLiteral("Path/File access error"))
                        + QStringLiteral("\r\nFile:") + m_picFile);
    }
    ByteSource src(file);
    if (src.size() < 2 || src.byte(0) != 0xFF || src.byte(1) != 0xD8)
        return;
    const qint64 marker = findFirstApp1(src);
    if (marker < 0 || !src.need(marker + 4, 4) || src.data().mid(marker + 4, 4) != "Exif")
        return;
    const qint64 base = marker + 10;
    if (!src.need(base, 8))
        return;
    src.setIntel(src.byte(base) == 0x49);
    m_tiffBase = base;
    m_loaded = true;
    IfdWalk(src, base, m_records, wanted).run(src.number(base + 4, 4));
    if (src.data().size() <= kKeptSize)
        m_head = src.data();
}

QVariant clsEXIFreader::Tag(qint32 tagNumber)
{
    if (!m_loaded && !m_attempted)
        Load();
    if (tagNumber == 0)
        return qint32(m_records.size());
    for (const ExifTagRecord &rec : std::as_const(m_records)) {
        if (rec.Tag == tagNumber)
            return rec.Value;
    }
    return {};
}

QVariant clsEXIFreader::MakerNoteTag(qint32 tagNumber)
{
    if (!m_loaded && !m_attempted)
        Load();
    for (const ExifTagRecord &rec : std::as_const(m_records)) {
        if (rec.Tag == tagNumber && rec.IsMakerNote)
            return rec.Value;
    }
    return {};
}

QDateTime clsEXIFreader::ZeroDate()
{
    return QDateTime(QDate(1899, 12, 30), QTime(0, 0));
}

QDateTime clsEXIFreader::ReturnDateType(const QVariant &value)
{
    const QString text = value.toString();
    QDate date = ZeroDate().date();
    int y = 0, mo = 0, d = 0;
    if (datePart(text, 0, 4, &y) && datePart(text, 5, 2, &mo) && datePart(text, 8, 2, &d)
        && QDate(y, mo, d).isValid())
        date = QDate(y, mo, d);
    QTime time(0, 0);
    int h = 0, mi = 0, s = 0;
    if (datePart(text, 11, 2, &h) && datePart(text, 14, 2, &mi) && datePart(text, 17, 2, &s)
        && QTime(h, mi, s).isValid())
        time = QTime(h, mi, s);
    return QDateTime(date, time);
}

QDateTime clsEXIFreader::DateTaken(const QString &path)
{
    try {
        clsEXIFreader reader;
        reader.load(path, kTagDateTimeOriginal);
        const QVariant raw = reader.Tag(kTagDateTimeOriginal);
        if (!raw.isValid())
            return {};
        const QDateTime taken = ReturnDateType(raw);
        return taken == ZeroDate() ? QDateTime() : taken;
    } catch (const Error &) {
        return {};
    }
}

QByteArray clsEXIFreader::EmbeddedThumbnail() const
{
    QVariant offsetTag, lengthTag;
    for (const ExifTagRecord &rec : m_records) {
        if (rec.Tag == kTagThumbnailOffset && !offsetTag.isValid())
            offsetTag = rec.Value;
        else if (rec.Tag == kTagThumbnailLength && !lengthTag.isValid())
            lengthTag = rec.Value;
    }
    bool ok1 = false, ok2 = false;
    const qint64 pos = m_tiffBase + offsetTag.toLongLong(&ok1);
    const qint64 len = lengthTag.toLongLong(&ok2);
    if (!m_loaded || !ok1 || !ok2 || len <= 0)
        return {};
    if (pos + len <= m_head.size())
        return m_head.mid(pos, len);
    QFile file(m_picFile);
    if (!file.open(QIODevice::ReadOnly) || pos + len > file.size() || !file.seek(pos))
        return {};
    return file.read(len);
}

} // namespace quillet

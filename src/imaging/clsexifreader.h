#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QVariant>

namespace quillet {

// One entry of an EXIF image file directory, as the reader found it.
struct ExifTagRecord
{
    qint32 Tag = 0;
    bool IsMakerNote = false;  // never set by this reader: maker notes are not parsed
    qint32 Type = 0;           // EXIF data type, 1 to 10 (others are kept with an empty Value)
    qint32 Count = 0;
    qint32 ValueOffset = 0;    // the 4-byte value field read as an offset
    QVariant Value;            // number, text, or a list of numbers for 16/32-bit arrays
};

// Reads the EXIF block of a JPEG photo and answers questions about its tags.
//
// Only the first APP1 marker (the first byte pair FF E1 after the start of image) is examined;
// when it is not "Exif" the file counts as having no EXIF. The walk covers the first IFD, every
// IFD chained after it and the Exif sub-IFD; GPS and interoperability IFDs are not followed.
// An offset that points past the end of the file stops the walk; what was read stays.
//
// For speed the reader first reads only the head of the file and reads further only when the walk
// needs bytes beyond what it has, so every answer equals a reading of the whole file. One
// instance may be reused for many files; it is not shared between threads.
class clsEXIFreader
{
public:
    clsEXIFreader() = default;

    // The file whose tags are answered. Setting it forgets the previous file's tags.
    QString picFile() const { return m_picFile; }
    void setPicFile(const QString &path);

    // Reads and parses `path` (or picFile when empty). A file that is not a JPEG or whose first
    // APP1 is not EXIF leaves Loaded() false and the table empty. Throws Error when the file
    // cannot be opened or read.
    void Load(const QString &path = QString());
    bool Loaded() const { return m_loaded; }

    // The value of the first record with that tag number, or an invalid QVariant when there is
    // none; Tag(0) is the number of records. Loads picFile first when it has not been read yet.
    QVariant Tag(qint32 tagNumber);
    // The first maker-note record with that tag: always empty, as maker notes are not parsed.
    QVariant MakerNoteTag(qint32 tagNumber);

    const QList<ExifTagRecord> &records() const { return m_records; }

    // Converts an EXIF date text "YYYY:MM:DD HH:MM:SS" (a trailing NUL is fine). Each part that
    // cannot be built is left out: a bad time gives the date alone, a bad date gives the time on
    // ZeroDate(), and nothing usable gives ZeroDate().
    static QDateTime ReturnDateType(const QVariant &text);
    // The date a failed conversion starts from: 30 December 1899, 00:00:00.
    static QDateTime ZeroDate();

    // Convenience for callers: tag 36867 converted, or an invalid QDateTime when the file has no
    // such tag or the text gives nothing but ZeroDate(). Never throws.
    static QDateTime DateTaken(const QString &path);

    // The JPEG bytes of the thumbnail embedded in the EXIF block (tags 513 and 514, offset and
    // length), or empty when there is none or it lies outside the file. Valid after Load.
    QByteArray EmbeddedThumbnail() const;

private:
    void clear();
    // Load, recording only the first entry of tag `wanted` when it is not 0 (the date of a
    // photo needs one entry, and the walk can stop there).
    void load(const QString &path, qint32 wanted);

    QString m_picFile;
    bool m_attempted = false;
    bool m_loaded = false;
    QList<ExifTagRecord> m_records;
    qint64 m_tiffBase = 0;
    // The bytes the last Load read, kept when they are only the head, so that the embedded
    // thumbnail usually needs no second read.
    QByteArray m_head;
};

} // namespace quillet

// The EXIF reader on any bytes named as a photo: the whole-file reading (Load, every tag, the
// embedded thumbnail's bytes) and the head reading behind DateTaken must agree and never crash.
#include "fuzzsupport.h"

#include "imaging/clsexifreader.h"
#include "lib/error.h"

using namespace quillet;

int QuilletFuzzOne(const uint8_t *data, size_t size)
{
    const QString path = fuzz::writeScratch(QStringLiteral("photo.jpg"), data, size);
    clsEXIFreader reader;
    try {
        reader.Load(path);
    } catch (const Error &) {
        return 0;
    }
    const int count = reader.Tag(0).toInt();
    fuzz::check(count == reader.records().size(), "Tag(0) is the number of records");
    for (const ExifTagRecord &record : reader.records())
        reader.Tag(record.Tag);
    const QByteArray thumb = reader.EmbeddedThumbnail();
    fuzz::check(qsizetype(thumb.size()) <= qsizetype(size), "the thumbnail lies inside the file");
    const QVariant raw = reader.Tag(36867);
    QDateTime wanted = raw.isValid() ? clsEXIFreader::ReturnDateType(raw) : QDateTime();
    if (wanted == clsEXIFreader::ZeroDate())
        wanted = QDateTime();
    fuzz::check(clsEXIFreader::DateTaken(path) == wanted, "the head reading gives the whole-file date");
    return 0;
}

QUILLET_FUZZ_TARGET

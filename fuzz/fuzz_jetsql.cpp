// The statement translator on any text: it returns a statement or nothing, and never reads past
// its tokens (unbalanced brackets, a "&" at either end, unterminated quotes and dates).
#include "fuzzsupport.h"

#include "app/jetsql.h"

using namespace quillet;

int QuilletFuzzOne(const uint8_t *data, size_t size)
{
    const QString sql = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    const QString translated = translateJetSql(sql);
    fuzz::check(sql.trimmed().isEmpty() || !translated.isEmpty() || sql.isEmpty(), "a statement gives a statement");
    return 0;
}

QUILLET_FUZZ_TARGET

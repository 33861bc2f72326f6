#include "sqlitecollation.h"

#include <QCollator>
#include <QLocale>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QString>
#include <QVariant>

#include <sqlite3.h>

namespace quillet {

namespace {

int compareText(void *, int lengthA, const void *a, int lengthB, const void *b)
{
    static const QCollator collator = [] {
        // One order for every PC, whatever its language: the database file travels between PCs,
        // and an index sorted under one machine's rules would read as damaged under another's
        // (a Swedish collation puts "Å" after "z"). The general order keeps accented letters
        // beside their base letter; the bare C locale would compare code points instead.
        QCollator c{QLocale(QLocale::English)};
        c.setCaseSensitivity(Qt::CaseInsensitive);
        return c;
    }();
    const QString left = QString::fromUtf8(static_cast<const char *>(a), lengthA);
    const QString right = QString::fromUtf8(static_cast<const char *>(b), lengthB);
    const int byCollator = collator.compare(left, right);
    return byCollator != 0 ? byCollator : left.compare(right, Qt::CaseInsensitive);
}

// SQL LIKE with "%" and "_" (and an optional escape character), case folded for every letter.
bool likeMatch(const QString &pattern, int p, const QString &text, int t, QChar escape)
{
    while (p < pattern.size()) {
        const QChar c = pattern.at(p);
        if (!escape.isNull() && c == escape && p + 1 < pattern.size()) {
            if (t >= text.size() || text.at(t) != pattern.at(p + 1))
                return false;
            p += 2;
            ++t;
        } else if (c == QLatin1Char('%')) {
            while (p < pattern.size() && pattern.at(p) == QLatin1Char('%'))
                ++p;
            if (p == pattern.size())
                return true;
            for (int k = t; k <= text.size(); ++k) {
                if (likeMatch(pattern, p, text, k, escape))
                    return true;
            }
            return false;
        } else {
            if (t >= text.size() || (c != QLatin1Char('_') && c != text.at(t)))
                return false;
            ++p;
            ++t;
        }
    }
    return t == text.size();
}

void likeFunction(sqlite3_context *context, int argc, sqlite3_value **argv)
{
    const auto text = [](sqlite3_value *v) {
        return QString::fromUtf8(reinterpret_cast<const char *>(sqlite3_value_text(v)), sqlite3_value_bytes(v))
            .toCaseFolded();
    };
    if (sqlite3_value_type(argv[0]) == SQLITE_NULL || sqlite3_value_type(argv[1]) == SQLITE_NULL) {
        sqlite3_result_null(context);
        return;
    }
    const QString escape = argc == 3 ? text(argv[2]) : QString();
    sqlite3_result_int(context, likeMatch(text(argv[0]), 0, text(argv[1]), 0, escape.isEmpty() ? QChar() : escape.at(0)));
}

} // namespace

bool RegisterTextCollation(QSqlDatabase &db)
{
    const QVariant handle = db.driver()->handle();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0)
        return false;
    sqlite3 *connection = *static_cast<sqlite3 *const *>(handle.data());
    if (!connection)
        return false;
    const int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC;
    return sqlite3_create_collation(connection, "QNOCASE", SQLITE_UTF8, nullptr, compareText) == SQLITE_OK
        && sqlite3_create_function(connection, "like", 2, flags, nullptr, likeFunction, nullptr, nullptr) == SQLITE_OK
        && sqlite3_create_function(connection, "like", 3, flags, nullptr, likeFunction, nullptr, nullptr) == SQLITE_OK;
}

} // namespace quillet

#include "texthelpers.h"

#include "error.h"

#include <algorithm>
#include <cmath>

namespace quillet {

QString lib_SqlFieldName(const QString &name, bool bracket)
{
    const QString trimmed = name.trimmed();
    if (!bracket || trimmed.startsWith(QLatin1Char('[')))
        return trimmed;
    const int dot = trimmed.indexOf(QLatin1Char('.'));
    if (dot >= 0)
        return QLatin1Char('[') + trimmed.left(dot) + QStringLiteral("].[") + trimmed.mid(dot + 1) + QLatin1Char(']');
    return QLatin1Char('[') + trimmed + QLatin1Char(']');
}

QString lib_DateToSql(const QVariant &value)
{
    QDate date;
    QTime time;
    switch (value.typeId()) {
    case QMetaType::QDate:
        date = value.toDate();
        break;
    case QMetaType::QTime:
        time = value.toTime();
        break;
    default: {
        const QDateTime dt = value.toDateTime();
        date = dt.date();
        time = dt.time();
        break;
    }
    }
    QString out;
    if (date.isValid())
        out = date.toString(QStringLiteral("MM/dd/yyyy"));
    if (time.isValid()) {
        if (!out.isEmpty())
            out += QLatin1Char(' ');
        out += time.toString(QStringLiteral("HH:mm:ss"));
    }
    return out;
}

QString lib_SqlQuote(const QString &text)
{
    QString out = text;
    return out.replace(QLatin1Char('\''), QStringLiteral("''"));
}

namespace {

bool isDateValue(const QVariant &v)
{
    const int t = v.typeId();
    return t == QMetaType::QDate || t == QMetaType::QDateTime || t == QMetaType::QTime;
}

QString numberText(const QVariant &v)
{
    if (v.typeId() == QMetaType::Bool)
        return v.toBool() ? QStringLiteral("True") : QStringLiteral("False");
    return v.toString();
}

} // namespace

QString lib_AddWhere(const QString &field, const QString &op, const QVariant &value, const QString &where,
                     SqlValueKind kind, bool first, bool useOr, bool orNull)
{
    QString out = where;
    if (!out.isEmpty())
        out += (useOr ? QStringLiteral(" OR") : QStringLiteral(" AND")) + QStringLiteral(" (");
    else
        out = first ? QStringLiteral(" WHERE (") : QStringLiteral(" (");
    const QString name = lib_SqlFieldName(field, true);
    out += name;

    if (value.isNull()) {
        out += QStringLiteral(" Is ") + (op == QLatin1String("=") ? QString() : QStringLiteral("Not "))
            + QStringLiteral("Null");
    } else if (isDateValue(value)) {
        if (kind == SqlValueKind::Text)
            out += op + QLatin1Char('\'') + lib_SqlQuote(value.toString()) + QLatin1Char('\'');
        else
            out += op + QLatin1Char('#') + lib_DateToSql(value) + QLatin1Char('#');
    } else if (value.typeId() == QMetaType::QString) {
        const QString text = value.toString();
        QString useOp = op;
        if (text.contains(QLatin1Char('*')) || text.contains(QLatin1Char('?')))
            useOp = op == QLatin1String("=") ? QStringLiteral(" LIKE ") : QStringLiteral(" NOT LIKE ");
        if (kind == SqlValueKind::Auto || kind == SqlValueKind::Text)
            out += useOp + QLatin1Char('\'') + lib_SqlQuote(text) + QLatin1Char('\'');
        else
            out += useOp + QString::number(lib_ParseNumber(text));
    } else {
        if (kind == SqlValueKind::Text)
            out += op + QLatin1Char('\'') + lib_SqlQuote(numberText(value)) + QLatin1Char('\'');
        else
            out += op + numberText(value);
    }
    if (orNull)
        out += QStringLiteral(" OR ") + name + QStringLiteral(" Is Null");
    return out + QLatin1Char(')');
}

double lib_ParseNumber(const QVariant &value)
{
    if (value.isNull() || !value.isValid())
        return 0;
    if (value.typeId() == QMetaType::Bool)
        return value.toBool() ? -1 : 0;
    if (value.typeId() != QMetaType::QString)
        return value.toDouble();
    const QString text = value.toString();
    const QString lower = text.trimmed().toLower();
    if (lower == QLatin1String("false"))
        return 0;
    if (lower == QLatin1String("true"))
        return -1;
    if (lower.isEmpty())
        return 0;
    // Read the accepted characters left to right: a sign, digits, thousands commas before the
    // decimal point, one decimal point, currency signs and blanks. Reading stops at anything else.
    QString digits;
    bool seenPoint = false;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c.isDigit()) {
            digits += c;
        } else if (c == QLatin1Char('.') && !seenPoint) {
            seenPoint = true;
            digits += c;
        } else if (c == QLatin1Char(',') && !seenPoint) {
            continue;
        } else if (c == QChar(0x00A3) || c == QLatin1Char('$') || c == QLatin1Char(' ')) {
            continue;
        } else if ((c == QLatin1Char('-') || c == QLatin1Char('+')) && digits.isEmpty()) {
            digits += c;
        } else {
            break;
        }
    }
    bool ok = false;
    const double v = digits.toDouble(&ok);
    return ok ? v : 0;
}

QTime lib_ParseTimeOfDay(const QString &text)
{
    const QString t = text.trimmed();
    for (const char *format : {"H:mm", "HH:mm", "H:mm:ss", "HH:mm:ss", "h:mm AP", "h:mm ap", "h:mm:ss AP"}) {
        const QTime time = QTime::fromString(t, QLatin1String(format));
        if (time.isValid())
            return time;
    }
    return QTime();
}

bool lib_ToBool(const QString &value)
{
    return lib_ParseNumber(value) != 0;
}

int lib_ToInt(const QString &value)
{
    return int(std::lround(lib_ParseNumber(value)));
}

QString lib_HtmlEncode(const QString &text)
{
    QString out;
    out.reserve(text.size() * 2);
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        switch (c.unicode()) {
        case ' ': out += QStringLiteral("&nbsp;"); break;
        case '"': out += QStringLiteral("&quot;"); break;
        case '<': out += QStringLiteral("&lt;"); break;
        case '>': out += QStringLiteral("&gt;"); break;
        case '&': out += QStringLiteral("&amp;"); break;
        case '\t': out += QStringLiteral("&nbsp;&nbsp;&nbsp;&nbsp;"); break;
        case '\r':
            if (i + 1 < text.size() && text.at(i + 1) == QLatin1Char('\n'))
                ++i;
            out += QStringLiteral("<br>");
            break;
        case '\n': out += QStringLiteral("<br>"); break;
        default:
            if (c.unicode() > 126)
                out += QStringLiteral("&#") + QString::number(c.unicode()) + QLatin1Char(';');
            else
                out += c;
        }
    }
    return out;
}

QString lib_FormatElapsed(int style, qint64 ms)
{
    Q_UNUSED(style); // the program formats durations in style 9 only
    auto two = [](qint64 v) { return QString::number(v).rightJustified(2, QLatin1Char('0')); };
    QString out;
    const qint64 hours = ms / 3600000;
    if (hours > 0)
        out += two(hours) + QLatin1Char(':');
    out += two((ms % 3600000) / 60000) + QLatin1Char(':');
    out += two((ms % 60000) / 1000) + QLatin1Char('.');
    out += two(std::min<qint64>(99, std::lround((ms % 1000) / 10.0)));
    return out;
}

QString lib_PluralEnding(qint64 count, const QString &singular)
{
    if (count == 1)
        return QString();
    const QString w = singular.toLower();
    if (w.endsWith(QLatin1Char('s')) || w.endsWith(QLatin1Char('x')) || w.endsWith(QLatin1Char('z'))
        || w.endsWith(QLatin1String("ch")) || w.endsWith(QLatin1String("sh")))
        return QStringLiteral("es");
    return QStringLiteral("s");
}

QString lib_FormatCount(qint64 count, const QString &singular)
{
    return QString::number(count) + QLatin1Char(' ') + singular + lib_PluralEnding(count, singular);
}

QString lib_OrdinalSuffix(qint64 number)
{
    const qint64 n = number < 0 ? -number : number;
    if (n % 100 >= 11 && n % 100 <= 13)
        return QStringLiteral("th");
    switch (n % 10) {
    case 1: return QStringLiteral("st");
    case 2: return QStringLiteral("nd");
    case 3: return QStringLiteral("rd");
    default: return QStringLiteral("th");
    }
}

QStringList lib_GetLineParts3(const QString &line, QChar delimiter, QChar quote)
{
    QStringList parts;
    QString current;
    bool inQuotes = false;
    for (const QChar c : line) {
        if (c == quote) {
            inQuotes = !inQuotes;
        } else if (c == delimiter && !inQuotes) {
            parts << current;
            current.clear();
        } else {
            current += c;
        }
    }
    parts << current;
    if (parts.size() > 100)
        throw Error(kLibErrorNumber, QStringLiteral("Lib09.lib_GetLineParts3"),
                    QStringLiteral("Too many parts in line (") + QString::number(parts.size()) + QLatin1Char(')'));
    return parts;
}

} // namespace quillet

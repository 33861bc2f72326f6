#include "msgboxrequest.h"

namespace quillet {

namespace {

const QString kCrLf = QStringLiteral("\r\n");

// The numeric value of a field read the way a numeric prefix is read: leading blanks skipped, an
// optional sign, then digits up to the first other character; nothing numeric gives 0.
int numericPrefix(QStringView field)
{
    int i = 0;
    while (i < field.size() && field.at(i) == QLatin1Char(' '))
        ++i;
    bool negative = false;
    if (i < field.size() && (field.at(i) == QLatin1Char('-') || field.at(i) == QLatin1Char('+'))) {
        negative = field.at(i) == QLatin1Char('-');
        ++i;
    }
    int value = 0;
    for (; i < field.size() && field.at(i).isDigit(); ++i)
        value = value * 10 + field.at(i).digitValue();
    return negative ? -value : value;
}

bool isTagChar(QChar c)
{
    return (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char(' ') || c == QLatin1Char('@')
        || c == QLatin1Char('\r') || c == QLatin1Char('\n');
}

} // namespace

MsgBoxRequest MsgBoxRequest::parse(const QString &request)
{
    MsgBoxRequest result;
    const QStringView view(request);
    result.m_style = numericPrefix(view.left(1));
    result.m_countdown = numericPrefix(view.mid(1, 4));
    result.m_text = displayText(request.mid(5));
    return result;
}

QString MsgBoxRequest::displayText(const QString &text)
{
    return normaliseLineBreaks(cutTrailingTag(text));
}

QString MsgBoxRequest::cutTrailingTag(const QString &text)
{
    int runStart = text.size();
    while (runStart > 0 && isTagChar(text.at(runStart - 1)))
        --runStart;
    const int at = text.indexOf(QLatin1Char('@'), runStart);
    return at < 0 ? text : text.left(at);
}

QString MsgBoxRequest::normaliseLineBreaks(const QString &text)
{
    QString result;
    result.reserve(text.size() + 16);
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char('@'))
            result += kCrLf;
        else if (c == QLatin1Char('\n') && (i == 0 || text.at(i - 1) != QLatin1Char('\r')))
            result += kCrLf;
        else
            result += c;
    }
    return result;
}

int MsgBoxRequest::lineCount(const QString &text, int charsPerLine)
{
    const int perLine = qMax(1, charsPerLine);
    int lines = 0;
    for (const QString &line : text.split(kCrLf))
        lines += 1 + qMax(0, (int(line.size()) - 1) / perLine);
    return qMax(1, lines);
}

} // namespace quillet

#include "jetsql.h"

#include <QDateTime>
#include <QList>
#include <QRegularExpression>

namespace quillet {

namespace {

struct Token
{
    enum Kind { Space, Word, Name, Text, Date, Number, Open, Close, Comma, Amp, Other } kind;
    QString text;
};

// End of a quoted text that opens at `i` (the quote doubled inside stands for itself).
int scanQuoted(const QString &sql, int i, QChar quote)
{
    const int n = int(sql.size());
    int j = i + 1;
    while (j < n) {
        if (sql.at(j) != quote) {
            ++j;
        } else if (j + 1 < n && sql.at(j + 1) == quote) {
            j += 2;
        } else {
            return j + 1;
        }
    }
    return n;
}

// A double-quoted text becomes the single-quoted text SQLite reads as a value (SQLite would take
// "..." for a column name first).
QString singleQuoted(const QString &doubleQuoted)
{
    QString inner = doubleQuoted.mid(1, doubleQuoted.size() - (doubleQuoted.endsWith(QLatin1Char('"')) ? 2 : 1));
    inner.replace(QStringLiteral("\"\""), QStringLiteral("\""));
    inner.replace(QLatin1Char('\''), QStringLiteral("''"));
    return QLatin1Char('\'') + inner + QLatin1Char('\'');
}

// End of one part of a name: "[...]" or a word.
int scanNamePart(const QString &sql, int i)
{
    const int n = int(sql.size());
    int j = i + 1;
    if (sql.at(i) == QLatin1Char('[')) {
        while (j < n && sql.at(j) != QLatin1Char(']'))
            ++j;
        return std::min(n, j + 1);
    }
    while (j < n && (sql.at(j).isLetterOrNumber() || sql.at(j) == QLatin1Char('_')))
        ++j;
    return j;
}

bool startsNamePart(const QString &sql, int i)
{
    return i < sql.size() && (sql.at(i) == QLatin1Char('[') || sql.at(i).isLetter() || sql.at(i) == QLatin1Char('_'));
}

// End of a name with its qualifiers ("tbl.FirstName", "[tbl].[First Name]"): one operand.
int scanName(const QString &sql, int i)
{
    int j = scanNamePart(sql, i);
    while (j + 1 < sql.size() && sql.at(j) == QLatin1Char('.') && startsNamePart(sql, j + 1))
        j = scanNamePart(sql, j + 1);
    return j;
}

Token::Kind punctuation(QChar c)
{
    switch (c.unicode()) {
    case '(': return Token::Open;
    case ')': return Token::Close;
    case ',': return Token::Comma;
    case '&': return Token::Amp;
    default: return Token::Other;
    }
}

QList<Token> tokenize(const QString &sql)
{
    QList<Token> out;
    const int n = int(sql.size());
    for (int i = 0; i < n;) {
        const QChar c = sql.at(i);
        int j = i + 1;
        Token::Kind kind = punctuation(c);
        if (c.isSpace()) {
            while (j < n && sql.at(j).isSpace())
                ++j;
            kind = Token::Space;
        } else if (c == QLatin1Char('\'') || c == QLatin1Char('"')) {
            j = scanQuoted(sql, i, c);
            kind = Token::Text;
        } else if (c == QLatin1Char('#')) {
            while (j < n && sql.at(j) != QLatin1Char('#'))
                ++j;
            j = std::min(n, j + 1);
            kind = Token::Date;
        } else if (startsNamePart(sql, i)) {
            j = scanName(sql, i);
            kind = c == QLatin1Char('[') ? Token::Name : Token::Word;
        } else if (c.isDigit()) {
            while (j < n && (sql.at(j).isDigit() || sql.at(j) == QLatin1Char('.')))
                ++j;
            kind = Token::Number;
        }
        QString text = sql.mid(i, j - i);
        if (c == QLatin1Char('"'))
            text = singleQuoted(text);
        out.append({kind, text});
        i = j;
    }
    return out;
}

QString dateLiteral(const QString &token)
{
    const QString inner = token.mid(1, token.size() - 2).trimmed();
    for (const char *format : {"MM/dd/yyyy HH:mm:ss", "M/d/yyyy H:mm:ss", "MM/dd/yyyy", "M/d/yyyy"}) {
        const QDateTime dt = QDateTime::fromString(inner, QLatin1String(format));
        if (dt.isValid())
            return QLatin1Char('\'') + storedDateText(dt) + QLatin1Char('\'');
    }
    for (const char *format : {"HH:mm:ss", "H:mm:ss", "HH:mm", "H:mm"}) {
        const QTime t = QTime::fromString(inner, QLatin1String(format));
        if (t.isValid())
            return QLatin1Char('\'') + storedDateText(t) + QLatin1Char('\'');
    }
    return QLatin1Char('\'') + inner + QLatin1Char('\'');
}

bool isWord(const Token &t, const char *word)
{
    return t.kind == Token::Word && t.text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0;
}

// Index of the first token of the operand that ends at `end` (inclusive), skipping spaces.
int operandStart(const QList<Token> &tokens, int end)
{
    int i = end;
    while (i >= 0 && tokens[i].kind == Token::Space)
        --i;
    if (i < 0)
        return end + 1;
    if (tokens[i].kind != Token::Close)
        return i;
    int depth = 0;
    for (; i >= 0; --i) {
        if (tokens[i].kind == Token::Close)
            ++depth;
        else if (tokens[i].kind == Token::Open && --depth == 0)
            break;
    }
    if (i < 0)
        return 0; // unbalanced: the operand reaches back to the start of the statement
    if (i > 0 && tokens[i - 1].kind == Token::Word) // a function call: IIf(...)
        --i;
    return i;
}

// Index of the last token of the operand that starts at `start`, skipping spaces.
int operandEnd(const QList<Token> &tokens, int start)
{
    int i = start;
    while (i < tokens.size() && tokens[i].kind == Token::Space)
        ++i;
    if (i >= tokens.size())
        return start - 1;
    if (tokens[i].kind == Token::Word && i + 1 < tokens.size() && tokens[i + 1].kind == Token::Open)
        ++i;
    if (tokens[i].kind != Token::Open)
        return i;
    int depth = 0;
    for (; i < tokens.size(); ++i) {
        if (tokens[i].kind == Token::Open)
            ++depth;
        else if (tokens[i].kind == Token::Close && --depth == 0)
            break;
    }
    return std::min(i, int(tokens.size()) - 1); // unbalanced: the operand runs to the end
}

QString join(const QList<Token> &tokens, int from, int to)
{
    QString out;
    for (int i = from; i <= to && i < tokens.size(); ++i)
        out += tokens[i].text;
    return out.trimmed();
}

// Folds every "a & b & c" chain into one token holding the SQLite concatenation.
void foldConcatenation(QList<Token> &tokens)
{
    for (int i = 0; i < tokens.size(); ++i) {
        if (tokens[i].kind != Token::Amp)
            continue;
        const int from = operandStart(tokens, i - 1);
        const int to = operandEnd(tokens, i + 1);
        // The result keeps the text rule of the columns: compared and sorted without regard to case.
        const QString folded = QStringLiteral("((IFNULL(") + join(tokens, from, i - 1)
            + QStringLiteral(",'') || IFNULL(") + join(tokens, i + 1, to) + QStringLiteral(",'')) COLLATE QNOCASE)");
        tokens.erase(tokens.begin() + from, tokens.begin() + to + 1);
        tokens.insert(from, {Token::Word, folded});
        i = from;
    }
}

void translateLikePatterns(QList<Token> &tokens)
{
    for (int i = 0; i < tokens.size(); ++i) {
        if (!isWord(tokens[i], "LIKE"))
            continue;
        int j = i + 1;
        while (j < tokens.size() && tokens[j].kind == Token::Space)
            ++j;
        if (j < tokens.size() && tokens[j].kind == Token::Text) {
            QString pattern = tokens[j].text;
            pattern.replace(QLatin1Char('*'), QLatin1Char('%')).replace(QLatin1Char('?'), QLatin1Char('_'));
            tokens[j].text = pattern;
        }
    }
}

// Ends an ORDER BY term: it sorts without regard to case, unless it is a concatenation, which
// already does.
void closeOrderTerm(QString &out)
{
    int keep = int(out.size());
    while (keep > 0 && out.at(keep - 1).isSpace())
        --keep;
    const QString trailing = out.mid(keep);
    out.truncate(keep);
    if (!out.endsWith(QLatin1String(" COLLATE QNOCASE)")))
        out += QStringLiteral(" COLLATE QNOCASE");
    out += trailing;
}

// Appends COLLATE QNOCASE to each top-level term after ORDER BY.
QString collateOrderBy(const QList<Token> &tokens)
{
    QString out;
    bool inOrderBy = false;
    bool termOpen = false;
    int depth = 0;
    for (int i = 0; i < tokens.size(); ++i) {
        const Token &t = tokens[i];
        const bool topLevel = depth == 0 && t.kind != Token::Close;
        depth += t.kind == Token::Open ? 1 : t.kind == Token::Close ? -1 : 0;
        if (topLevel && isWord(t, "BY") && i >= 2 && isWord(tokens[i - 2], "ORDER")) {
            inOrderBy = true;
        } else if (inOrderBy && topLevel && (t.kind == Token::Comma || isWord(t, "ASC") || isWord(t, "DESC"))) {
            if (termOpen)
                closeOrderTerm(out);
            termOpen = false;
        } else if (inOrderBy && t.kind != Token::Space && !(t.kind == Token::Other && t.text == QLatin1String(";"))) {
            termOpen = true;
        }
        out += t.text;
    }
    if (termOpen) {
        const bool semicolon = out.trimmed().endsWith(QLatin1Char(';'));
        if (semicolon)
            out.truncate(out.lastIndexOf(QLatin1Char(';')));
        closeOrderTerm(out);
        if (semicolon)
            out += QLatin1Char(';');
    }
    return out;
}

int previousSolid(const QList<Token> &tokens, int i)
{
    --i;
    while (i >= 0 && tokens[i].kind == Token::Space)
        --i;
    return i;
}

bool isOther(const QList<Token> &tokens, int i, char c)
{
    return i >= 0 && i < tokens.size() && tokens[i].kind == Token::Other && tokens[i].text == QLatin1Char(c);
}

// Marks the tokens of an UPDATE's SET list: there "=" assigns rather than compares.
QList<bool> assignments(const QList<Token> &tokens)
{
    QList<bool> out(tokens.size(), false);
    bool inSet = false;
    for (int i = 0; i < tokens.size(); ++i) {
        if (isWord(tokens[i], "SET"))
            inSet = true;
        else if (isWord(tokens[i], "WHERE"))
            inSet = false;
        out[i] = inSet;
    }
    return out;
}

// True and False as values are -1 and 0. A test against True is a test against "not 0", so that a
// yes/no field that another tool wrote as 1 counts as yes, as the original engine's -1 does.
void translateBooleans(QList<Token> &tokens)
{
    const QList<bool> assigned = assignments(tokens);
    for (int i = 0; i < tokens.size(); ++i) {
        const bool isTrue = isWord(tokens[i], "True");
        if (!isTrue && !isWord(tokens[i], "False"))
            continue;
        tokens[i].text = isTrue ? QStringLiteral("-1") : QStringLiteral("0");
        if (!isTrue || assigned[i])
            continue;
        const int op = previousSolid(tokens, i);
        if (isOther(tokens, op, '=') && !isOther(tokens, op - 1, '<') && !isOther(tokens, op - 1, '>')
            && !isOther(tokens, op - 1, '!')) {
            tokens[op].text = QStringLiteral("<>");
            tokens[i].text = QStringLiteral("0");
        } else if (isOther(tokens, op, '>') && isOther(tokens, op - 1, '<')) {
            tokens[op - 1].text.clear();
            tokens[op].text = QStringLiteral("=");
            tokens[i].text = QStringLiteral("0");
        }
    }
}

// A comparison with a text or a bound value compares without regard to case, for every letter,
// as the original engine does. The columns carry no collation of their own (the file stays
// readable and writable by any SQLite tool), so the statement names it.
void collateComparisons(QList<Token> &tokens)
{
    const QList<bool> assigned = assignments(tokens);
    for (int i = 0; i < tokens.size(); ++i) {
        const bool value = !assigned[i] && (tokens[i].kind == Token::Text || isOther(tokens, i, '?'));
        if (!value)
            continue;
        const int op = previousSolid(tokens, i);
        if (isOther(tokens, op, '=') || isOther(tokens, op, '<') || isOther(tokens, op, '>'))
            tokens[i].text += QStringLiteral(" COLLATE QNOCASE");
    }
}

} // namespace

QString storedDateText(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QDate:
        return value.toDate().startOfDay().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    case QMetaType::QTime:
        return value.toTime().toString(QStringLiteral("HH:mm:ss"));
    case QMetaType::QDateTime:
        return value.toDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    default:
        return QString();
    }
}

QString translateJetSql(const QString &jetSql)
{
    QList<Token> tokens = tokenize(jetSql);
    for (Token &t : tokens) {
        if (t.kind == Token::Date)
            t = {Token::Text, dateLiteral(t.text)};
    }
    translateBooleans(tokens);
    translateLikePatterns(tokens);
    foldConcatenation(tokens);
    collateComparisons(tokens);
    return collateOrderBy(tokens);
}

} // namespace quillet

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

QList<Token> tokenize(const QString &sql)
{
    QList<Token> out;
    int i = 0;
    const int n = int(sql.size());
    while (i < n) {
        const QChar c = sql.at(i);
        int j = i + 1;
        Token::Kind kind = Token::Other;
        if (c.isSpace()) {
            while (j < n && sql.at(j).isSpace())
                ++j;
            kind = Token::Space;
        } else if (c == QLatin1Char('\'')) {
            // A quoted text; '' inside stands for one quote.
            for (;; ++j) {
                if (j >= n)
                    break;
                if (sql.at(j) == QLatin1Char('\'')) {
                    if (j + 1 < n && sql.at(j + 1) == QLatin1Char('\'')) {
                        ++j;
                        continue;
                    }
                    ++j;
                    break;
                }
            }
            kind = Token::Text;
        } else if (c == QLatin1Char('[')) {
            while (j < n && sql.at(j) != QLatin1Char(']'))
                ++j;
            j = std::min(n, j + 1);
            kind = Token::Name;
        } else if (c == QLatin1Char('#')) {
            while (j < n && sql.at(j) != QLatin1Char('#'))
                ++j;
            j = std::min(n, j + 1);
            kind = Token::Date;
        } else if (c.isLetter() || c == QLatin1Char('_')) {
            while (j < n && (sql.at(j).isLetterOrNumber() || sql.at(j) == QLatin1Char('_') || sql.at(j) == QLatin1Char('.')))
                ++j;
            kind = Token::Word;
        } else if (c.isDigit()) {
            while (j < n && (sql.at(j).isDigit() || sql.at(j) == QLatin1Char('.')))
                ++j;
            kind = Token::Number;
        } else if (c == QLatin1Char('(')) {
            kind = Token::Open;
        } else if (c == QLatin1Char(')')) {
            kind = Token::Close;
        } else if (c == QLatin1Char(',')) {
            kind = Token::Comma;
        } else if (c == QLatin1Char('&')) {
            kind = Token::Amp;
        }
        out.append({kind, sql.mid(i, j - i)});
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
            return QLatin1Char('\'') + dt.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) + QLatin1Char('\'');
    }
    const QTime t = QTime::fromString(inner, QStringLiteral("HH:mm:ss"));
    if (t.isValid())
        return QLatin1Char('\'') + t.toString(QStringLiteral("HH:mm:ss")) + QLatin1Char('\'');
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
    return i;
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
        const QString folded = QStringLiteral("(IFNULL(") + join(tokens, from, i - 1) + QStringLiteral(",'') || IFNULL(")
            + join(tokens, i + 1, to) + QStringLiteral(",''))");
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

// Appends COLLATE QNOCASE to each top-level term after ORDER BY.
QString collateOrderBy(const QList<Token> &tokens)
{
    QString out;
    bool inOrderBy = false;
    int depth = 0;
    for (int i = 0; i < tokens.size(); ++i) {
        const Token &t = tokens[i];
        if (t.kind == Token::Open)
            ++depth;
        else if (t.kind == Token::Close)
            --depth;
        if (depth == 0 && isWord(t, "BY") && i >= 2 && isWord(tokens[i - 2], "ORDER")) {
            out += t.text;
            inOrderBy = true;
            continue;
        }
        if (inOrderBy && depth == 0 && (t.kind == Token::Comma || isWord(t, "ASC") || isWord(t, "DESC"))) {
            while (out.endsWith(QLatin1Char(' ')))
                out.chop(1);
            out += QStringLiteral(" COLLATE QNOCASE");
            if (t.kind != Token::Comma)
                out += QLatin1Char(' ');
            out += t.text;
            if (t.kind != Token::Comma)
                inOrderBy = false;
            continue;
        }
        out += t.text;
    }
    if (inOrderBy) {
        while (out.endsWith(QLatin1Char(' ')) || out.endsWith(QLatin1Char(';')))
            out.chop(1);
        out += QStringLiteral(" COLLATE QNOCASE");
    }
    return out;
}

} // namespace

QString translateJetSql(const QString &jetSql)
{
    QList<Token> tokens = tokenize(jetSql);
    for (Token &t : tokens) {
        if (t.kind == Token::Date)
            t = {Token::Text, dateLiteral(t.text)};
        else if (isWord(t, "True"))
            t.text = QStringLiteral("-1");
        else if (isWord(t, "False"))
            t.text = QStringLiteral("0");
    }
    translateLikePatterns(tokens);
    foldConcatenation(tokens);
    return collateOrderBy(tokens);
}

} // namespace quillet

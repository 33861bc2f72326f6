#include "scanarray.h"

#include "error.h"

#include <QRegularExpression>

namespace quillet {

namespace {

[[noreturn]] void invalidIndex(const char *source)
{
    throw Error(kObjectErrorBase + 1, QLatin1String(source), QStringLiteral("Invalid Index"));
}

} // namespace

void lib_clsScanArray::LoadArray(const QStringList &items)
{
    m_items = items;
    m_curr = -1;
    m_match = false;
    m_matchNo = m_matchPrev = -1;
    m_matchLoc = 0;
}

void lib_clsScanArray::Delete(int index)
{
    if (index < 0 || index >= Count())
        invalidIndex("clsScanArray_ItemDel");
    m_items.removeAt(index);
    auto shift = [index](int &cursor) {
        if (cursor == index)
            cursor = -1;
        else if (cursor > index)
            --cursor;
    };
    shift(m_curr);
    shift(m_matchNo);
    shift(m_matchPrev);
}

QString lib_clsScanArray::item(int index) const
{
    if (index < 0 || index >= Count())
        invalidIndex("clsScanArray:Item_Get()");
    return m_items.at(index);
}

void lib_clsScanArray::setItem(int index, const QString &value)
{
    if (index < 0 || index >= Count())
        invalidIndex("clsScanArray:Item_Let()");
    m_items[index] = value;
}

template<typename Test>
bool lib_clsScanArray::find(Test test)
{
    const int start = m_matchNo >= 0 ? m_matchNo + 1 : (m_curr >= 0 ? m_curr : 0);
    m_matchPrev = m_matchNo;
    for (int i = start; i < Count(); ++i) {
        const int loc = test(m_items.at(i));
        if (loc > 0) {
            m_match = true;
            m_matchNo = i;
            m_matchLoc = loc;
            return true;
        }
    }
    m_match = false;
    m_matchNo = -1;
    m_matchLoc = 0;
    return false;
}

namespace {
constexpr Qt::CaseSensitivity kCase = Qt::CaseInsensitive;
}

bool lib_clsScanArray::FindEquals(const QString &text)
{
    return find([&](const QString &s) { return s.compare(text, kCase) == 0 ? 1 : 0; });
}

bool lib_clsScanArray::FindDoesNotEqual(const QString &text)
{
    return find([&](const QString &s) { return s.compare(text, kCase) != 0 ? 1 : 0; });
}

bool lib_clsScanArray::FindContains(const QString &text)
{
    return find([&](const QString &s) { return int(s.indexOf(text, 0, kCase)) + 1; });
}

bool lib_clsScanArray::FindDoesNotContain(const QString &text)
{
    return find([&](const QString &s) { return s.contains(text, kCase) ? 0 : 1; });
}

bool lib_clsScanArray::FindStartsWith(const QString &text)
{
    return find([&](const QString &s) { return s.startsWith(text, kCase) ? 1 : 0; });
}

bool lib_clsScanArray::FindDoesNotStartWith(const QString &text)
{
    return find([&](const QString &s) { return s.startsWith(text, kCase) ? 0 : 1; });
}

bool lib_clsScanArray::FindEndsWith(const QString &text)
{
    return find([&](const QString &s) { return s.endsWith(text, kCase) ? int(s.size() - text.size()) + 1 : 0; });
}

bool lib_clsScanArray::FindDoesNotEndWith(const QString &text)
{
    return find([&](const QString &s) { return s.endsWith(text, kCase) ? 0 : 1; });
}

bool lib_clsScanArray::FindLike(const QString &pattern)
{
    const QRegularExpression re(QRegularExpression::wildcardToRegularExpression(pattern),
                                QRegularExpression::CaseInsensitiveOption);
    return find([&](const QString &s) { return re.match(s).hasMatch() ? 1 : 0; });
}

} // namespace quillet

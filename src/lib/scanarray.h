#pragma once

#include <QStringList>

namespace quillet {

// A list of strings searched by several kinds of match, remembering where the last match was.
// Indexes start at 0; -1 means "none". Searches ignore letter case and start after the last match
// (or at the cursor when there was none), so repeated calls walk through every match.
class lib_clsScanArray
{
public:
    void LoadArray(const QStringList &items);
    void Add(const QString &item) { m_items.append(item); }
    // Removes one item; the cursor and the last match move down with the items after it and are
    // cleared when they pointed at it. Throws "Invalid Index" for an index outside the list.
    void Delete(int index);
    int Count() const { return int(m_items.size()); }
    QString item(int index) const;
    void setItem(int index, const QString &value);

    int CurrItemNo() const { return m_curr; }
    void setCurrItemNo(int index) { m_curr = index; }
    QString CurrItem() const { return m_curr >= 0 && m_curr < Count() ? m_items.at(m_curr) : QString(); }

    bool Match() const { return m_match; }
    int MatchItemNo() const { return m_matchNo; }
    void setMatchItemNo(int index) { m_matchNo = index; }
    int MatchItemNoPrev() const { return m_matchPrev; }
    QString MatchItem() const { return m_matchNo >= 0 && m_matchNo < Count() ? m_items.at(m_matchNo) : QString(); }
    // 1-based position of the match inside the item (0 for the negative searches).
    int MatchLocInItem() const { return m_matchLoc; }

    bool FindEquals(const QString &text);
    bool FindDoesNotEqual(const QString &text);
    bool FindContains(const QString &text);
    bool FindDoesNotContain(const QString &text);
    bool FindStartsWith(const QString &text);
    bool FindDoesNotStartWith(const QString &text);
    bool FindEndsWith(const QString &text);
    bool FindDoesNotEndWith(const QString &text);
    // File-pattern match with "*" and "?".
    bool FindLike(const QString &pattern);

private:
    // Runs a search: `test` returns the 1-based match position, 0 for no match.
    template<typename Test>
    bool find(Test test);

    QStringList m_items;
    int m_curr = -1;
    bool m_match = false;
    int m_matchNo = -1;
    int m_matchPrev = -1;
    int m_matchLoc = 0;
};

} // namespace quillet

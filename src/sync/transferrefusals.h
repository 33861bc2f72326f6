#pragma once

#include <QString>
#include <QStringList>

namespace quillet {

// What an import from another machine did not take in (a name refused as unsafe, a move that
// failed), gathered while the import runs and reported once at its end: every refusal goes to the
// debug log, and the user is shown how many there were with the first few, so that nothing is
// left behind without a word.
class TransferRefusals
{
public:
    void add(const QString &path, const QString &why);
    bool isEmpty() const { return m_lines.isEmpty(); }
    int count() const { return int(m_lines.size()); }
    const QStringList &lines() const { return m_lines; }
    // Shows the warning when anything was refused; `left` says where the files stay.
    void report(const QString &left) const;

    static constexpr int kShown = 10;

private:
    QStringList m_lines;
};

} // namespace quillet

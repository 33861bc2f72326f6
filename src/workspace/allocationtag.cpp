#include "allocationtag.h"

#include <algorithm>

namespace quillet {

namespace {

// Where the file name of a path begins: only the file name carries a tag, so a folder called
// "Party (#1)" is never read as one. Journal paths use "\", local ones "/".
int fileNameStart(const QString &path)
{
    return int(std::max(path.lastIndexOf(QLatin1Char('/')), path.lastIndexOf(QLatin1Char('\\')))) + 1;
}

} // namespace

QString StripFamIDs(const QString &name)
{
    const int p = name.indexOf(QStringLiteral("(#"), fileNameStart(name));
    if (p < 0)
        return name;
    return name.left(p) + name.right(4);
}

QString BuildAllocationTag(const QStringList &entries)
{
    return QStringLiteral("(#") + entries.join(QLatin1Char('#')) + QStringLiteral("#)");
}

QString TaggedName(const QString &untaggedName, const QString &tag)
{
    const int dot = untaggedName.lastIndexOf(QLatin1Char('.'));
    if (dot < 0)
        return untaggedName + tag;
    return untaggedName.left(dot) + tag + untaggedName.mid(dot);
}

bool ParsedTag::keepPrivate() const
{
    for (const QString &e : entries) {
        if (e.compare(QLatin1String("P"), Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

QList<int> ParsedTag::familyIds() const
{
    QList<int> ids;
    for (const QString &e : entries) {
        bool ok = false;
        const int id = e.toInt(&ok);
        if (ok)
            ids << id;
    }
    return ids;
}

ParsedTag ParseAllocationTag(const QString &name)
{
    ParsedTag tag;
    const int p = name.indexOf(QStringLiteral("(#"), fileNameStart(name));
    if (p < 0)
        return tag;
    const int q = name.indexOf(QStringLiteral("#)"), p + 2);
    if (q < 0)
        return tag;
    tag.found = true;
    const QString inner = name.mid(p + 2, q - p - 2);
    tag.entries = inner.split(QLatin1Char('#'), Qt::SkipEmptyParts);
    return tag;
}

} // namespace quillet

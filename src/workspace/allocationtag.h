#pragma once

#include <QString>
#include <QStringList>

namespace quillet {

// The allocation tag carried in an allocated photo's file name, between its base name and its
// extension: "(#12#7#P#)" for families 12 and 7 with the photo marked Keep Private.

// Each routine takes a file name, or a path of which only the file name is read.

// The name without its tag: the text before the first "(#" followed by the name's last four
// characters (the accepted extensions are all four characters with their dot).
QString StripFamIDs(const QString &name);

// "(" + "#" + entries joined with "#" + "#" + ")".
QString BuildAllocationTag(const QStringList &entries);

// Base name (without its last extension) + tag + "." + extension.
QString TaggedName(const QString &untaggedName, const QString &tag);

struct ParsedTag
{
    bool found = false;
    QStringList entries; // family IDs in decimal, or "P"
    // True when one entry is "P" (any letter case): the photo is marked Keep Private.
    bool keepPrivate() const;
    // The family IDs of the entries that are numbers.
    QList<int> familyIds() const;
};
ParsedTag ParseAllocationTag(const QString &name);

} // namespace quillet

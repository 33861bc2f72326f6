#pragma once

#include <QString>

#include <optional>
#include <unordered_map>

namespace quillet {

class FamilyDatabase;

// A family met in an allocation tag: what the preparation needs of it.
struct PublishFamily
{
    int id = 0;
    // FirstName, plus a blank and LastName when LastName is not Null: the family's folder.
    QString folderName;
    // The family asked not to be published this way (NoUploadToWeb or NoCopyToCd).
    bool excluded = false;
};

// The families of one preparation run, read from tblFamilies on the first use of each FamilyID
// and kept for the run. A tag element that is not a decimal number is never looked up: it comes
// from a file name, so it is not allowed near the SQL text.
class PublishFamilies
{
public:
    PublishFamilies(FamilyDatabase &db, const QString &exclusionField);

    // The family a tag element names, or nullptr when there is no such family.
    const PublishFamily *find(const QString &element);

private:
    FamilyDatabase &m_db;
    QString m_exclusionField;
    // Node-based, so a family handed out stays where it is while more are added; an id without
    // a family is kept as nullopt so that it is looked up once.
    std::unordered_map<int, std::optional<PublishFamily>> m_cache;
};

} // namespace quillet

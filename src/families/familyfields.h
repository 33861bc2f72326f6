#pragma once

#include <QString>

#include <array>

namespace quillet {

// What the family editor shows of one row of tblFamilies, as the user sees and types it. Texts
// are kept as typed; an empty LastName, Parent or date is stored as Null.
struct FamilyFields
{
    // The ten attendance columns in the order of the editor's boxes: the mornings Monday to
    // Friday, then the afternoons.
    static constexpr std::array<const char *, 10> kDayColumns = {
        "FamDaysMam", "FamDaysTam", "FamDaysWam", "FamDaysTHam", "FamDaysFam",
        "FamDaysMpm", "FamDaysTpm", "FamDaysWpm", "FamDaysTHpm", "FamDaysFpm"};

    int familyId = 0; // 0 while a new family is being entered
    QString firstName;
    QString lastName;
    QString parent;
    bool current = true; // a new family is current
    bool noUploadToWeb = false;
    bool noCopyToCd = false;
    std::array<bool, 10> days = {};
    bool daysOverride = false;
    QString startDate; // "yyyy-MM-dd" or empty
    QString endDate;

    // FirstName, then a blank and LastName when there is one: the family's folder under the Target Dir.
    QString folderName() const
    {
        return lastName.isEmpty() ? firstName : firstName + QLatin1Char(' ') + lastName;
    }
};

} // namespace quillet

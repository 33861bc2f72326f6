#pragma once

#include <QString>

namespace quillet {

// The web upload and the CD preparation are one routine; these are the names that tell them
// apart: which settings, parameters and family field it reads, and the texts it shows.
struct PublishNames
{
    QString command;          // the menu command, for error reports
    QString tgtDirKey;        // WebTgtDir / CdTgtDir
    QString inclFamKey;       // WebTgtInclFam / CdTgtInclFam
    QString minDateKey;       // WebMinDate / CdMinDate
    QString maxDateKey;       // WebMaxDate / CdMaxDate
    QString allowPrivParam;   // WebAllowPriv / CdAllowPriv
    QString copyPrivParam;    // WebCopyPriv / CdCopyPriv
    QString exclusionField;   // NoUploadToWeb / NoCopyToCd
    QString confirmEnd;       // end of the confirmation's first sentence
    QString driveMissing;     // start of the missing-drive message, the drive follows
    QString createQuestion;   // asked when the preparation folder does not exist
    QString progressText;     // the message line during the run
    QString finalQuestion;    // moving the date window on
    QString reportName;       // first part of the report's file name
    QString exclusionReason;  // why a family's photos stay in: "asked for no web" / "asked for no CD"

    static const PublishNames &web();
    static const PublishNames &cd();
};

} // namespace quillet

#include "publishnames.h"

namespace quillet {

const PublishNames &PublishNames::web()
{
    static const PublishNames names{
        QStringLiteral("mnuPrepWebUpload_Click()"),
        QStringLiteral("WebTgtDir"),
        QStringLiteral("WebTgtInclFam"),
        QStringLiteral("WebMinDate"),
        QStringLiteral("WebMaxDate"),
        QStringLiteral("WebAllowPriv"),
        QStringLiteral("WebCopyPriv"),
        QStringLiteral("NoUploadToWeb"),
        QStringLiteral("upload to the web."),
        QStringLiteral("Web Target Dir drive ("),
        QStringLiteral("Web Target Dir not found. Do you want to create it?"),
        QStringLiteral("Copying relevant files in preparation for move to web"),
        QStringLiteral("Set the Web Min Date to the current Web Max Date so duplicate photos will not be included next time?"),
        QStringLiteral("WebUpload"),
        QStringLiteral("asked for no web"),
    };
    return names;
}

const PublishNames &PublishNames::cd()
{
    static const PublishNames names{
        QStringLiteral("mnuPrepCopyToCD_Click()"),
        QStringLiteral("CdTgtDir"),
        QStringLiteral("CdTgtInclFam"),
        QStringLiteral("CdMinDate"),
        QStringLiteral("CdMaxDate"),
        QStringLiteral("CdAllowPriv"),
        QStringLiteral("CdCopyPriv"),
        QStringLiteral("NoCopyToCd"),
        QStringLiteral("burning to CD/DVD."),
        QStringLiteral("Cd Target Dir drive ("),
        QStringLiteral("Cd Target Dir not found. Do you want to create it?"),
        QStringLiteral("Copying relevant files in preparation for move to Cd"),
        QStringLiteral("Set the Cd Min Date to the current Cd Max Date so duplicate photos will not be included next time?"),
        QStringLiteral("CopyToCD"),
        QStringLiteral("asked for no CD"),
    };
    return names;
}

} // namespace quillet

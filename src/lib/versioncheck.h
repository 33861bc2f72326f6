#pragma once

#include <QString>

namespace quillet {

// The online version check: asks the maker's web server for the newest version of the program and
// tells the user whether it is newer than theirs. The server's host (with an optional ":port") is
// the setting "VersionCheckHost"; when that is empty the build's default host is used, so a
// centre's administrator can point it elsewhere in the user or the administrator ini file.
enum class VersionCheckOutcome { Cancelled, Latest, Available, Failed };

// The host asked when the setting is empty.
QString DefaultVersionCheckHost();
// The request URL for a product and version on a host.
QString VersionCheckUrl(const QString &host, const QString &productCode, const QString &currentVersion);
// The newest version in a reply page: the text between "<BODY>" and "</BODY>" (any letter case),
// exactly as it stands; empty when either is missing.
QString VersionFromPage(const QString &page);
// A number that tells this PC from others without saying anything about it (a digest of the
// machine's id, in decimal).
QString PcId();

// Runs the check. Unless silent, and when askFirst, the user may cancel before anything is sent.
// Never throws: every failure ends in the one apology message.
VersionCheckOutcome CheckVersionOnline(const QString &productCode, const QString &currentVersion, bool silent,
                                       bool askFirst, int timeoutMs = 0);

} // namespace quillet

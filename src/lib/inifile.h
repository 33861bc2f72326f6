#pragma once

#include <QString>

namespace quillet {

// Private-profile files: "[Section]" headers and "key=value" lines. Section and key names compare
// without regard to letter case. A write keeps every other line as it was, ends lines with CR LF
// and replaces the file atomically, so a crash leaves the old file or the new one.
namespace IniFile {

// The value of a key, trimmed, with one pair of enclosing double quotes removed; a value of
// exactly one blank stays one blank. `found` tells whether the key exists at all.
QString read(const QString &path, const QString &section, const QString &key,
             const QString &defaultValue = QString(), bool *found = nullptr);
// Writes key=value, creating the file and the section when missing. Throws Error on failure.
void write(const QString &path, const QString &section, const QString &key, const QString &value);

} // namespace IniFile
} // namespace quillet

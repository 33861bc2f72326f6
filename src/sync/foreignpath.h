#pragma once

#include <QString>

namespace quillet {

// What another machine names (a batchfile operand, a file in a transfer folder, a device's
// flag file) is untrusted. Every replay, transfer and import turns such a relative path into a
// native path under one of this PC's base folders through this reader, or refuses it.
//
// Refused: an empty path, a NUL or other control character, an absolute path ("\x", "/x", "\\host"),
// a drive letter ("C:..."), a "." or ".." segment, an empty segment ("a\\b"), and a path whose
// existing part resolves (symbolic links included, dangling ones too) outside the base folder.
// Both "\" (the exchange format) and "/" separate segments. A single trailing separator is allowed
// (a folder operand). The base folder must exist.
class ForeignPath
{
public:
    // Resolves `relative` under `baseDir`. On success ok() is true and path() is the native path
    // (base + "/" + segments, not canonicalised, so a later rename acts on the name as written).
    static ForeignPath resolve(const QString &baseDir, const QString &relative);

    bool ok() const { return m_refusal.isEmpty(); }
    const QString &path() const { return m_path; }
    // Why it was refused, in words for a debug log line; empty when ok().
    const QString &refusal() const { return m_refusal; }

    // True when `path` (native, absolute) is `baseDir` itself or lies inside it after resolving
    // symbolic links of its existing part.
    static bool isInside(const QString &baseDir, const QString &path);

private:
    friend class ForeignBase;
    QString m_path;
    QString m_refusal;
};

// One base folder for many paths (a replay's operands, a preparation's copies): resolves as
// ForeignPath does, without finding the base's canonical form again for every path. It is taken
// again whenever the base's name no longer leads to the same folder (moved, replaced, linked
// elsewhere); every path is still walked and resolved afresh.
class ForeignBase
{
public:
    explicit ForeignBase(const QString &baseDir);

    ForeignPath resolve(const QString &relative);
    bool isInside(const QString &path);

private:
    // The canonical form of the base, brought up to date; empty when the base does not exist.
    const QString &canonical();

    QString m_dir;
    QString m_clean;
    QString m_canonical;
    quint64 m_device = 0;
    quint64 m_inode = 0;
};

} // namespace quillet

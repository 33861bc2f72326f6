#pragma once

#include <QString>
#include <exception>

namespace quillet {

// The object-error base of the error-number convention (hex 80040000 as a signed 32-bit value).
constexpr qint32 kObjectErrorBase = -2147221504;
// Errors raised by the library itself: the object-error base plus 1000.
constexpr qint32 kLibErrorNumber = kObjectErrorBase + 1000;
// Common run-time error numbers used across the program.
constexpr qint32 kErrFileNotFound = 53;
constexpr qint32 kErrDeviceUnavailable = 68;
constexpr qint32 kErrPathFileAccess = 75;
constexpr qint32 kErrPathNotFound = 76;

// A failure carried to the caller: number, source and description.
//
// Library routines report silently and raise again; the outermost command handler catches an
// Error and shows it through lib_ErrorHandler. No Error may escape into Qt's event loop.
class Error : public std::exception
{
public:
    Error(qint32 number, QString source, QString description);

    qint32 number() const { return m_number; }
    const QString &source() const { return m_source; }
    const QString &description() const { return m_description; }

    // The same error, raised again under another source (the "report silently and raise again"
    // convention keeps number and description).
    Error withSource(const QString &source) const { return Error(m_number, source, m_description); }

    const char *what() const noexcept override { return m_what.constData(); }

private:
    qint32 m_number;
    QString m_source;
    QString m_description;
    QByteArray m_what;
};

} // namespace quillet

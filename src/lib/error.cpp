#include "error.h"

namespace quillet {

Error::Error(qint32 number, QString source, QString description)
    : m_number(number)
    , m_source(std::move(source))
    , m_description(std::move(description))
    , m_what((m_source + QStringLiteral(": ") + m_description).toUtf8())
{
}

} // namespace quillet

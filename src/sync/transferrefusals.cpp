#include "transferrefusals.h"

#include "lib/debuglog.h"
#include "lib/errorhandler.h"
#include "lib/texthelpers.h"

namespace quillet {

void TransferRefusals::add(const QString &path, const QString &why)
{
    const QString line = path + QStringLiteral(": ") + why;
    DebugLog(QStringLiteral("Import refused ") + line);
    m_lines << line;
}

void TransferRefusals::report(const QString &left) const
{
    if (m_lines.isEmpty())
        return;
    QString text = lib_FormatCount(m_lines.size(), QStringLiteral("file")) + QStringLiteral(" could not be imported and ")
        + (m_lines.size() == 1 ? QStringLiteral("was") : QStringLiteral("were")) + QStringLiteral(" left in ") + left
        + QStringLiteral(":\r\n");
    text += m_lines.mid(0, kShown).join(QStringLiteral("\r\n"));
    if (m_lines.size() > kShown)
        text += QStringLiteral("\r\n... and ") + QString::number(m_lines.size() - kShown)
            + QStringLiteral(" more (see the debug log)");
    text += QStringLiteral("\r\nPlease check these files and move them by hand if they are wanted.");
    lib_MsgWarning(text);
}

} // namespace quillet

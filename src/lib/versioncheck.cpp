#include "versioncheck.h"

#include "errorhandler.h"
#include "internetpage.h"
#include "userprompt.h"

#include "app/settingsstore.h"

#include <QCryptographicHash>
#include <QSysInfo>
#include <QUrl>
#include <QtEndian>

namespace quillet {

QString DefaultVersionCheckHost()
{
    return QStringLiteral(QUILLET_VERSION_HOST);
}

QString VersionCheckUrl(const QString &host, const QString &productCode, const QString &currentVersion)
{
    const auto enc = [](const QString &v) { return QString::fromLatin1(QUrl::toPercentEncoding(v)); };
    return QStringLiteral("http://") + host + QStringLiteral("/Downloads/GetVersion.asp?ProdCode=") + enc(productCode)
        + QStringLiteral("&Version=") + enc(currentVersion) + QStringLiteral("&PcId=") + PcId();
}

QString VersionFromPage(const QString &page)
{
    const qsizetype open = page.indexOf(QLatin1String("<BODY>"), 0, Qt::CaseInsensitive);
    if (open < 0)
        return QString();
    const qsizetype start = open + 6;
    const qsizetype close = page.indexOf(QLatin1String("</BODY>"), start, Qt::CaseInsensitive);
    if (close < 0)
        return QString();
    return page.mid(start, close - start);
}

QString PcId()
{
    QByteArray id = QSysInfo::machineUniqueId();
    if (id.isEmpty())
        id = QSysInfo::machineHostName().toUtf8();
    const QByteArray digest = QCryptographicHash::hash(id, QCryptographicHash::Sha256);
    return QString::number(qFromBigEndian<quint32>(digest.constData()));
}

VersionCheckOutcome CheckVersionOnline(const QString &productCode, const QString &currentVersion, bool silent,
                                       bool askFirst, int timeoutMs)
{
    // The question offers OK and Cancel: the application's box shows them as Yes and No.
    if (!silent && askFirst
        && !lib_MsgYesNo(QStringLiteral("Checking version number online. No personal information is transmitted.")))
        return VersionCheckOutcome::Cancelled;
    QString newest;
    BusyPointer busy; // the window keeps painting while it waits, but tells the user it is busy
    try {
        QString host = ReadSetting(QStringLiteral("VersionCheckHost")).trimmed();
        if (host.isEmpty())
            host = DefaultVersionCheckHost();
        newest = VersionFromPage(lib_GetInternetPage(VersionCheckUrl(host, productCode, currentVersion), PageAsIs,
                                                     QString(), nullptr, timeoutMs));
    } catch (const Error &e) {
        lib_ErrorHandler(QStringLiteral("CheckVersionOnline"), e, false);
        newest.clear();
    } catch (const std::exception &e) {
        lib_ErrorHandler(QStringLiteral("CheckVersionOnline"), 0, QString::fromLocal8Bit(e.what()), false);
        newest.clear();
    }
    if (newest.isEmpty()) {
        lib_MsgInfo(QStringLiteral("Sorry, there was an error checking version from the internet"));
        return VersionCheckOutcome::Failed;
    }
    if (newest == currentVersion) {
        lib_MsgInfo(QStringLiteral("You have the latest version"), 3);
        return VersionCheckOutcome::Latest;
    }
    lib_MsgInfo(QStringLiteral("Version ") + newest + QStringLiteral(" is available"), 5);
    return VersionCheckOutcome::Available;
}

} // namespace quillet

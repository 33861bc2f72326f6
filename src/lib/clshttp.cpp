#include "clshttp.h"
#include "atomicwrite.h"

#include "debuglog.h"
#include "error.h"
#include "userprompt.h"

#include <QEventLoop>
#include <QFileInfo>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QStringDecoder>
#include <QTimer>

namespace quillet {

namespace {

const char *const kAgent = "Mozilla/4.0 (compatible; MSIE 6.0; Windows NT 5.0)";

QString libSource(const char *routine)
{
    return QStringLiteral("Lib09.") + QLatin1String(routine);
}

} // namespace

lib_clsHTTP::lib_clsHTTP()
    : m_manager(new QNetworkAccessManager)
{
}

lib_clsHTTP::~lib_clsHTTP()
{
    dropReply();
    delete m_manager;
}

void lib_clsHTTP::setSpecifiedURL(const QString &url)
{
    m_specifiedUrl = url;
    m_httpUrl = url.contains(QLatin1String("//")) ? url : QStringLiteral("http://") + url;
}

bool lib_clsHTTP::FileExists() const
{
    return !DestinationFile.isEmpty() && QFileInfo::exists(DestinationFile);
}

QString lib_clsHTTP::StatusText(int status)
{
    static const QHash<int, const char *> texts = {
        {101, "Server has switched protocols in upgrade header."},
        {204, "No info to return."},
        {300, "Server couldn't decide what to return."},
        {301, "Object permanently moved"},
        {302, "Object temporarily moved"},
        {303, "Redirection with new access method."},
        {304, "If-modified-since was not modified."},
        {305, "Redirection to proxy, location header specifies proxy to use."},
        {307, "HTTP/1.1: keep same verb"},
        {400, "Invalid syntax."},
        {401, "Access denied."},
        {402, "Payment required."},
        {403, "Request forbidden."},
        {404, "Object not found. Bad URL."},
        {405, "Method is not allowed."},
        {406, "No response acceptable to client found."},
        {407, "Proxy authentication required."},
        {408, "Server timed out waiting for request."},
        {409, "User should resubmit with more info."},
        {410, "The resource is no longer available."},
        {411, "The server refused to accept request without a length."},
        {412, "Precondition given in request failed."},
        {413, "Request entity was too large."},
        {414, "Request URI too long."},
        {415, "Unsupported media type."},
        {500, "Internal server error."},
        {501, "Required not supported."},
        {502, "Error response received from gateway."},
        {503, "Temporarily overloaded."},
        {504, "Timed out waiting for gateway."},
        {505, "HTTP version not supported."},
    };
    const char *text = texts.value(status);
    return text ? QLatin1String(text) : QString();
}

void lib_clsHTTP::logFailure(const QString &call, const QString &detail) const
{
    // The line names the Qt Network call that failed where the original client named its WinInet
    // call: "QNetworkAccessManager" for ":apiInetOpen (", "QNetworkAccessManager::get" or "::post"
    // for ":apiInetOpenURL (", "QNetworkReply::attribute" (the status) for ":apiHttpQueryInfoStr ("
    // and "QNetworkReply::readAll" for ":apiInetQueryDataAvailable (".
    try {
        DebugLog(QStringLiteral(":ConnectToHTTPHost():") + call + QStringLiteral(" (") + m_httpUrl
                 + QStringLiteral(") ") + detail);
    } catch (const Error &) {
        // A log that cannot be written must not turn a failed request into another failure.
    }
}

void lib_clsHTTP::dropReply()
{
    if (m_reply) {
        m_reply->abort();
        m_reply->deleteLater();
    }
    m_reply = nullptr;
}

QNetworkRequest lib_clsHTTP::makeRequest() const
{
    QNetworkRequest request{QUrl(m_httpUrl)};
    request.setHeader(QNetworkRequest::UserAgentHeader, QByteArray(kAgent));
    // Always from the server, never into a cache.
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(kMaxRedirects);
    // Plain HTTP/1.x, as the servers this talks to expect.
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    request.setTransferTimeout(m_timeoutMs);
    return request;
}

bool lib_clsHTTP::ConnectToHTTPHost()
{
    return send("GET", QByteArray());
}

bool lib_clsHTTP::HTTP_GET()
{
    return send("GET", QByteArray());
}

bool lib_clsHTTP::HTTP_POST(const QByteArray &formData)
{
    return send("POST", formData);
}

bool lib_clsHTTP::send(const QByteArray &verb, const QByteArray &body)
{
    dropReply();
    m_connected = false;
    m_status = 0;
    m_size = -1;
    m_body.clear();
    m_tooLarge = false;
    const QString call = QStringLiteral("QNetworkAccessManager::") + QString::fromLatin1(verb.toLower());
    const QUrl url(m_httpUrl);
    if (!url.isValid() || (url.scheme().compare(QLatin1String("http"), Qt::CaseInsensitive) != 0
                           && url.scheme().compare(QLatin1String("https"), Qt::CaseInsensitive) != 0)) {
        logFailure(QStringLiteral("QNetworkAccessManager"), QStringLiteral("not an http or https URL"));
        return false;
    }
    startRequest(verb, body);
    if (!wait(true)) {
        logFailure(call, QStringLiteral("no answer within the time limit"));
        dropReply();
        return false;
    }
    m_status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QVariant length = m_reply->header(QNetworkRequest::ContentLengthHeader);
    m_size = length.isValid() ? length.toLongLong() : -1;
    if (m_status != 0 && m_status != 200) {
        logFailure(QStringLiteral("QNetworkReply::attribute"), QString::number(m_status) + QLatin1Char(' ') + StatusText(m_status));
        dropReply();
        return false;
    }
    if (m_status == 0 || (m_reply->isFinished() && m_reply->error() != QNetworkReply::NoError)) {
        logFailure(call, m_reply->errorString());
        dropReply();
        return false;
    }
    m_connected = true;
    return true;
}

void lib_clsHTTP::startRequest(const QByteArray &verb, const QByteArray &body)
{
    QNetworkRequest request = makeRequest();
    if (verb == "POST") {
        // Sent as "Content-Type: application/x-www-form-urlencoded".
        request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArrayLiteral("application/x-www-form-urlencoded"));
        m_reply = m_manager->post(request, body);
    } else {
        m_reply = m_manager->get(request);
    }
    // The body is collected as it comes, so that an oversized one is refused early.
    QObject::connect(m_reply, &QIODevice::readyRead, m_reply, [this] {
        if (!m_reply)
            return;
        m_body += m_reply->readAll();
        if (m_body.size() > kMaxBodyBytes) {
            m_tooLarge = true;
            m_reply->abort();
        }
    });
}

bool lib_clsHTTP::wait(bool headersOnly)
{
    if (m_reply->isFinished())
        return true;
    QEventLoop loop;
    QTimer timer;
    timer.setSingleShot(true);
    // The timer restarts whenever data arrives: a slow but steady reply is not cut off.
    QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    QObject::connect(m_reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QObject::connect(m_reply, &QIODevice::readyRead, &timer, [&timer, this] { timer.start(m_timeoutMs); });
    // The first bytes of the body mean the final headers are in (redirects have been followed).
    if (headersOnly)
        QObject::connect(m_reply, &QIODevice::readyRead, &loop, &QEventLoop::quit);
    timer.start(m_timeoutMs);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    if (!m_reply)
        return false;
    return m_reply->isFinished() || (headersOnly && m_reply->bytesAvailable() + m_body.size() > 0);
}

QByteArray lib_clsHTTP::readBody()
{
    if (!m_reply || !m_connected)
        throw Error(kLibErrorNumber, libSource("WriteHTTPDataToString"), QStringLiteral("Not connected"));
    if (!wait(false)) {
        logFailure(QStringLiteral("QNetworkReply::readAll"), QStringLiteral("no more data within the time limit"));
        dropReply();
        throw Error(kLibErrorNumber, libSource("WriteHTTPDataToString"), QStringLiteral("Internet page timed out"));
    }
    if (m_tooLarge || m_reply->error() != QNetworkReply::NoError) {
        const QString why = m_tooLarge ? QStringLiteral("reply larger than ") + QString::number(kMaxBodyBytes)
                                       : m_reply->errorString();
        logFailure(QStringLiteral("QNetworkReply::readAll"), why);
        dropReply();
        throw Error(kLibErrorNumber, libSource("WriteHTTPDataToString"), QStringLiteral("Internet page failed: ") + why);
    }
    m_body += m_reply->readAll();
    dropReply();
    return std::exchange(m_body, QByteArray());
}

QString lib_clsHTTP::WriteHTTPDataToString()
{
    const QByteArray body = readBody();
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder.decode(body);
    if (decoder.hasError())
        throw Error(kLibErrorNumber, libSource("WriteHTTPDataToString"), QStringLiteral("Internet page is not valid text"));
    return text;
}

bool lib_clsHTTP::WriteHTTPDataToFile()
{
    if (FileExists() && !OverwriteTarget) {
        if (!PromptWithCommonDialog)
            return false;
        const QFileInfo info(DestinationFile);
        const QString other = prompt().saveFileDialog(QStringLiteral("All files"), info.suffix(), info.absolutePath(),
                                                      QStringLiteral("Please select a new name for the destination file."));
        if (other.isEmpty())
            return false;
        DestinationFile = other;
    }
    const QByteArray body = readBody();
    const QString failure = WriteFileAtomically(DestinationFile, body);
    if (!failure.isEmpty())
        throw Error(kLibErrorNumber, libSource("WriteHTTPDataToFile"),
                    QStringLiteral("Could not write ") + DestinationFile + QStringLiteral(": ") + failure);
    return true;
}

} // namespace quillet

#pragma once

#include <QByteArray>
#include <QPointer>
#include <QString>

class QNetworkAccessManager;
class QNetworkReply;
class QNetworkRequest;

namespace quillet {

// A small HTTP client: one request at a time, its reply delivered as text or into a file. It waits
// for the server in a local event loop, so the windows keep painting and answering, and gives up
// after a few seconds. Requests never use or fill a cache and follow at most a few redirects. A
// call that fails writes a line to the debug log and returns false (or throws, where it returns
// the body).
class lib_clsHTTP
{
public:
    lib_clsHTTP();
    ~lib_clsHTTP();
    lib_clsHTTP(const lib_clsHTTP &) = delete;
    lib_clsHTTP &operator=(const lib_clsHTTP &) = delete;

    static constexpr int kDefaultTimeoutMs = 5000;
    // Replies larger than this are refused: a version or page request never needs more.
    static constexpr qint64 kMaxBodyBytes = 512 * 1024;
    static constexpr int kMaxRedirects = 5;

    // The URL as given, and as used (a missing scheme becomes "http://").
    QString SpecifiedURL() const { return m_specifiedUrl; }
    void setSpecifiedURL(const QString &url);
    QString HttpURL() const { return m_httpUrl; }
    bool IsConnected() const { return m_connected; }
    // The reply's status code (0 before a reply) and length from its header (-1 when not given).
    int StatusCode() const { return m_status; }
    qint64 SizeOfFile() const { return m_size; }

    // Waiting for the server ends after this many milliseconds without progress.
    void setTimeoutMs(int ms) { m_timeoutMs = ms; }

    // Where WriteHTTPDataToFile writes, and what it does when that file exists.
    QString DestinationFile;
    bool OverwriteTarget = false;
    bool PromptWithCommonDialog = true;
    bool FileExists() const;

    // Opens SpecifiedURL with a GET and waits for the reply's status and length. False when there
    // is no answer, it times out, the redirects loop or the status is not 200.
    bool ConnectToHTTPHost();
    // The same request explicitly as GET, or as POST of url-encoded form data.
    bool HTTP_GET();
    bool HTTP_POST(const QByteArray &formData);
    // Reads the reply body completely and returns it as text. Throws Error when the body is larger
    // than kMaxBodyBytes, is not valid UTF-8, or the transfer fails.
    QString WriteHTTPDataToString();
    // Writes the reply body to DestinationFile (whole or not at all). When that file exists and
    // OverwriteTarget is false, asks for another name when PromptWithCommonDialog is true, else
    // gives up. False when nothing was written.
    bool WriteHTTPDataToFile();

    // The text for an HTTP status, or an empty text for one the client does not name.
    static QString StatusText(int status);

private:
    bool send(const QByteArray &verb, const QByteArray &body);
    void startRequest(const QByteArray &verb, const QByteArray &body);
    QNetworkRequest makeRequest() const;
    // Waits until the reply finished or (headersOnly) its body began; false on timeout.
    bool wait(bool headersOnly);
    QByteArray readBody();
    void logFailure(const QString &call, const QString &detail) const;
    void dropReply();

    QString m_specifiedUrl;
    QString m_httpUrl;
    bool m_connected = false;
    int m_status = 0;
    qint64 m_size = -1;
    int m_timeoutMs = kDefaultTimeoutMs;
    QNetworkAccessManager *m_manager = nullptr;
    QPointer<QNetworkReply> m_reply;
    QByteArray m_body;
    bool m_tooLarge = false;
};

} // namespace quillet

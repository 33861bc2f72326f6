#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/clshttp.h"
#include "lib/error.h"
#include "lib/internetpage.h"
#include "lib/versioncheck.h"
#include "support/hometest.h"

#include <QFile>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

using namespace quillet;
using namespace quillet::test;

namespace {

// A web server on 127.0.0.1 for one test: it records each request line and answers every request
// with the same bytes (or not at all), then closes the connection.
class TestServer : public QObject
{
public:
    QByteArray reply;
    bool silent = false; // accept and read, but never answer
    QList<QByteArray> requests;
    int connections = 0;

    bool start() { return m_server.listen(QHostAddress::LocalHost, 0); }
    quint16 port() const { return m_server.serverPort(); }
    QString host() const { return QStringLiteral("127.0.0.1:") + QString::number(port()); }

    TestServer()
    {
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection()) {
                ++connections;
                connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                    m_buffers[socket] += socket->readAll();
                    const QByteArray &in = m_buffers[socket];
                    if (!in.contains("\r\n\r\n"))
                        return;
                    requests << in.left(in.indexOf("\r\n"));
                    m_buffers.remove(socket);
                    if (silent)
                        return;
                    socket->write(reply);
                    socket->disconnectFromHost();
                });
            }
        });
    }

private:
    QTcpServer m_server;
    QHash<QTcpSocket *, QByteArray> m_buffers;
};

QByteArray response(const QByteArray &status, const QByteArray &body, const QByteArray &extraHeaders = QByteArray())
{
    return "HTTP/1.1 " + status + "\r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: "
        + QByteArray::number(body.size()) + "\r\n" + extraHeaders + "Connection: close\r\n\r\n" + body;
}

QByteArray page(const QByteArray &bodyText)
{
    return "<html><head><title>v</title></head><BODY>" + bodyText + "</BODY></html>";
}

const QString kSorry = QStringLiteral("Sorry, there was an error checking version from the internet");

} // namespace

class TestVersionCheck : public HomeTest
{
    Q_OBJECT

    TestServer *m_server = nullptr;

private Q_SLOTS:
    void init()
    {
        HomeTest::init();
        m_env->dataDir();
        m_server = new TestServer;
        QVERIFY(m_server->start());
        WriteSetting(QStringLiteral("VersionCheckHost"), m_server->host());
    }
    void cleanup()
    {
        delete m_server;
        HomeTest::cleanup();
    }

    void outcomes_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<int>("outcome");
        QTest::addColumn<QString>("message");
        QTest::addColumn<int>("countdown");
        const int latest = int(VersionCheckOutcome::Latest), available = int(VersionCheckOutcome::Available),
                  failed = int(VersionCheckOutcome::Failed);
        QTest::newRow("same version") << response("200 OK", page("1.4.2")) << latest
                                      << QStringLiteral("You have the latest version") << 3;
        QTest::newRow("newer version") << response("200 OK", page("1.5.0")) << available
                                       << QStringLiteral("Version 1.5.0 is available") << 5;
        // The comparison is exact: blanks around the number make it "another" version.
        QTest::newRow("blanks") << response("200 OK", page("\r\n 1.4.2 ")) << available
                                << QStringLiteral("Version \r\n 1.4.2  is available") << 5;
        QTest::newRow("closing tag in lower case")
            << response("200 OK", "<html><body>1.4.2</body></HTML>") << latest
            << QStringLiteral("You have the latest version") << 3;
        QTest::newRow("closing tag mixed case") << response("200 OK", "<HTML><BODY>2.0</Body></html>") << available
                                                << QStringLiteral("Version 2.0 is available") << 5;
        QTest::newRow("no </html>") << response("200 OK", "<html><BODY>1.4.2</BODY>") << failed << kSorry << 0;
        QTest::newRow("empty body") << response("200 OK", page("")) << failed << kSorry << 0;
        QTest::newRow("no body tag") << response("200 OK", "<html>1.4.2</html>") << failed << kSorry << 0;
        QTest::newRow("404") << response("404 Not Found", page("1.5.0")) << failed << kSorry << 0;
        QTest::newRow("500") << response("500 Internal Server Error", page("1.5.0")) << failed << kSorry << 0;
        QTest::newRow("invalid utf-8") << response("200 OK", page("1.5\xff\xfe")) << failed << kSorry << 0;
        QTest::newRow("megabytes") << response("200 OK", page(QByteArray(3 * 1024 * 1024, 'x'))) << failed << kSorry << 0;
        QTest::newRow("not http") << QByteArray("garbage\r\n\r\n") << failed << kSorry << 0;
    }
    void outcomes()
    {
        QFETCH(QByteArray, reply);
        QFETCH(int, outcome);
        QFETCH(QString, message);
        QFETCH(int, countdown);
        m_server->reply = reply;
        m_port->answer(true);
        QCOMPARE(int(CheckVersionOnline(QStringLiteral("Quillet"), QStringLiteral("1.4.2"), false, true, 2000)), outcome);
        QCOMPARE(m_port->messages().size(), 2);
        QCOMPARE(m_port->messages().first().text,
                 QStringLiteral("Checking version number online. No personal information is transmitted."));
        QCOMPARE(m_port->messages().last().text, message);
        QCOMPARE(m_port->messages().last().timeout, countdown);
        QCOMPARE(m_port->messages().last().style, 3);
        QVERIFY(!m_server->requests.isEmpty()); // a reply that is not HTTP is asked again by Qt

    }

    void requestCarriesProductVersionAndPcId()
    {
        m_server->reply = response("200 OK", page("1.0"));
        QCOMPARE(CheckVersionOnline(QStringLiteral("Quillet"), QStringLiteral("1.0"), true, true, 2000),
                 VersionCheckOutcome::Latest);
        QCOMPARE(m_server->requests.size(), 1);
        static const QRegularExpression line(
            QStringLiteral("^GET /Downloads/GetVersion\\.asp\\?ProdCode=Quillet&Version=1\\.0&PcId=(\\d+) HTTP/1\\.1$"));
        const QRegularExpressionMatch m = line.match(QString::fromLatin1(m_server->requests.first()));
        QVERIFY2(m.hasMatch(), m_server->requests.first().constData());
        QCOMPARE(m.captured(1), PcId()); // the same number every time on this machine
        QCOMPARE(m_port->messages().size(), 1); // silent: no question first
    }

    void cancelSendsNothing()
    {
        m_server->reply = response("200 OK", page("1.0"));
        m_port->answer(false);
        QCOMPARE(CheckVersionOnline(QStringLiteral("Quillet"), QStringLiteral("1.0"), false, true, 2000),
                 VersionCheckOutcome::Cancelled);
        QTest::qWait(100);
        QCOMPARE(m_server->connections, 0);
        QCOMPARE(m_port->messages().size(), 1);
    }

    void serverThatNeverAnswersTimesOut()
    {
        m_server->silent = true;
        QCOMPARE(CheckVersionOnline(QStringLiteral("Quillet"), QStringLiteral("1.0"), true, false, 500),
                 VersionCheckOutcome::Failed);
        QCOMPARE(m_server->requests.size(), 1);
        QCOMPARE(m_port->lastText(), kSorry);
        // The failure is in the debug log, under the call that failed.
        QVERIFY(fileBytes(AppPaths::debugLog()).contains(":ConnectToHTTPHost():QNetworkAccessManager::get (http://127.0.0.1:"));
    }

    void notFoundIsLoggedWithItsStatusText()
    {
        m_server->reply = response("404 Not Found", page("1.5.0"));
        QCOMPARE(CheckVersionOnline(QStringLiteral("Quillet"), QStringLiteral("1.0"), true, false, 2000),
                 VersionCheckOutcome::Failed);
        QFile log(AppPaths::debugLog());
        QVERIFY(log.open(QIODevice::ReadOnly));
        QVERIFY(log.readAll().contains(":ConnectToHTTPHost():QNetworkReply::attribute (http://127.0.0.1:"));
        log.seek(0);
        QVERIFY(log.readAll().contains(") 404 Object not found. Bad URL."));
    }

    void connectionRefused()
    {
        const QString host = m_server->host();
        delete m_server; // nothing listens on that port now
        m_server = new TestServer;
        WriteSetting(QStringLiteral("VersionCheckHost"), host);
        QCOMPARE(CheckVersionOnline(QStringLiteral("Quillet"), QStringLiteral("1.0"), true, false, 2000),
                 VersionCheckOutcome::Failed);
        QCOMPARE(m_port->lastText(), kSorry);
    }

    void redirectLoopFails()
    {
        m_server->reply = response("302 Found", QByteArray(), "Location: http://" + m_server->host().toLatin1() + "/again\r\n");
        QCOMPARE(CheckVersionOnline(QStringLiteral("Quillet"), QStringLiteral("1.0"), true, false, 2000),
                 VersionCheckOutcome::Failed);
        QVERIFY(m_server->requests.size() > lib_clsHTTP::kMaxRedirects);
        QCOMPARE(m_port->lastText(), kSorry);
    }

    void pageRules_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("post");
        QTest::addColumn<QString>("error"); // empty: the page comes back
        QTest::newRow("post without url") << QString() << QStringLiteral("a=1")
                                          << QStringLiteral("PostData provided but no PageURL");
        QTest::newRow("post to a url without extension")
            << QStringLiteral("/Downloads/GetVersion") << QStringLiteral("a=1")
            << QStringLiteral("PostData provided but PageURL has no type extension");
        QTest::newRow("post") << QStringLiteral("/Downloads/Form.asp") << QStringLiteral("a=1") << QString();
        QTest::newRow("get without scheme") << QStringLiteral("/index.html") << QString() << QString();
    }
    void pageRules()
    {
        QFETCH(QString, url);
        QFETCH(QString, post);
        QFETCH(QString, error);
        m_server->reply = response("200 OK", page("x"));
        const QString full = url.isEmpty() ? QString() : m_server->host() + url; // no "//": http:// is added
        try {
            const QString text = lib_GetInternetPage(full, PageAsIs, post, nullptr, 2000);
            QVERIFY2(error.isEmpty(), qPrintable(error));
            QCOMPARE(text, QString::fromLatin1(page("x")));
            QCOMPARE(QString::fromLatin1(m_server->requests.first()),
                     (post.isEmpty() ? QStringLiteral("GET ") : QStringLiteral("POST ")) + url + QStringLiteral(" HTTP/1.1"));
        } catch (const Error &e) {
            QCOMPARE(e.description(), error);
            QCOMPARE(e.source(), QStringLiteral("Lib09.lib_GetInternetPage"));
            QCOMPARE(m_server->connections, 0);
        }
    }

    void pageCleanUps()
    {
        m_server->reply = response("200 OK", "<html>\r\n<!-- note -->\t<a href=\"a.html\">A &amp; B</a>"
                                             "<A HREF='b.asp?x=1'>&#66;</A></html>");
        QStringList hrefs;
        const QString text = lib_GetInternetPage(m_server->host() + QStringLiteral("/"),
                                                 PageRemoveLineBreaks | PageTabsToBlanks | PageRemoveComments
                                                     | PageConvertCharRefs,
                                                 QString(), &hrefs, 2000);
        QCOMPARE(text, QStringLiteral("<html>    <a href=\"a.html\">A & B</a><A HREF='b.asp?x=1'>B</A></html>"));
        QCOMPARE(hrefs, (QStringList{QStringLiteral("a.html"), QStringLiteral("b.asp?x=1")}));
    }

    void downloadToFile()
    {
        m_server->reply = response("200 OK", "file body");
        lib_clsHTTP http;
        http.setTimeoutMs(2000);
        http.setSpecifiedURL(m_server->host() + QStringLiteral("/f.bin"));
        QCOMPARE(http.HttpURL(), QStringLiteral("http://") + m_server->host() + QStringLiteral("/f.bin"));
        const QString existing = m_env->writeFile(QStringLiteral("f.bin"), "old");
        http.DestinationFile = existing;
        // The file exists and may not be overwritten: the user picks another name.
        const QString other = m_env->path(QStringLiteral("g.bin"));
        m_port->choose(other);
        QVERIFY(http.ConnectToHTTPHost());
        QCOMPARE(http.StatusCode(), 200);
        QCOMPARE(http.SizeOfFile(), 9);
        QVERIFY(http.WriteHTTPDataToFile());
        QCOMPARE(fileBytes(other), QByteArray("file body"));
        QCOMPARE(fileBytes(existing), QByteArray("old"));
    }
};

QTEST_GUILESS_MAIN(TestVersionCheck)
#include "tst_versioncheck.moc"

#include "internetpage.h"

#include "clshttp.h"
#include "error.h"

#include <QRegularExpression>
#include <QUrl>

namespace quillet {

namespace {

const QString kSource = QStringLiteral("Lib09.lib_GetInternetPage");

[[noreturn]] void fail(const QString &description)
{
    throw Error(kLibErrorNumber, kSource, description);
}

QString convertCharRefs(const QString &text)
{
    static const QRegularExpression ref(QStringLiteral("&(#x[0-9a-fA-F]+|#[0-9]+|amp|lt|gt|quot|apos|nbsp);"));
    QString out;
    qsizetype last = 0;
    for (auto it = ref.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        out += QStringView(text).mid(last, m.capturedStart() - last);
        const QString name = m.captured(1);
        char32_t code = 0;
        if (name.startsWith(QLatin1String("#x")))
            code = name.mid(2).toUInt(nullptr, 16);
        else if (name.startsWith(QLatin1Char('#')))
            code = name.mid(1).toUInt();
        else
            code = name == QLatin1String("amp") ? U'&' : name == QLatin1String("lt") ? U'<'
                : name == QLatin1String("gt")  ? U'>' : name == QLatin1String("quot") ? U'"'
                : name == QLatin1String("apos") ? U'\'' : U'\u00a0';
        out += code > 0 && code <= 0x10FFFF ? QString::fromUcs4(&code, 1) : m.captured();
        last = m.capturedEnd();
    }
    return out + QStringView(text).mid(last);
}

QStringList hrefTargets(const QString &page)
{
    static const QRegularExpression href(QStringLiteral("HREF\\s*=\\s*(\"([^\"]*)\"|'([^']*)'|([^\\s>]+))"),
                                         QRegularExpression::CaseInsensitiveOption);
    QStringList targets;
    for (auto it = href.globalMatch(page); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        for (int group : {2, 3, 4}) {
            if (m.capturedStart(group) >= 0) {
                targets << m.captured(group);
                break;
            }
        }
    }
    return targets;
}

} // namespace

QString lib_GetInternetPage(const QString &pageUrl, int options, const QString &postData, QStringList *hrefs,
                            int timeoutMs)
{
    if (!postData.isEmpty()) {
        if (pageUrl.isEmpty())
            fail(QStringLiteral("PostData provided but no PageURL"));
        const QString last = QUrl(pageUrl.contains(QLatin1String("//")) ? pageUrl : QStringLiteral("http://") + pageUrl)
                                 .path().section(QLatin1Char('/'), -1);
        if (!last.contains(QLatin1Char('.')))
            fail(QStringLiteral("PostData provided but PageURL has no type extension"));
    }
    lib_clsHTTP http;
    if (timeoutMs > 0)
        http.setTimeoutMs(timeoutMs);
    http.setSpecifiedURL(pageUrl);
    const bool sent = postData.isEmpty() ? http.HTTP_GET() : http.HTTP_POST(postData.toUtf8());
    if (!sent)
        fail(QStringLiteral("Could not fetch ") + http.HttpURL());
    QString page;
    try {
        page = http.WriteHTTPDataToString();
    } catch (const Error &e) {
        throw e.withSource(kSource);
    }
    if (!page.contains(QLatin1String("</html>"), Qt::CaseInsensitive))
        fail(QStringLiteral("Internet page is incomplete"));

    if (options & PageRemoveLineBreaks)
        page.remove(QLatin1Char('\r')).remove(QLatin1Char('\n'));
    if (options & PageTabsToBlanks)
        page.replace(QLatin1Char('\t'), QStringLiteral("    "));
    if (options & PageRemoveComments) {
        static const QRegularExpression comment(QStringLiteral("<!--.*?-->"),
                                                QRegularExpression::DotMatchesEverythingOption);
        page.remove(comment);
    }
    if (options & PageConvertCharRefs)
        page = convertCharRefs(page);
    if (hrefs)
        *hrefs = hrefTargets(page);
    return page;
}

} // namespace quillet

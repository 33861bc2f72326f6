#pragma once

#include <QString>
#include <QStringList>

namespace quillet {

// Clean-ups lib_GetInternetPage may apply to a page; combine with |.
enum InternetPageOption {
    PageAsIs = 0,
    PageRemoveLineBreaks = 1,
    PageTabsToBlanks = 2,
    PageRemoveComments = 4,
    PageConvertCharRefs = 8,
};

// Fetches one web page as text: GET, or POST when postData is given. A URL without "//" gets
// "http://" in front. Throws Error (source "Lib09.lib_GetInternetPage") for postData without a
// URL or with a URL whose last path element has no type extension, when the page cannot be
// fetched, and when it does not contain "</html>" (any letter case): "Internet page is incomplete".
// When hrefs is given, it receives the targets of the page's HREF= attributes.
QString lib_GetInternetPage(const QString &pageUrl, int options = PageAsIs, const QString &postData = QString(),
                            QStringList *hrefs = nullptr, int timeoutMs = 0);

} // namespace quillet

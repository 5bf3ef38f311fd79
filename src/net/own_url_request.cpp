#include "net/own_url_request.h"

#include <QUrlQuery>

#include "net/signing.h"

namespace tolvane::net {

OwnUrlRequest buildOwnUrlRequest(const OwnUrlRequestInput& input) {
    OwnUrlRequest request;
    const bool isPost = input.method == HttpMethod::Post;
    const bool signedRequest = !input.signingPath.isEmpty();

    // What ends up in the query before the common items; it is also the first signed list.
    ParamList queryItems;
    if (isPost) {
        request.form = input.items;
    } else {
        queryItems = input.items;
    }

    ParamList query = queryItems;
    if (signedRequest) {
        const QString time = QString::number(input.time);
        ParamList signedQuery = queryItems;
        query.append(qMakePair(QStringLiteral("aid"), QStringLiteral("vxtool")));
        if (input.clientSys) {
            const auto clientSys = qMakePair(QStringLiteral("client_sys"), QStringLiteral("pc"));
            query.append(clientSys);
            signedQuery.append(clientSys);
        }
        const QString auth =
            signWithCommonValues(input.signingPath, input.time, signedQuery, request.form);
        query.append(qMakePair(QStringLiteral("time"), time));
        query.append(qMakePair(QStringLiteral("auth"), auth));

        request.headers = input.extraHeaders;
        if (input.headerSignature) {
            request.headers.append(qMakePair(QStringLiteral("aid"), QStringLiteral("vxtool")));
            request.headers.append(qMakePair(QStringLiteral("time"), time));
            request.headers.append(qMakePair(QStringLiteral("auth"), auth));
        }
    } else {
        if (input.clientSys) {
            query.append(qMakePair(QStringLiteral("client_sys"), QStringLiteral("pc")));
        }
        request.headers = input.extraHeaders;
    }

    request.url = QUrl(QString::fromStdString(input.host) + input.urlPath);
    if (!query.isEmpty()) {
        // QUrlQuery would read "%41" or "+" in a value as encoded text; encoding every pair
        // first makes the server decode exactly the values that were signed.
        QUrlQuery urlQuery;
        for (const auto& pair : query) {
            urlQuery.addQueryItem(QString::fromLatin1(QUrl::toPercentEncoding(pair.first)),
                                  QString::fromLatin1(QUrl::toPercentEncoding(pair.second)));
        }
        request.url.setQuery(urlQuery);
    }
    return request;
}

}  // namespace tolvane::net

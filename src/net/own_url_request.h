#pragma once

#include <QString>
#include <QUrl>
#include <QtGlobal>
#include <string>

#include "tolvane/request_descriptor.h"

namespace tolvane::net {

enum class HttpMethod { Get, Post };

// An operation that composes its URL from the host table rather than the base-address table.
struct OwnUrlRequestInput {
    HttpMethod method = HttpMethod::Get;
    std::string host;              // VxEndpoints::host(), no trailing "/"
    QString urlPath;               // begins with "/"
    QString signingPath;           // the name the signature is computed over; empty: unsigned
    ParamList items;               // the operation's own items, in order
    bool clientSys = false;        // adds "client_sys" = "pc" after "aid"
    bool headerSignature = false;  // repeats "aid", "time" and "auth" as headers
    qint64 time = 0;               // server time in whole seconds
    ParamList extraHeaders;        // e.g. "referer"; sent before the signature headers
};

struct OwnUrlRequest {
    QUrl url;        // host + path with the query set, items in sending order
    ParamList form;  // POST body; empty for a GET
    ParamList headers;
};

// Places the items: a POST sends its own items as the body and aid[, client_sys], time, auth
// as the query; a GET sends its own items first in the query, then the same common items.
// An unsigned request carries no aid, time or auth at all.
OwnUrlRequest buildOwnUrlRequest(const OwnUrlRequestInput& input);

}  // namespace tolvane::net

#pragma once

#include <httplib.h>

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <string>
#include <utility>
#include <vector>

#include "http/sim_http_server.h"
#include "support/request_signing.h"

using Pairs = std::vector<std::pair<std::string, std::string>>;

// A client with short limits, so that a broken server fails a test instead of hanging it.
inline httplib::Client clientFor(const std::string& origin) {
    httplib::Client client(origin);
    client.set_connection_timeout(std::chrono::seconds(5));
    client.set_read_timeout(std::chrono::seconds(10));
    return client;
}

// key=value pairs percent-encoded the way the module's request client encodes them.
inline std::string encodePairs(const Pairs& pairs) {
    std::string text;
    for (const auto& pair : pairs) {
        if (!text.empty()) {
            text += '&';
        }
        text += pair.first + "=" +
                QByteArray::fromStdString(pair.second).toPercentEncoding().toStdString();
    }
    return text;
}

inline httplib::Headers toHeaders(const Pairs& pairs) {
    return httplib::Headers(pairs.begin(), pairs.end());
}

inline QJsonObject jsonBody(const httplib::Result& result) {
    return result ? QJsonDocument::fromJson(QByteArray::fromStdString(result->body)).object()
                  : QJsonObject();
}

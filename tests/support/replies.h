#pragma once

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>

// A successful reply envelope around the JSON text of its payload.
inline QByteArray okReply(const QByteArray& data) {
    return R"({"error":0,"data":)" + data + "}";
}

// A reply read as a JSON object; empty when it is none.
inline QJsonObject replyObject(const QByteArray& reply) {
    return QJsonDocument::fromJson(reply).object();
}

// The "error" of a reply, as the made-up replies of failed requests carry it too.
inline int replyError(const QByteArray& reply) {
    return replyObject(reply).value("error").toInt();
}

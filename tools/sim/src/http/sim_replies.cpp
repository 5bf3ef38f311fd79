#include "http/sim_replies.h"

#include <QJsonDocument>

namespace tolvane::sim {

SimReply jsonReply(int status, const QJsonObject& body) {
    SimReply reply;
    reply.status = status;
    reply.body = QJsonDocument(body).toJson(QJsonDocument::Compact).toStdString();
    return reply;
}

SimReply okReply(const QJsonValue& data) {
    return jsonReply(200, QJsonObject{{"error", 0}, {"data", data}});
}

SimReply errorReply(int code, const QString& message, const QString& messageKey) {
    return jsonReply(200, QJsonObject{{"error", code}, {messageKey, message}});
}

}  // namespace tolvane::sim

#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include "http/sim_records.h"

namespace tolvane::sim {

// The code and text of the reply to a request whose "auth" does not match.
constexpr int kAuthFailedCode = 1010;
constexpr const char* kAuthFailedText = "auth check failed";

// 200 with {"error": 0, "data": data}.
SimReply okReply(const QJsonValue& data);

// 200 with {"error": code, <messageKey>: message}; a few services use "msg".
SimReply errorReply(int code, const QString& message, const QString& messageKey = "data");

// Any status with a JSON object body.
SimReply jsonReply(int status, const QJsonObject& body);

}  // namespace tolvane::sim

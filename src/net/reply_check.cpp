#include "net/reply_check.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

namespace tolvane::net {
namespace {

QByteArray madeUpReply(qint64 error, const QString& message, const std::string& data) {
    QJsonObject object;
    object.insert(QStringLiteral("error"), error);
    object.insert(QStringLiteral("msg"), message);
    object.insert(QStringLiteral("data"), QString::fromStdString(data));
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

}  // namespace

bool checkReply(QByteArray& reply, const CurlResponse& response) {
    // A transfer that broke off after a good status (time-out, cut body, refused size) never
    // delivered its reply: it fails like one that got no answer at all.
    const bool incomplete = response.errorCode != CprErrorCode::OK && response.statusCode < 400;
    if (response.statusCode != 0 && response.statusCode < 400 && !incomplete) {
        reply = QByteArray::fromStdString(response.body);
        return true;
    }
    if (response.statusCode >= 400) {
        reply = madeUpReply(
            response.statusCode,
            QStringLiteral("[Error] 服务器返回异常，错误码 %1").arg(response.statusCode),
            response.body);
        return false;
    }
    reply = madeUpReply(static_cast<int>(response.errorCode),
                        QStringLiteral("[Error] 网络请求失败"), response.errorMessage);
    return false;
}

}  // namespace tolvane::net

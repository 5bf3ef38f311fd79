#include "passport_reply.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace halyard {

namespace {

bool parseObject(const QByteArray& body, QJsonObject& root) {
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        return false;
    }
    root = document.object();
    return true;
}

int readInt(const QJsonObject& object, const QString& key) {
    const QJsonValue value = object.value(key);
    return value.isString() ? value.toString().toInt() : value.toInt();
}

QString readText(const QJsonObject& object, const QString& key) {
    const QJsonValue value = object.value(key);
    return value.isDouble() ? QString::number(value.toDouble(), 'g', 16) : value.toString();
}

}  // namespace

PassportVerdict readVerdict(const QByteArray& body, int httpStatus) {
    PassportVerdict verdict;
    QJsonObject root;
    if (!parseObject(body, root) || !root.value(QStringLiteral("error")).isDouble()) {
        verdict.errorCode = httpStatus >= 400 ? httpStatus : kMalformedReply;
        verdict.message = QString::fromUtf8(body.left(200));
        return verdict;
    }
    verdict.errorCode = root.value(QStringLiteral("error")).toInt();
    const QJsonValue data = root.value(QStringLiteral("data"));
    verdict.message =
        data.isString() ? data.toString() : root.value(QStringLiteral("msg")).toString();
    return verdict;
}

PassportVerdict readLoginReply(const QByteArray& body, int httpStatus, LoginInfo& info,
                               RemoteLoginInfo& remote) {
    const PassportVerdict verdict = readVerdict(body, httpStatus);
    QJsonObject root;
    if (!parseObject(body, root)) {
        return verdict;
    }
    if (verdict.errorCode == kRemoteLoginRequired) {
        const QJsonObject ext = root.value(QStringLiteral("ext")).toObject();
        remote.isForeignTel = readInt(ext, QStringLiteral("isForeignTel"));
        remote.hidePhone = readText(ext, QStringLiteral("hidePhone"));
        remote.code = readText(ext, QStringLiteral("code"));
        return verdict;
    }
    if (verdict.errorCode != 0) {
        return verdict;
    }
    const QJsonObject data = root.value(QStringLiteral("data")).toObject();
    const QJsonObject shortToken = data.value(QStringLiteral("short_token")).toObject();
    info.longToken = readText(data, QStringLiteral("long_token"));
    info.uid = readText(shortToken, QStringLiteral("uid"));
    info.clientType = readInt(shortToken, QStringLiteral("client_type"));
    info.createTime = readText(shortToken, QStringLiteral("create_time"));
    info.expireIn = readInt(shortToken, QStringLiteral("expire_in"));
    info.longTokenId = readInt(shortToken, QStringLiteral("long_token_id"));
    info.shortToken = readText(shortToken, QStringLiteral("short_token"));
    info.bizType = readInt(shortToken, QStringLiteral("biz_type"));
    return verdict;
}

PassportVerdict readQrCodeReply(const QByteArray& body, int httpStatus, QRcodeLoginInfo& qrCode) {
    const PassportVerdict verdict = readVerdict(body, httpStatus);
    QJsonObject root;
    if (verdict.errorCode != 0 || !parseObject(body, root)) {
        return verdict;
    }
    const QJsonObject data = root.value(QStringLiteral("data")).toObject();
    qrCode.code = readText(data, QStringLiteral("code"));
    qrCode.url = readText(data, QStringLiteral("url"));
    qrCode.expireSeconds = readInt(data, QStringLiteral("expire"));
    return verdict;
}

}  // namespace halyard

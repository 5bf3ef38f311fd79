// The login result and the session it leaves behind: token set, remote-login data, logout.
#include <QJsonObject>
#include <cstdlib>

#include "liveroom/vx_live_room_info.h"
#include "log/log_writer.h"
#include "parse/data_parser.h"
#include "parse/reply_texts.h"
#include "service/vx_net_service_imp.h"

namespace {

constexpr int kRemoteLoginRequired = 130014;
constexpr int kRemoteLoginResult = 228;

void clearRecord(ShortTokenInfo& record) {
    record.uid.clear();
    record.shortToken.clear();
    record.bizType = 0;
    record.longTokenId = 0;
    record.clientType = 0;
    record.createTime.clear();
    record.expireIn = 0;
}

}  // namespace

int DataParser::parseLoginResult(const QByteArray& bytes, std::string& errorMessage,
                                 std::string& longTokenOut, ShortTokenInfo& record) {
    writeParseBanner("parseLoginResult");
    QJsonObject root;
    const int code =
        parseReplyEnvelope(bytes, root, QStringLiteral("error"), QStringLiteral("data"));
    if (code != 0) {
        errorMessage = lastErrorMessage();
        if (code != kRemoteLoginRequired) {
            return mapServerErrorCode(code);
        }
        QJsonObject ext;
        if (readObject(root, QStringLiteral("ext"), ext)) {
            state_.isForeignTel = readInt(ext, QStringLiteral("isForeignTel"), 0) != 0;
            state_.hidePhone =
                readString(ext, QStringLiteral("hidePhone"), QString()).toStdString();
            state_.remoteLoginCode =
                readString(ext, QStringLiteral("code"), QString()).toStdString();
        }
        return kRemoteLoginResult;
    }
    QJsonObject data;
    QJsonObject shortToken;
    const bool usable = readObject(root, QStringLiteral("data"), data) &&
                        readObject(data, QStringLiteral("short_token"), shortToken);
    const QString longToken =
        usable ? readString(data, QStringLiteral("long_token"), QString()) : QString();
    if (longToken.isEmpty()) {
        errorMessage = tolvane::kReplyDataErrorText;
        return 1;
    }
    clearRecord(record);
    record.uid = readString(shortToken, QStringLiteral("uid"), QString()).toStdString();
    record.clientType = readInt(shortToken, QStringLiteral("client_type"), 0);
    record.createTime =
        readString(shortToken, QStringLiteral("create_time"), QString()).toStdString();
    record.expireIn = readInt(shortToken, QStringLiteral("expire_in"), 0);
    record.longTokenId = readInt(shortToken, QStringLiteral("long_token_id"), 0);
    record.shortToken =
        readString(shortToken, QStringLiteral("short_token"), QString()).toStdString();
    record.bizType = readInt(shortToken, QStringLiteral("biz_type"), 0);
    longTokenOut = longToken.toStdString();
    return 0;
}

int DataParser::parseLoginResult(int code, std::string& errorMessage, std::string& longTokenOut,
                                 ShortTokenInfo& record, const RemoteLoginInfo& remote,
                                 const LoginInfo& info) {
    writeParseBanner("parseLoginResult");
    if (code != 0) {
        errorMessage = lastErrorMessage();
        if (code != kRemoteLoginRequired) {
            return mapServerErrorCode(code);
        }
        state_.isForeignTel = remote.isForeignTel != 0;
        state_.hidePhone = remote.hidePhone.toStdString();
        state_.remoteLoginCode = remote.code.toStdString();
        return kRemoteLoginResult;
    }
    clearRecord(record);
    record.uid = info.uid.toStdString();
    record.clientType = info.clientType;
    record.createTime = info.createTime.toStdString();
    record.expireIn = info.expireIn;
    record.longTokenId = info.longTokenId;
    record.shortToken = info.shortToken.toStdString();
    record.bizType = info.bizType;
    longTokenOut = info.longToken.toStdString();
    if (info.longToken.isEmpty()) {
        errorMessage = tolvane::kReplyDataErrorText;
        return 1;
    }
    return 0;
}

int32_t VxNetServiceImp::storeLogin(int32_t parseResult, std::string& errorMessage,
                                    const std::string& longTokenOut) {
    if (parseResult != 0) {
        tolvane::log::writeLine(tolvane::log::kMainLog,
                                QStringLiteral("parseLoginResult error: %1").arg(parseResult));
        return parseResult;
    }
    if (!tokenInfo_.uid.empty()) {
        liveRoomInfo_->setCurrentUserId(std::atoi(tokenInfo_.uid.c_str()));  // leading digits
    }
    longToken_ = longTokenOut;
    const int32_t userInfo = initUserInfo(errorMessage);
    if (userInfo != 0) {
        tolvane::log::writeLine(tolvane::log::kMainLog,
                                QStringLiteral("initUserInfo error: %1").arg(userInfo));
        return userInfo;
    }
    return 0;
}

int32_t VxNetServiceImp::onLoginReply(const QByteArray& bytes, std::string& errorMessage,
                                      std::string& longTokenOut) {
    const int32_t result = parser_.parseLoginResult(bytes, errorMessage, longTokenOut, tokenInfo_);
    return storeLogin(result, errorMessage, longTokenOut);
}

int32_t VxNetServiceImp::onLoginResult(int code, std::string& errorMessage, const LoginInfo& info,
                                       const RemoteLoginInfo& remote, std::string& longTokenOut) {
    const int32_t result =
        parser_.parseLoginResult(code, errorMessage, longTokenOut, tokenInfo_, remote, info);
    return storeLogin(result, errorMessage, longTokenOut);
}

// slot 23
void VxNetServiceImp::getLastLoginMessage(std::string& message) {
    message = lastLoginMessage_;
}

// slot 27
void VxNetServiceImp::getRemoteLoginInfo(bool& isForeignTel, std::string& hidePhone,
                                         std::string& remoteLoginCode) {
    isForeignTel = parser_.isForeignTel();
    hidePhone = parser_.hidePhone();
    remoteLoginCode = parser_.remoteLoginCode();
}

// slot 36
void VxNetServiceImp::logout() {
    logoutBarrage();
    tokenInfo_ = ShortTokenInfo();
    longToken_.clear();
    liveRoomInfo_->clear();
    pushAddresses_.clear();
    parser_.reset();
}

// slot 60
void VxNetServiceImp::getSessionText(std::string& longToken) {
    longToken = longToken_;
}

// slot 89
int32_t VxNetServiceImp::getLoginInfo(ShortTokenInfo& tokenInfo) {
    tokenInfo = tokenInfo_;
    return tokenInfo_.expireIn;
}

// Logins through the client-base library's LoginRequest, and the third-party login.
#include <cstdlib>

#include "halyard/login_request.h"
#include "liveroom/vx_live_room_info.h"
#include "parse/reply_texts.h"
#include "parse/result_codes.h"
#include "log/log_writer.h"
#include "service/vx_net_service_imp.h"

namespace {

constexpr int kLoginTimeoutMs = 3000;
using tolvane::kNoAnswer;

QString fromUtf8(const std::string& text) {
    return QString::fromStdString(text);
}

}  // namespace

int32_t VxNetServiceImp::runLibraryCodeCall(const LibraryCodeCall& call, const char* errorUrl,
                                            std::string& errorMessage,
                                            const std::function<int32_t(int code)>& resultOf) {
    int code = 0;
    QString message;
    const bool answered = call(code, message);
    lastLoginMessage_ = message.toStdString();
    if (!answered) {
        lastLoginMessage_ = tolvane::kNetworkFailureStoredText;
        errorMessage = tolvane::kNetworkFailureText;
        return kNoAnswer;
    }
    const int32_t result = resultOf ? resultOf(code) : DataParser::parseCodeResult(code);
    if (result == 0) {
        return 0;
    }
    errorMessage = lastLoginMessage_;
    tolvane::log::writeLine(tolvane::log::kMainLog,
                            QStringLiteral("error Url: %1, errorCode: %2,  errorMsg: %3")
                                .arg(QLatin1String(errorUrl))
                                .arg(code)
                                .arg(QString::fromStdString(errorMessage)));
    return result;
}

int32_t VxNetServiceImp::runLibraryLogin(const LibraryLoginCall& call, const char* errorUrl,
                                         std::string& errorMessage, std::string& longTokenOut) {
    LoginInfo info;
    RemoteLoginInfo remote;
    return runLibraryCodeCall(
        [&](int& code, QString& message) { return call(code, message, info, remote); }, errorUrl,
        errorMessage,
        [&](int code) {
            // The library form of the result parse reports the library's own message.
            parser_.setLastErrorMessage(lastLoginMessage_);
            return onLoginResult(code, errorMessage, info, remote, longTokenOut);
        });
}

// slot 0
int32_t VxNetServiceImp::login(const char* name, const char* password, std::string& errorMessage,
                               std::string& longTokenOut) {
    logBanner("login");
    const QString user = QString::fromUtf8(name != nullptr ? name : "");
    const QString secret = QString::fromUtf8(password != nullptr ? password : "");
    return runLibraryLogin(
        [&](int& code, QString& message, LoginInfo& info, RemoteLoginInfo& remote) {
            return loginClient_->syncLoginByName(user, secret, {}, code, message, info, remote,
                                                 false, kLoginTimeoutMs);
        },
        "app/loginCheck2", errorMessage, longTokenOut);
}

// slot 1
int32_t VxNetServiceImp::loginByToken(std::string& longToken, std::string& errorMessage) {
    const QString token = fromUtf8(longToken);
    return runLibraryLogin(
        [&](int& code, QString& message, LoginInfo& info, RemoteLoginInfo& remote) {
            return loginClient_->syncLoginByToken(token, code, message, info, remote,
                                                  kLoginTimeoutMs);
        },
        "app/loginCheck2", errorMessage, longToken);
}

// slot 2
int32_t VxNetServiceImp::login_third_party(const std::string& longToken,
                                           const ShortTokenInfo& tokenInfo) {
    logBanner("login_third_party");
    tokenInfo_ = tokenInfo;
    if (!tokenInfo_.uid.empty()) {
        liveRoomInfo_->setCurrentUserId(std::atoi(tokenInfo_.uid.c_str()));
    }
    longToken_ = longToken;
    std::string errorMessage;
    return initUserInfo(errorMessage);
}

// slot 19
int32_t VxNetServiceImp::loginRequestCall(const std::string& first, const std::string& second,
                                          int32_t value) {
    return loginClient_->reportClientEvent(fromUtf8(first), fromUtf8(second), value);
}

// slot 29
int32_t VxNetServiceImp::remoteLogin(const std::string& text1, const std::string& text2,
                                     std::string& longTokenOut, std::string& errorMessage) {
    logBanner("remoteLogin");
    return runLibraryLogin(
        [&](int& code, QString& message, LoginInfo& info, RemoteLoginInfo& remote) {
            return loginClient_->syncRemoteLogin(fromUtf8(text1), fromUtf8(text2), code, message,
                                                 info, remote, kLoginTimeoutMs);
        },
        "app/remoteLogin", errorMessage, longTokenOut);
}

// slot 32
int32_t VxNetServiceImp::loginByPhone(const std::string& text1, const std::string& text2,
                                      const std::string& text3, std::string& longTokenOut,
                                      std::string& errorMessage) {
    logBanner("loginByPhone");
    return runLibraryLogin(
        [&](int& code, QString& message, LoginInfo& info, RemoteLoginInfo& remote) {
            return loginClient_->syncLoginByPhone(fromUtf8(text1), fromUtf8(text2), fromUtf8(text3),
                                                  {}, code, message, info, remote, false,
                                                  kLoginTimeoutMs);
        },
        "app/loginCheck2", errorMessage, longTokenOut);
}

// slot 68
int32_t VxNetServiceImp::loginByPhoneCaptcha(const std::string& text1, const std::string& text2,
                                             const std::string& text3, std::string& longTokenOut,
                                             std::string& errorMessage) {
    logBanner("loginByPhoneCaptcha");
    return runLibraryLogin(
        [&](int& code, QString& message, LoginInfo& info, RemoteLoginInfo& remote) {
            return loginClient_->syncLoginByPhone(fromUtf8(text1), fromUtf8(text2), fromUtf8(text3),
                                                  code, message, info, remote, kLoginTimeoutMs);
        },
        "app/loginCheck2", errorMessage, longTokenOut);
}

// slot 70
int32_t VxNetServiceImp::loginCheckNew(const LoginCheckRequest& request, std::string& errorMessage,
                                       std::string& longTokenOut) {
    tolvane::log::writeLine(tolvane::log::kMainLog,
                            QStringLiteral("loginCheckNew----------------"));
    return runLibraryLogin(
        [&](int& code, QString& message, LoginInfo& info, RemoteLoginInfo& remote) {
            if (!request.name.empty()) {
                return loginClient_->syncLoginByName(
                    fromUtf8(request.name), fromUtf8(request.secret), request.extraParams, code,
                    message, info, remote, true, kLoginTimeoutMs);
            }
            return loginClient_->syncLoginByPhone(
                fromUtf8(request.phoneText1), fromUtf8(request.secret),
                fromUtf8(request.phoneText3), request.extraParams, code, message, info, remote,
                true, kLoginTimeoutMs);
        },
        "app/loginCheck2", errorMessage, longTokenOut);
}

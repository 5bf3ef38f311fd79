// SMS verification codes and phone binding: two calls of the login library, two signed form
// POSTs to the content API whose envelope keeps its code under "result".
#include "halyard/login_request.h"
#include "service/vx_net_service_imp.h"

namespace {

using tolvane::net::HostKind;
using tolvane::net::HttpMethod;

constexpr int kCodeTimeoutMs = 3000;

const tolvane::net::OperationRow& kSendPhoneCaptchaNew = tolvane::net::registerOperation(
    hostRow("sendPhoneCaptchaNew", HttpMethod::Post, HostKind::ContentApi,
            "/api/v1/sendPhoneCaptcha2", "api/v1/sendPhoneCaptcha2")
        .withFixedBanner("sendPhoneCaptchaNew--------------------------"));

const tolvane::net::OperationRow& kBindPhoneNum =
    tolvane::net::registerOperation(hostRow("bindPhoneNum", HttpMethod::Post, HostKind::ContentApi,
                                            "/api/v1/bindphone2", "api/v1/bindphone2"));

QString fromUtf8(const std::string& text) {
    return QString::fromStdString(text);
}

// Both POSTs keep their code under "result" and their message under "data".
auto resultKeyParser(DataParser& parser, std::string& errorMessage) {
    return [&parser, &errorMessage](const QByteArray& reply) -> int32_t {
        const int32_t result =
            parser.parseCodeResult(reply, QStringLiteral("result"), QStringLiteral("data"));
        if (result != 0) {
            errorMessage = parser.lastErrorMessage();
        }
        return result;
    };
}

}  // namespace

// slot 28
int32_t VxNetServiceImp::sendPhoneCaptcha(const std::string& text, std::string& errorMessage) {
    logBanner("sendPhoneCaptcha");
    const QString target = fromUtf8(text);
    return runLibraryCodeCall(
        [&](int& code, QString& message) {
            return loginClient_->syncSendVertifyCode(target, code, message, kCodeTimeoutMs);
        },
        "app/sendPhoneCaptcha", errorMessage);
}

// slot 72
int32_t VxNetServiceImp::sendPhoneLoginCaptchaNew(const LoginCheckRequest& request,
                                                  std::string& errorMessage) {
    logBanner("sendPhoneLoginCaptchaNew");
    return runLibraryCodeCall(
        [&](int& code, QString& message) {
            return loginClient_->syncSendPhoneVertifyCode(
                fromUtf8(request.phoneText1), fromUtf8(request.phoneText3), request.extraParams,
                code, message, kCodeTimeoutMs);
        },
        "app/loginCaptcha2", errorMessage);
}

// slot 71
int32_t VxNetServiceImp::sendPhoneCaptchaNew(const LoginCheckRequest& request, bool confirm,
                                             std::string& errorMessage) {
    ParamList items{
        {QStringLiteral("token"), fromUtf8(sessionToken())},
        {QStringLiteral("bindphonenum"), fromUtf8(request.phoneText1)},
        {QStringLiteral("areaCode"), fromUtf8(request.phoneText3)},
        {QStringLiteral("confirm"), confirm ? QStringLiteral("1") : QStringLiteral("0")},
        {QStringLiteral("client_type"), QStringLiteral("3")}};
    // std::map walks its keys in order, which is the order the platform signs and expects.
    for (const auto& [key, value] : request.extraParams) {
        items.append({fromUtf8(key), fromUtf8(value)});
    }
    return runOperation(kSendPhoneCaptchaNew, items, &errorMessage,
                        resultKeyParser(parser_, errorMessage));
}

// slot 63
int32_t VxNetServiceImp::bindPhoneNum(const std::string& phoneNumber, std::string& errorMessage) {
    const ParamList items{{QStringLiteral("token"), fromUtf8(sessionToken())},
                          {QStringLiteral("yzphonenum"), fromUtf8(phoneNumber)}};
    return runOperation(kBindPhoneNum, items, &errorMessage,
                        resultKeyParser(parser_, errorMessage));
}

#include "platform/sim_account_code_service.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <cctype>

#include "http/sim_http_server.h"
#include "http/sim_replies.h"
#include "platform/sim_caller.h"
#include "platform/sim_passport_service.h"
#include "platform/sim_platform_state.h"

namespace tolvane::sim {

namespace {

using namespace account_code_results;
using namespace app_auth_codes;

constexpr int kContentApiHost = 0;
constexpr int kPassportHost = 2;

SimReply resultReply(int code, const QJsonValue& data) {
    return jsonReply(200, QJsonObject{{"result", code}, {"data", data}});
}

// The caller checks answer under "error"; these routes keep every code under "result".
SimReply underResultKey(const SimReply& refusal) {
    QJsonObject body = QJsonDocument::fromJson(QByteArray::fromStdString(refusal.body)).object();
    body.insert(QStringLiteral("result"), body.take(QStringLiteral("error")));
    return jsonReply(refusal.status, body);
}

bool isPhoneNumber(const std::string& text) {
    return text.size() >= 5 && text.size() <= 15 &&
           std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c); });
}

SimReply sendBindingCode(SimPlatformState& state, const SimRequest& request) {
    const SimCaller caller = identifyCaller(state, request);
    if (!caller.account) {
        return underResultKey(caller.refusal);
    }
    const std::string phone = request.formValue("bindphonenum");
    if (!isPhoneNumber(phone)) {
        return resultReply(kBadPhone, QStringLiteral("手机号格式错误"));
    }
    const auto owner = accountByLoginPhone(state, phone);
    if (owner && owner->uid != caller.account->uid && request.formValue("confirm") != "1") {
        return resultReply(kPhoneTaken, QStringLiteral("该手机号已绑定其他账号，确认后将换绑"));
    }
    state.passport().issueSmsCode(phone);
    state.passport().openBinding(caller.account->uid, phone);
    return resultReply(0, QStringLiteral("验证码已发送"));
}

SimReply bindPhone(SimPlatformState& state, const SimRequest& request) {
    const SimCaller caller = identifyCaller(state, request);
    if (!caller.account) {
        return underResultKey(caller.refusal);
    }
    switch (state.passport().bindPhone(caller.account->uid, request.formValue("yzphonenum"))) {
        case SimPassportState::BindResult::Bound:
            return resultReply(0, QStringLiteral("绑定成功"));
        case SimPassportState::BindResult::Expired:
            return resultReply(kBindingExpired, QStringLiteral("验证码已过期，请重新获取"));
        case SimPassportState::BindResult::NotRequested:
            break;
    }
    return resultReply(kBindingNotRequested, QStringLiteral("请先获取验证码"));
}

// The passport host wants the signature twice: in the query, and as headers of the same
// values, so that its gateway can check them before the body is read.
bool headerSignatureHolds(const SimRequest& request) {
    for (const char* key : {"aid", "time", "auth"}) {
        const std::string header = request.header(key);
        if (header.empty() || header != request.queryValue(key)) {
            return false;
        }
    }
    return true;
}

// The checks both app-authorisation routes make before their own; nullopt when they pass.
std::optional<SimReply> appAuthRefusal(const SimPlatformState& state, const SimRequest& request) {
    if (!headerSignatureHolds(request)) {
        return errorReply(kHeaderSignatureMismatch, QStringLiteral("header auth check failed"));
    }
    if (!timeInWindow(state, request.queryValue("time"))) {
        return timeRefusal();
    }
    return std::nullopt;
}

SimReply authPorts(const SimPlatformState& state, const SimRequest& request) {
    if (const auto refusal = appAuthRefusal(state, request)) {
        return *refusal;
    }
    if (request.queryValue("authType") != "VXTool" || request.queryValue("bizType") != "13") {
        return errorReply(kUnknownAuthType, QStringLiteral("未知的授权类型"));
    }
    return okReply(QJsonObject{{"port", state.passport().authPorts()}});
}

SimReply generateAuthCode(SimPlatformState& state, const SimRequest& request) {
    if (const auto refusal = appAuthRefusal(state, request)) {
        return *refusal;
    }
    if (request.formValue("bizType") != "13") {
        return errorReply(kUnknownAuthType, QStringLiteral("未知的业务类型"));
    }
    const std::string longToken = request.formValue("longToken");
    const auto account = state.accountByLongToken(longToken);
    if (!account || account->longTokenExpired) {
        return errorReply(passport_codes::kLongTokenExpired,
                          QStringLiteral("登录已过期，请重新登录"));
    }
    SimPassportState& passport = state.passport();
    const std::string code = passport.issueAuthCode(longToken, request.header("referer"));
    return okReply(QJsonObject{{"code", QString::fromStdString(code)},
                               {"expire", passport.authCodeLifetimeSeconds()}});
}

}  // namespace

void addAccountCodeRoutes(SimHttpServer& server, SimPlatformState& state) {
    SimPlatformState* s = &state;
    addHostRoute(server, "POST", kContentApiHost, "/api/v1/sendPhoneCaptcha2",
                 "api/v1/sendPhoneCaptcha2",
                 [s](const SimRequest& r) { return sendBindingCode(*s, r); });
    addHostRoute(server, "POST", kContentApiHost, "/api/v1/bindphone2", "api/v1/bindphone2",
                 [s](const SimRequest& r) { return bindPhone(*s, r); });
    addHostRoute(server, "GET", kPassportHost, "/japi/app/auth/port", "japi/app/auth/port",
                 [s](const SimRequest& r) { return authPorts(*s, r); });
    addHostRoute(server, "POST", kPassportHost, "/japi/app/auth/generateCode",
                 "japi/app/auth/generateCode",
                 [s](const SimRequest& r) { return generateAuthCode(*s, r); });
}

}  // namespace tolvane::sim

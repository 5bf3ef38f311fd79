#include "platform/sim_passport_service.h"

#include <QJsonDocument>
#include <QJsonObject>

#include "http/sim_http_server.h"
#include "http/sim_replies.h"
#include "platform/sim_platform_state.h"

namespace tolvane::sim {

namespace {

using namespace passport_codes;

QString q(const std::string& text) {
    return QString::fromStdString(text);
}

SimReply grantReply(SimPlatformState& state, const SimAccount& account) {
    const SimPlatformState::Grant grant = state.grantLogin(account);
    const QJsonObject shortToken{
        {"uid", q(account.uid)},
        {"client_type", grant.session.clientType},
        {"create_time", QString::number(state.nowSeconds())},
        {"expire_in", 7 * 24 * 3600},
        {"long_token_id", grant.session.longTokenId},
        {"short_token", q(grant.session.shortToken)},
        {"biz_type", grant.session.bizType},
    };
    return okReply(QJsonObject{{"long_token", q(grant.longToken)}, {"short_token", shortToken}});
}

QString maskedPhone(const std::string& phone) {
    if (phone.size() < 7) {
        return q(phone);
    }
    return q(phone.substr(0, 3) + "****" + phone.substr(phone.size() - 4));
}

// Accounts that log in from an unfamiliar place must confirm with an SMS code first.
SimReply finishLogin(SimPlatformState& state, const SimAccount& account) {
    if (!account.remoteLogin) {
        return grantReply(state, account);
    }
    SimReply reply = errorReply(kRemoteLoginRequired, QStringLiteral("请验证手机号后登录"));
    QJsonObject body = QJsonDocument::fromJson(QByteArray::fromStdString(reply.body)).object();
    body.insert(QStringLiteral("ext"), QJsonObject{{"isForeignTel", account.foreignTel ? 1 : 0},
                                                   {"hidePhone", maskedPhone(account.phone)},
                                                   {"code", q(state.issueRemoteCode(account))}});
    return jsonReply(200, body);
}

SimReply wrongCredentials() {
    return errorReply(kWrongCredentials, QStringLiteral("账号或密码错误"));
}

SimReply loginCheck(SimPlatformState& state, const SimRequest& request) {
    const std::string type = request.param("login_type");
    std::optional<SimAccount> account;
    if (type == "name") {
        account = state.accountByName(request.param("name"));
        if (!account || account->password != request.param("secret")) {
            return wrongCredentials();
        }
    } else if (type == "phone" || type == "phone_captcha") {
        const std::string phone = request.param("phone");
        account = state.accountByPhone(phone);
        const std::string secret =
            type == "phone" ? request.param("secret") : request.param("captcha");
        const bool passwordOk = type == "phone" && account && account->password == secret;
        if (!account || (!passwordOk && !state.consumeSmsCode(phone, secret))) {
            return type == "phone" ? wrongCredentials()
                                   : errorReply(kWrongCaptcha, QStringLiteral("验证码错误"));
        }
    } else if (type == "token") {
        account = state.accountByLongToken(request.param("long_token"));
        if (!account || account->longTokenExpired) {
            return errorReply(kLongTokenExpired, QStringLiteral("登录已过期，请重新登录"));
        }
        return grantReply(state, *account);  // a saved token is trusted where it was issued
    } else {
        return errorReply(kWrongCredentials, QStringLiteral("unknown login_type"));
    }
    return finishLogin(state, *account);
}

SimReply remoteLogin(SimPlatformState& state, const SimRequest& request) {
    const std::string code = request.param("code");
    const std::optional<SimAccount> account = state.accountByRemoteCode(code);
    if (!account) {
        return wrongCredentials();
    }
    if (!state.consumeSmsCode(code, request.param("captcha")) &&
        !state.consumeSmsCode(account->phone, request.param("captcha"))) {
        return errorReply(kWrongCaptcha, QStringLiteral("验证码错误"));
    }
    return grantReply(state, *account);
}

SimReply sendCaptcha(SimPlatformState& state, const std::string& target) {
    if (!state.accountByPhone(target) && !state.accountByRemoteCode(target)) {
        return errorReply(kWrongCredentials, QStringLiteral("手机号未注册"));
    }
    state.issueSmsCode(target);
    return okReply(QStringLiteral("sent"));
}

SimReply qrLogin(SimPlatformState& state, const SimRequest& request) {
    const std::string code = request.param("code");
    std::string accountName;
    switch (state.qrState(code, &accountName)) {
        case SimPlatformState::QrState::Unknown:
            return errorReply(kUnknownQrCode, QStringLiteral("二维码已失效"));
        case SimPlatformState::QrState::Pending:
            return errorReply(kQrCodePending, QStringLiteral("等待扫码"));
        case SimPlatformState::QrState::Scanned:
            break;
    }
    const std::optional<SimAccount> account = state.accountByName(accountName);
    state.consumeQrCode(code);
    return account ? grantReply(state, *account) : wrongCredentials();
}

}  // namespace

void addPassportRoutes(SimHttpServer& server, SimPlatformState& state) {
    auto add = [&server](const char* path, SimHandler handler) {
        server.routes().add({"POST", SimAddressTable::Base, 0, std::string("/") + path, path,
                             SimSignRule::Query, std::move(handler)});
    };
    SimPlatformState* s = &state;
    add("app/loginCheck2", [s](const SimRequest& r) { return loginCheck(*s, r); });
    add("app/remoteLogin", [s](const SimRequest& r) { return remoteLogin(*s, r); });
    add("app/sendPhoneCaptcha",
        [s](const SimRequest& r) { return sendCaptcha(*s, r.param("target")); });
    add("app/loginCaptcha2",
        [s](const SimRequest& r) { return sendCaptcha(*s, r.param("phone")); });
    add("scan/code", [s](const SimRequest&) {
        const std::string code = s->issueQrCode();
        return okReply(QJsonObject{
            {"code", q(code)},
            {"url", QStringLiteral("https://passport.tolvane.example/scan?code=") + q(code)},
            {"expire", 120}});
    });
    add("lapi/passport/scan/auth", [s](const SimRequest& r) { return qrLogin(*s, r); });
    add("app/clientEvent", [](const SimRequest&) { return okReply(QStringLiteral("recorded")); });
}

}  // namespace tolvane::sim

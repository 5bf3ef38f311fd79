#include "platform/sim_passport_service.h"

#include <QJsonDocument>
#include <QJsonObject>

#include "http/sim_http_server.h"
#include "http/sim_replies.h"
#include "platform/sim_account_code_service.h"
#include "platform/sim_platform_state.h"
#include "platform/sim_qr_control.h"

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
    body.insert(QStringLiteral("ext"),
                QJsonObject{{"isForeignTel", account.foreignTel ? 1 : 0},
                            {"hidePhone", maskedPhone(account.phone)},
                            {"code", q(state.passport().issueRemoteCode(account.uid))}});
    return jsonReply(200, body);
}

SimReply wrongCredentials() {
    return errorReply(kWrongCredentials, QStringLiteral("账号或密码错误"));
}

// An SMS code check as every passport route answers it; nullopt when the code was good.
std::optional<SimReply> smsRefusal(SimPassportState::SmsCheck check) {
    switch (check) {
        case SimPassportState::SmsCheck::Accepted:
            return std::nullopt;
        case SimPassportState::SmsCheck::Expired:
            return errorReply(kCaptchaExpired, QStringLiteral("验证码已过期，请重新获取"));
        case SimPassportState::SmsCheck::Wrong:
            break;
    }
    return errorReply(kWrongCaptcha, QStringLiteral("验证码错误"));
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
        account = accountByLoginPhone(state, phone);
        const std::string secret =
            type == "phone" ? request.param("secret") : request.param("captcha");
        // The password login by phone also takes an SMS code in place of the password.
        if (!account) {
            return type == "phone" ? wrongCredentials()
                                   : errorReply(kWrongCaptcha, QStringLiteral("验证码错误"));
        }
        if (type == "phone" && account->password == secret) {
            return finishLogin(state, *account);
        }
        const SimPassportState::SmsCheck check = state.passport().consumeSmsCode(phone, secret);
        if (type == "phone" && check == SimPassportState::SmsCheck::Wrong) {
            return wrongCredentials();
        }
        if (const auto refusal = smsRefusal(check)) {
            return *refusal;
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
    const auto uid = state.passport().uidByRemoteCode(code);
    const std::optional<SimAccount> account = uid ? state.accountByUid(*uid) : std::nullopt;
    if (!account) {
        return wrongCredentials();
    }
    // The code may have gone to the remote-login code or straight to the account's phone.
    const std::string captcha = request.param("captcha");
    SimPassportState::SmsCheck check = state.passport().consumeSmsCode(code, captcha);
    if (check == SimPassportState::SmsCheck::Wrong) {
        check = state.passport().consumeSmsCode(account->phone, captcha);
    }
    if (const auto refusal = smsRefusal(check)) {
        return *refusal;
    }
    return grantReply(state, *account);
}

SimReply sendCaptcha(SimPlatformState& state, const std::string& target) {
    if (!accountByLoginPhone(state, target) && !state.passport().uidByRemoteCode(target)) {
        return errorReply(kWrongCredentials, QStringLiteral("手机号未注册"));
    }
    state.passport().issueSmsCode(target);
    return okReply(QStringLiteral("sent"));
}

SimReply qrLogin(SimPlatformState& state, const SimRequest& request) {
    std::string accountName;
    switch (state.passport().pollQr(request.param("code"), &accountName)) {
        case SimPassportState::QrState::Unknown:
            return errorReply(kUnknownQrCode, QStringLiteral("二维码已失效"));
        case SimPassportState::QrState::Issued:
        case SimPassportState::QrState::Waiting:
            return errorReply(kQrCodePending, QStringLiteral("等待扫码"));
        case SimPassportState::QrState::Scanned:
            return errorReply(kQrCodeScanned, QStringLiteral("已扫码，请在手机上确认登录"));
        case SimPassportState::QrState::Expired:
            return errorReply(kQrCodeExpired, QStringLiteral("二维码已过期，请刷新"));
        case SimPassportState::QrState::Confirmed:
            break;
    }
    const std::optional<SimAccount> account = state.accountByName(accountName);
    return account ? grantReply(state, *account) : wrongCredentials();
}

}  // namespace

std::optional<SimAccount> accountByLoginPhone(const SimPlatformState& state,
                                              const std::string& phone) {
    if (const auto uid = state.passport().uidByBoundPhone(phone)) {
        return state.accountByUid(*uid);
    }
    const std::optional<SimAccount> owner = state.accountByPhone(phone);
    // A number that moved to another account no longer logs its first owner in.
    if (owner && state.passport().boundPhone(owner->uid).value_or(phone) != phone) {
        return std::nullopt;
    }
    return owner;
}

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
        const std::string code = s->passport().issueQrCode();
        return okReply(QJsonObject{
            {"code", q(code)},
            {"url", QStringLiteral("https://passport.tolvane.example/scan?code=") + q(code)},
            {"expire", s->passport().qrLifetimeSeconds()}});
    });
    add("lapi/passport/scan/auth", [s](const SimRequest& r) { return qrLogin(*s, r); });
    addQrControlRoutes(server, state);
    addAccountCodeRoutes(server, state);
}

}  // namespace tolvane::sim

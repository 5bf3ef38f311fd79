#include "halyard/login_request.h"

#include "passport_client.h"
#include "passport_reply.h"

namespace {

using halyard::FormItems;
using halyard::PassportAnswer;
using halyard::PassportVerdict;

FormItems withExtras(FormItems items, const ExtraParams& extras) {
    for (const auto& [key, value] : extras) {
        items.append({QString::fromStdString(key), QString::fromStdString(value)});
    }
    return items;
}

QString generation(bool newGeneration) {
    return newGeneration ? QStringLiteral("2") : QStringLiteral("1");
}

// Sends one login request and reports it the way every login call does.
bool loginExchange(const QString& path, const FormItems& form, int& errorCode, QString& message,
                   LoginInfo& info, RemoteLoginInfo& remote, int timeoutMs) {
    const PassportAnswer answer = halyard::postToPassport(path, form, timeoutMs);
    if (!answer.answered) {
        return false;
    }
    const PassportVerdict verdict =
        halyard::readLoginReply(answer.body, answer.httpStatus, info, remote);
    errorCode = verdict.errorCode;
    message = verdict.message;
    return true;
}

bool plainExchange(const QString& path, const FormItems& form, int& errorCode, QString& message,
                   int timeoutMs) {
    const PassportAnswer answer = halyard::postToPassport(path, form, timeoutMs);
    if (!answer.answered) {
        return false;
    }
    const PassportVerdict verdict = halyard::readVerdict(answer.body, answer.httpStatus);
    errorCode = verdict.errorCode;
    message = verdict.message;
    return true;
}

}  // namespace

LoginRequest::LoginRequest(QObject* parent) : QObject(parent) {}

LoginRequest::~LoginRequest() = default;

bool LoginRequest::syncLoginByName(const QString& name, const QString& password,
                                   ExtraParams extraParams, int& errorCode, QString& message,
                                   LoginInfo& info, RemoteLoginInfo& remote, bool newGeneration,
                                   int timeoutMs) {
    const FormItems form = withExtras({{QStringLiteral("login_type"), QStringLiteral("name")},
                                       {QStringLiteral("name"), name},
                                       {QStringLiteral("secret"), password},
                                       {QStringLiteral("generation"), generation(newGeneration)}},
                                      extraParams);
    return loginExchange(QStringLiteral("app/loginCheck2"), form, errorCode, message, info, remote,
                         timeoutMs);
}

bool LoginRequest::syncLoginByPhone(const QString& phone, const QString& secret,
                                    const QString& areaCode, ExtraParams extraParams,
                                    int& errorCode, QString& message, LoginInfo& info,
                                    RemoteLoginInfo& remote, bool newGeneration, int timeoutMs) {
    const FormItems form = withExtras({{QStringLiteral("login_type"), QStringLiteral("phone")},
                                       {QStringLiteral("phone"), phone},
                                       {QStringLiteral("secret"), secret},
                                       {QStringLiteral("area_code"), areaCode},
                                       {QStringLiteral("generation"), generation(newGeneration)}},
                                      extraParams);
    return loginExchange(QStringLiteral("app/loginCheck2"), form, errorCode, message, info, remote,
                         timeoutMs);
}

bool LoginRequest::syncLoginByPhone(const QString& phone, const QString& captcha,
                                    const QString& areaCode, int& errorCode, QString& message,
                                    LoginInfo& info, RemoteLoginInfo& remote, int timeoutMs) {
    const FormItems form = {{QStringLiteral("login_type"), QStringLiteral("phone_captcha")},
                            {QStringLiteral("phone"), phone},
                            {QStringLiteral("captcha"), captcha},
                            {QStringLiteral("area_code"), areaCode}};
    return loginExchange(QStringLiteral("app/loginCheck2"), form, errorCode, message, info, remote,
                         timeoutMs);
}

bool LoginRequest::syncLoginByToken(QString longToken, int& errorCode, QString& message,
                                    LoginInfo& info, RemoteLoginInfo& remote, int timeoutMs) {
    const FormItems form = {{QStringLiteral("login_type"), QStringLiteral("token")},
                            {QStringLiteral("long_token"), longToken}};
    return loginExchange(QStringLiteral("app/loginCheck2"), form, errorCode, message, info, remote,
                         timeoutMs);
}

bool LoginRequest::syncRemoteLogin(const QString& remoteCode, const QString& captcha,
                                   int& errorCode, QString& message, LoginInfo& info,
                                   RemoteLoginInfo& remote, int timeoutMs) {
    const FormItems form = {{QStringLiteral("code"), remoteCode},
                            {QStringLiteral("captcha"), captcha}};
    return loginExchange(QStringLiteral("app/remoteLogin"), form, errorCode, message, info, remote,
                         timeoutMs);
}

bool LoginRequest::syncGetLoginQrCode(int& errorCode, QString& message, QRcodeLoginInfo& qrCode,
                                      int timeoutMs) {
    const PassportAnswer answer =
        halyard::postToPassport(QStringLiteral("scan/code"), {}, timeoutMs);
    if (!answer.answered) {
        return false;
    }
    const PassportVerdict verdict =
        halyard::readQrCodeReply(answer.body, answer.httpStatus, qrCode);
    errorCode = verdict.errorCode;
    message = verdict.message;
    return true;
}

bool LoginRequest::syncLoginByQrCode(const QString& code, int& errorCode, QString& message,
                                     LoginInfo& info, RemoteLoginInfo& remote, int timeoutMs) {
    return loginExchange(QStringLiteral("lapi/passport/scan/auth"),
                         {{QStringLiteral("code"), code}}, errorCode, message, info, remote,
                         timeoutMs);
}

bool LoginRequest::syncSendVertifyCode(const QString& target, int& errorCode, QString& message,
                                       int timeoutMs) {
    return plainExchange(QStringLiteral("app/sendPhoneCaptcha"),
                         {{QStringLiteral("target"), target}}, errorCode, message, timeoutMs);
}

bool LoginRequest::syncSendPhoneVertifyCode(const QString& phone, const QString& areaCode,
                                            ExtraParams extraParams, int& errorCode,
                                            QString& message, int timeoutMs) {
    const FormItems form = withExtras(
        {{QStringLiteral("phone"), phone}, {QStringLiteral("area_code"), areaCode}}, extraParams);
    return plainExchange(QStringLiteral("app/loginCaptcha2"), form, errorCode, message, timeoutMs);
}

int LoginRequest::reportClientEvent(const QString&, const QString&, int) {
    return -1;
}

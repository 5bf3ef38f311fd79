// `tolvane-host call` entries for SMS codes, phone binding, the QR login and the authorisation
// codes of the platform's other apps.
#include <QJsonArray>

#include "call_arguments.h"

namespace host_calls {

namespace {

QJsonObject messageOutputs(int32_t result, const std::string& errorMessage) {
    return withOutputs(result, {{"errorMessage", text(errorMessage)}});
}

// PHONE AREA_CODE [KEY=VALUE...]: the extra parameters go to the platform in key order.
LoginCheckRequest phoneRequest(const QStringList& args) {
    LoginCheckRequest request;
    request.phoneText1 = arg(args, 0);
    request.phoneText3 = arg(args, 1);
    for (int i = 2; i < args.size(); ++i) {
        const int equals = args.at(i).indexOf(QLatin1Char('='));
        if (equals > 0) {
            request.extraParams[args.at(i).left(equals).toStdString()] =
                args.at(i).mid(equals + 1).toStdString();
        }
    }
    return request;
}

}  // namespace

void addAccountCodeCalls(const AddCall& add) {
    using S = ILiveencoderNetService;
    using A = const QStringList&;

    add("sendPhoneCaptcha", "PHONE_OR_REMOTE_CODE", [](S& s, A a) {
        std::string error;
        const int32_t r = s.sendPhoneCaptcha(arg(a, 0), error);
        return messageOutputs(r, error);
    });
    add("sendPhoneLoginCaptchaNew", "PHONE AREA_CODE [KEY=VALUE...]", [](S& s, A a) {
        std::string error;
        const int32_t r = s.sendPhoneLoginCaptchaNew(phoneRequest(a), error);
        return messageOutputs(r, error);
    });
    add("sendPhoneCaptchaNew", "PHONE AREA_CODE CONFIRM [KEY=VALUE...]", [](S& s, A a) {
        QStringList rest = a;
        const bool confirm = boolArg(a, 2);
        if (rest.size() > 2) {
            rest.removeAt(2);
        }
        std::string error;
        const int32_t r = s.sendPhoneCaptchaNew(phoneRequest(rest), confirm, error);
        return messageOutputs(r, error);
    });
    add("bindPhoneNum", "PHONE", [](S& s, A a) {
        std::string error;
        const int32_t r = s.bindPhoneNum(arg(a, 0), error);
        return messageOutputs(r, error);
    });
    add("getQRCodeURL", "", [](S& s, A) {
        std::string url, code;
        int32_t expire = 0;
        const int32_t r = s.getQRCodeURL(url, code, expire);
        return withOutputs(r, {{"url", text(url)}, {"code", text(code)}, {"expire", expire}});
    });
    add("loginByQRCode", "CODE", [](S& s, A a) {
        std::string token, error;
        const int32_t r = s.loginByQRCode(arg(a, 0), token, error);
        return withOutputs(r, {{"longToken", text(token)}, {"errorMessage", text(error)}});
    });
    add("getLoginAuthPorts", "", [](S& s, A) {
        std::vector<int32_t> ports;
        const int32_t r = s.getLoginAuthPorts(ports);
        QJsonArray list;
        for (const int32_t port : ports) {
            list.append(port);
        }
        return withOutputs(r, {{"ports", list}});
    });
    add("getLoginAuthCode", "BIZ_TYPE REFERER", [](S& s, A a) {
        std::string referer = arg(a, 1);
        int32_t expire = 0;
        const int32_t r = s.getLoginAuthCode(arg(a, 0), referer, expire);
        return withOutputs(r, {{"refererInCodeOut", text(referer)}, {"expire", expire}});
    });
}

}  // namespace host_calls

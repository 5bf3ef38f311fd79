// QR-code login: the library hands out a code to show, and logs in with it once the anchor
// confirmed the scan in the platform's app. The module keeps no QR state; the host polls.
#include "halyard/login_request.h"
#include "parse/reply_texts.h"
#include "parse/result_codes.h"
#include "log/log_writer.h"
#include "service/vx_net_service_imp.h"

namespace {

constexpr int kQrCodeTimeoutMs = 3000;
// Short, because the host asks again and again while the anchor holds up the phone.
constexpr int kQrLoginTimeoutMs = 1000;

}  // namespace

// slot 34
int32_t VxNetServiceImp::getQRCodeURL(std::string& secondField, std::string& firstField,
                                      int32_t& thirdField) {
    logBanner("getQRCodeURL");
    int code = 0;
    QString message;
    QRcodeLoginInfo record;
    if (!loginClient_->syncGetLoginQrCode(code, message, record, kQrCodeTimeoutMs)) {
        lastLoginMessage_ = tolvane::kNetworkFailureStoredText;
        return tolvane::kNoAnswer;
    }
    const int32_t result = DataParser::parseCodeResult(code);
    if (result != 0) {
        tolvane::log::writeLine(tolvane::log::kMainLog,
                                QStringLiteral("error Url: scan/code, errorCode: %1").arg(code));
        return result;
    }
    secondField = record.url.toStdString();
    firstField = record.code.toStdString();
    thirdField = record.expireSeconds;
    return 0;
}

// slot 35
int32_t VxNetServiceImp::loginByQRCode(const std::string& code, std::string& longTokenOut,
                                       std::string& errorMessage) {
    logBanner("loginByQRCode");
    const QString qrCode = QString::fromStdString(code);
    return runLibraryLogin(
        [&](int& result, QString& message, LoginInfo& info, RemoteLoginInfo& remote) {
            return loginClient_->syncLoginByQrCode(qrCode, result, message, info, remote,
                                                   kQrLoginTimeoutMs);
        },
        "lapi/passport/scan/auth", errorMessage, longTokenOut);
}

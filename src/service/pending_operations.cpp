// Operations whose subsystems have not landed yet: each writes its banner and reports
// failure, so a host can already be built and run against the whole interface.
#include "parse/result_codes.h"
#include "service/log_writer.h"
#include "service/vx_net_service_imp.h"

namespace {
constexpr int32_t kNotYetAvailable = tolvane::kNoAnswer;
}  // namespace

// slot 28
int32_t VxNetServiceImp::sendPhoneCaptcha(const std::string& text, std::string& errorMessage) {
    logBanner("sendPhoneCaptcha");
    return kNotYetAvailable;
}

// slot 34
int32_t VxNetServiceImp::getQRCodeURL(std::string& secondField, std::string& firstField,
                                      int32_t& thirdField) {
    logBanner("getQRCodeURL");
    return kNotYetAvailable;
}

// slot 35
int32_t VxNetServiceImp::loginByQRCode(const std::string& code, std::string& longTokenOut,
                                       std::string& errorMessage) {
    logBanner("loginByQRCode");
    return kNotYetAvailable;
}

// slot 63
int32_t VxNetServiceImp::bindPhoneNum(const std::string& phoneNumber, std::string& errorMessage) {
    logBanner("bindPhoneNum");
    return kNotYetAvailable;
}

// slot 71
int32_t VxNetServiceImp::sendPhoneCaptchaNew(const LoginCheckRequest& request, bool confirm,
                                             std::string& errorMessage) {
    tolvane::log::writeLine(tolvane::log::kMainLog,
                            QStringLiteral("sendPhoneCaptchaNew--------------------------"));
    return kNotYetAvailable;
}

// slot 72
int32_t VxNetServiceImp::sendPhoneLoginCaptchaNew(const LoginCheckRequest& request,
                                                  std::string& errorMessage) {
    logBanner("sendPhoneLoginCaptchaNew");
    return kNotYetAvailable;
}

// slot 73
int32_t VxNetServiceImp::getLoginAuthPorts(std::vector<int32_t>& ports) {
    logBanner("getLoginAuthPorts");
    return kNotYetAvailable;
}

// slot 74
int32_t VxNetServiceImp::getLoginAuthCode(const std::string& bizType, std::string& refererInCodeOut,
                                          int32_t& expire) {
    logBanner("getLoginAuthCode");
    return kNotYetAvailable;
}

// Operations whose subsystems have not landed yet: each writes its banner and reports
// failure, so a host can already be built and run against the whole interface.
#include "parse/result_codes.h"
#include "service/log_writer.h"
#include "service/vx_net_service_imp.h"

namespace {
constexpr int32_t kNotYetAvailable = tolvane::kNoAnswer;
}  // namespace

// slot 10
int32_t VxNetServiceImp::get_black_user_list(std::string& reply) {
    logBanner("get_black_user_list");
    return kNotYetAvailable;
}

// slot 11
int32_t VxNetServiceImp::unblack_user(const std::string& userId, std::string& reply) {
    logBanner("unblack_user");
    return kNotYetAvailable;
}

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

// slot 42
int32_t VxNetServiceImp::getFollowCnt(int32_t& count) {
    logBanner("getFollowCnt");
    return kNotYetAvailable;
}

// slot 44
int32_t VxNetServiceImp::checkInGuild(bool& inGuild) {
    logBanner("checkInGuild");
    return kNotYetAvailable;
}

// slot 63
int32_t VxNetServiceImp::bindPhoneNum(const std::string& phoneNumber, std::string& errorMessage) {
    logBanner("bindPhoneNum");
    return kNotYetAvailable;
}

// slot 69
int32_t VxNetServiceImp::getCustomerServiceEntry(const std::string& appCode, std::string& remark,
                                                 std::string& url) {
    logBanner("getCustomerServiceEntry");
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

// slot 76
int32_t VxNetServiceImp::reportFeedback(const std::string& title, const std::string& content,
                                        const FeedbackRecord& feedback,
                                        const std::vector<std::string>& imagePaths,
                                        std::string& reply) {
    tolvane::log::writeLine(tolvane::log::kMainLog,
                            QStringLiteral("reportFeedback-----------------"));
    return kNotYetAvailable;
}

// slot 78
int32_t VxNetServiceImp::getAnchorLocation(int32_t isAllowPoi, std::string& message) {
    logBanner("getAnchorLocation");
    return kNotYetAvailable;
}

// slot 79
int32_t VxNetServiceImp::reportAnchorLocation(const std::string& city, const std::string& longitude,
                                              const std::string& latitude, std::string& message) {
    logBanner("reportAnchorLocation");
    return kNotYetAvailable;
}

// slot 80
int32_t VxNetServiceImp::requestLiveAuthInfo(std::string& reply) {
    logBanner("requestLiveAuthInfo");
    return kNotYetAvailable;
}

// slot 81
int32_t VxNetServiceImp::getAnchorHeadHoverInfo(AnchorCardUser& user, AnchorCardLevel& level) {
    logBanner("getAnchorHeadHoverInfo");
    return kNotYetAvailable;
}

// slot 94
IVxLiveRoomInfo* VxNetServiceImp::getLiveRoomInfo() {
    return nullptr;
}

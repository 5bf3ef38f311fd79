#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "parse/reply_texts.h"
#include "support/sim_service_fixture.h"

namespace {

using NoAnswer = AnchorRoomSimServiceTest;

// With the platform gone every operation gives 210 and keeps the host's values; login-library
// rows each get a fresh service, so that an earlier row cannot have stored their text.
TEST_F(NoAnswer, EveryOperationGives210AndKeepsTheHostsValues) {
    int32_t count = 7, expire = 7, hasIcon = 0, roomId = 0;
    bool hasTags = true, voice = true;
    std::string remark = "kept", url = "kept", code = "kept", group, longToken;
    std::vector<CategoryNode> tree, suggestions, tags;
    std::vector<int32_t> ports{42};
    std::vector<BitrateConfig> presets;
    LiveRoomParameter parameter;
    LoginCheckRequest phone;
    phone.phoneText1 = "13800000001";
    auto& s = service();
    // clang-format off
    const struct {
        const char* name;
        std::function<int32_t(std::string& message)> call;
        bool networkText;
        bool library;
    } rows[] = {
        {"getFollowCnt", [&](std::string&) { return s.getFollowCnt(count); }, false, false},
        {"reportAnchorLocation", [&](std::string& m) { return s.reportAnchorLocation("Hangzhou", "120.1", "30.2", m); }, true, false},
        {"getCustomerServiceEntry", [&](std::string&) { return s.getCustomerServiceEntry("tolvane_pc", remark, url); }, false, false},
        {"getClassifyInfo", [&](std::string& m) { return s.getClassifyInfo(tree, suggestions, m); }, true, false},
        {"setLiveClassify", [&](std::string& m) { return s.setLiveClassify(201, 2011, m); }, true, false},
        {"getLiveTags", [&](std::string& m) { return s.getLiveTags(hasTags, hasIcon, group, tags, m); }, false, false},
        {"classifyIsVoice", [&](std::string& m) { return s.classifyIsVoice(&voice, m); }, false, false},
        {"getWatermarkLocation", [&](std::string&) { return s.getWatermarkLocation(); }, false, false},
        {"getLiveRoomParameter", [&](std::string&) { return s.getLiveRoomParameter(parameter); }, false, false},
        {"getIntelligentSettingConfig", [&](std::string&) { return s.getIntelligentSettingConfig(presets); }, false, false},
        {"createLiveRoom", [&](std::string&) { const int32_t r = s.createLiveRoom(207, 1); roomId = s.getRoomId(); return r; }, false, false},
        {"sendLiveRemindCustom", [&](std::string& m) { return s.sendLiveRemindCustom("title", m); }, true, false},
        {"bindPhoneNum", [&](std::string& m) { return s.bindPhoneNum("13700000009", m); }, true, false},
        {"getLoginAuthPorts", [&](std::string&) { return s.getLoginAuthPorts(ports); }, false, false},
        {"getLoginAuthCode", [&](std::string&) { return s.getLoginAuthCode("13", url, expire); }, false, false},
        {"reportFeedback", [&](std::string& m) { return s.reportFeedback("t", "c", FeedbackRecord(), {}, m); }, false, false},
        {"login", [&](std::string& m) { return service().login("anchor", "secret123", m, longToken); }, true, true},
        {"sendPhoneCaptcha", [&](std::string& m) { return service().sendPhoneCaptcha("13800000001", m); }, true, true},
        {"sendPhoneLoginCaptchaNew", [&](std::string& m) { return service().sendPhoneLoginCaptchaNew(phone, m); }, true, true},
        {"getQRCodeURL", [&](std::string&) { return service().getQRCodeURL(url, code, expire); }, false, true},
        {"loginByQRCode", [&](std::string& m) { return service().loginByQRCode("anything", longToken, m); }, true, false},
    };
    // clang-format on
    sim().stop();
    EXPECT_EQ(s.getLivingStatistic(), 0.0);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        if (row.library) {
            service_ = std::make_unique<VxNetServiceImp>(nullptr, nullptr);
        }
        std::string message;
        EXPECT_EQ(row.call(message), 210);
        if (row.networkText) {
            EXPECT_EQ(message, tolvane::kNetworkFailureText);
        }
        if (row.library) {
            EXPECT_EQ(lastLoginMessage(), tolvane::kNetworkFailureStoredText);
        }
    }
    EXPECT_EQ(std::to_string(count) + remark + url + code + std::to_string(expire),
              "7keptkeptkept7");
    EXPECT_FALSE(hasTags || voice);
    EXPECT_EQ(parameter.credit, -1);
    EXPECT_EQ(roomId, kAnchorRoom);
    EXPECT_EQ(ports, std::vector<int32_t>{42});
}

}  // namespace

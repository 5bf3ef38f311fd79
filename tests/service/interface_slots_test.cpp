#include <gtest/gtest.h>

#include "support/vtable_slot.h"

#include "tolvane/i_liveencoder_net_service.h"
#include "tolvane/i_room_listener.h"

// The host calls the module through vtable slots, so each operation must stay at its number.
namespace {

TEST(InterfaceSlots, ServiceOperationsSitAtTheirSlots) {
    // The n-th entry sits at slot n; each row starts at the slot its comment names.
    // clang-format off
#define AT(method) SlotCase{#method, vtableIndex(&ILiveencoderNetService::method), 0}
    const SlotCase cases[] = {
        AT(login), AT(loginByToken), AT(login_third_party), AT(get_rtmp_address), AT(getRoomId),  // 0
        AT(getAvatarBig), AT(getAvatarMiddle), AT(getAvatarSmall), AT(sendBarrageText), AT(stop),  // 5
        AT(get_black_user_list), AT(unblack_user), AT(get_all_rtmp_addresses), AT(freeArray), AT(open_live_room),  // 10
        AT(stop_live_room), AT(getOnlineCount), AT(sendChatMessage), AT(getNickname), AT(loginRequestCall),  // 15
        AT(getRtmpAddressList), AT(getRoomUrl), AT(hasOwnRoom), AT(getLastLoginMessage), AT(getRoomRecord),  // 20
        AT(release), AT(barrageLoginCall), AT(getRemoteLoginInfo), AT(sendPhoneCaptcha), AT(remoteLogin),  // 25
        AT(setClientVersion), AT(getToken), AT(loginByPhone), AT(isAvailable), AT(getQRCodeURL),  // 30
        AT(loginByQRCode), AT(logout), AT(getSessionValueA), AT(getWatermarkLocation), AT(getSessionValueB),  // 35
        AT(barrageCall), AT(classifyIsVoice), AT(getFollowCnt), AT(getLivingStatistic), AT(checkInGuild),  // 40
        AT(getServerTime), AT(getLiveRoomParameter), AT(setLiveClassify), AT(getClassifyInfo), AT(loadGiftTables),  // 45
        AT(barrageCallConnected), AT(submitGameInfoEx), AT(setGameTag), AT(getVipId), AT(getAnchorLevel),  // 50
        AT(getSex), AT(sendRawMessage), AT(getLivingStatisticalInfo), AT(refreshRoomInfo), AT(getLiveTags),  // 55
        AT(getSessionText), AT(sendLiveRemindCustom), AT(getIntelligentSettingConfig), AT(bindPhoneNum), AT(refreshUserInfo),  // 60
        AT(getUserRecord), AT(createLiveRoom), AT(getStoredList), AT(loginByPhoneCaptcha), AT(getCustomerServiceEntry),  // 65
        AT(loginCheckNew), AT(sendPhoneCaptchaNew), AT(sendPhoneLoginCaptchaNew), AT(getLoginAuthPorts), AT(getLoginAuthCode),  // 70
        AT(barrageListCall), AT(reportFeedback), AT(getSessionValueC), AT(getAnchorLocation), AT(reportAnchorLocation),  // 75
        AT(requestLiveAuthInfo), AT(getAnchorHeadHoverInfo), AT(getAppId), AT(getBizType), AT(getRequest),  // 80
        AT(postRequest), AT(startServerTimeSync), AT(setLiveParameters), AT(getRoomState), AT(getLoginInfo),  // 85
        AT(setBarrageProtocolNumber), AT(getEmptyText), AT(getUserDevice), AT(startBarrage), AT(getLiveRoomInfo),  // 90
        AT(setProxy), AT(requestGet), AT(requestPost),  // 95
    };
    // clang-format on
#undef AT
    ASSERT_EQ(std::size(cases), 98u);
    for (std::size_t slot = 0; slot < std::size(cases); ++slot) {
        EXPECT_EQ(cases[slot].vtableIndex, slot) << cases[slot].name;
    }
}

// Hosts count the listener's destructor once (as on Windows); the Itanium ABI gives it two.
TEST(InterfaceSlots, ListenerOperationsSitAtTheirSlots) {
    // clang-format off
#define AT(method) SlotCase{#method, vtableIndex(&IRoomListener::method), 0}
    const SlotCase cases[] = {AT(onRoomStatus), AT(onMemberInfoValue), AT(onFansBrand),
        AT(onKeepAliveFirst), AT(onKeepAliveSecond), AT(onHostText), AT(onShowEnd),
        AT(onBarrageMessage), AT(onNoticeValue)};
    // clang-format on
#undef AT
    for (std::size_t slot = 1; slot <= std::size(cases); ++slot) {
        EXPECT_EQ(cases[slot - 1].vtableIndex, slot + 1) << cases[slot - 1].name;
    }
}

}  // namespace

#include <gtest/gtest.h>

#include "support/vtable_slot.h"

#include <QLibrary>
#include <cstdint>
#include <cstring>

#include "support/scoped_env.h"
#include "tolvane/i_liveencoder_net_service.h"
#include "tolvane/i_room_listener.h"

// The host calls the module through vtable slots, so each operation must stay at its number.
namespace {

#define SERVICE_SLOT(number, method)                                  \
    SlotCase {                                                        \
#method, vtableIndex(&ILiveencoderNetService::method), number \
    }

// The contract counts the listener's destructor once (as on Windows); the Itanium ABI
// gives it two entries, so every later slot sits one entry further on.
#define LISTENER_SLOT(number, method)                            \
    SlotCase {                                                   \
#method, vtableIndex(&IRoomListener::method) - 1, number \
    }

TEST(InterfaceSlots, ServiceOperationsSitAtTheirSlots) {
    const SlotCase cases[] = {
        SERVICE_SLOT(0, login),
        SERVICE_SLOT(1, loginByToken),
        SERVICE_SLOT(2, login_third_party),
        SERVICE_SLOT(3, get_rtmp_address),
        SERVICE_SLOT(4, getRoomId),
        SERVICE_SLOT(5, getAvatarBig),
        SERVICE_SLOT(6, getAvatarMiddle),
        SERVICE_SLOT(7, getAvatarSmall),
        SERVICE_SLOT(8, sendBarrageText),
        SERVICE_SLOT(9, stop),
        SERVICE_SLOT(10, get_black_user_list),
        SERVICE_SLOT(11, unblack_user),
        SERVICE_SLOT(12, get_all_rtmp_addresses),
        SERVICE_SLOT(13, freeArray),
        SERVICE_SLOT(14, open_live_room),
        SERVICE_SLOT(15, stop_live_room),
        SERVICE_SLOT(16, getOnlineCount),
        SERVICE_SLOT(17, sendChatMessage),
        SERVICE_SLOT(18, getNickname),
        SERVICE_SLOT(19, loginRequestCall),
        SERVICE_SLOT(20, getRtmpAddressList),
        SERVICE_SLOT(21, getRoomUrl),
        SERVICE_SLOT(22, hasOwnRoom),
        SERVICE_SLOT(23, getLastLoginMessage),
        SERVICE_SLOT(24, getRoomRecord),
        SERVICE_SLOT(25, release),
        SERVICE_SLOT(26, barrageLoginCall),
        SERVICE_SLOT(27, getRemoteLoginInfo),
        SERVICE_SLOT(28, sendPhoneCaptcha),
        SERVICE_SLOT(29, remoteLogin),
        SERVICE_SLOT(30, setClientVersion),
        SERVICE_SLOT(31, getToken),
        SERVICE_SLOT(32, loginByPhone),
        SERVICE_SLOT(33, isAvailable),
        SERVICE_SLOT(34, getQRCodeURL),
        SERVICE_SLOT(35, loginByQRCode),
        SERVICE_SLOT(36, logout),
        SERVICE_SLOT(37, getSessionValueA),
        SERVICE_SLOT(38, getWatermarkLocation),
        SERVICE_SLOT(39, getSessionValueB),
        SERVICE_SLOT(40, barrageCall),
        SERVICE_SLOT(41, classifyIsVoice),
        SERVICE_SLOT(42, getFollowCnt),
        SERVICE_SLOT(43, getLivingStatistic),
        SERVICE_SLOT(44, checkInGuild),
        SERVICE_SLOT(45, getServerTime),
        SERVICE_SLOT(46, getLiveRoomParameter),
        SERVICE_SLOT(47, setLiveClassify),
        SERVICE_SLOT(48, getClassifyInfo),
        SERVICE_SLOT(49, loadGiftTables),
        SERVICE_SLOT(50, barrageCallConnected),
        SERVICE_SLOT(51, submitGameInfoEx),
        SERVICE_SLOT(52, setGameTag),
        SERVICE_SLOT(53, getVipId),
        SERVICE_SLOT(54, getAnchorLevel),
        SERVICE_SLOT(55, getSex),
        SERVICE_SLOT(56, sendRawMessage),
        SERVICE_SLOT(57, getLivingStatisticalInfo),
        SERVICE_SLOT(58, refreshRoomInfo),
        SERVICE_SLOT(59, getLiveTags),
        SERVICE_SLOT(60, getSessionText),
        SERVICE_SLOT(61, sendLiveRemindCustom),
        SERVICE_SLOT(62, getIntelligentSettingConfig),
        SERVICE_SLOT(63, bindPhoneNum),
        SERVICE_SLOT(64, refreshUserInfo),
        SERVICE_SLOT(65, getUserRecord),
        SERVICE_SLOT(66, createLiveRoom),
        SERVICE_SLOT(67, getStoredList),
        SERVICE_SLOT(68, loginByPhoneCaptcha),
        SERVICE_SLOT(69, getCustomerServiceEntry),
        SERVICE_SLOT(70, loginCheckNew),
        SERVICE_SLOT(71, sendPhoneCaptchaNew),
        SERVICE_SLOT(72, sendPhoneLoginCaptchaNew),
        SERVICE_SLOT(73, getLoginAuthPorts),
        SERVICE_SLOT(74, getLoginAuthCode),
        SERVICE_SLOT(75, barrageListCall),
        SERVICE_SLOT(76, reportFeedback),
        SERVICE_SLOT(77, getSessionValueC),
        SERVICE_SLOT(78, getAnchorLocation),
        SERVICE_SLOT(79, reportAnchorLocation),
        SERVICE_SLOT(80, requestLiveAuthInfo),
        SERVICE_SLOT(81, getAnchorHeadHoverInfo),
        SERVICE_SLOT(82, getAppId),
        SERVICE_SLOT(83, getBizType),
        SERVICE_SLOT(84, getRequest),
        SERVICE_SLOT(85, postRequest),
        SERVICE_SLOT(86, startServerTimeSync),
        SERVICE_SLOT(87, setLiveParameters),
        SERVICE_SLOT(88, getRoomState),
        SERVICE_SLOT(89, getLoginInfo),
        SERVICE_SLOT(90, setBarrageProtocolNumber),
        SERVICE_SLOT(91, getEmptyText),
        SERVICE_SLOT(92, getUserDevice),
        SERVICE_SLOT(93, startBarrage),
        SERVICE_SLOT(94, getLiveRoomInfo),
        SERVICE_SLOT(95, setProxy),
        SERVICE_SLOT(96, requestGet),
        SERVICE_SLOT(97, requestPost),
    };
    ASSERT_EQ(std::size(cases), 98u);
    for (const SlotCase& c : cases) {
        EXPECT_EQ(c.vtableIndex, c.slot) << c.name;
    }
}

TEST(InterfaceSlots, ListenerOperationsSitAtTheirSlots) {
    const SlotCase cases[] = {
        LISTENER_SLOT(1, onRoomStatus),      LISTENER_SLOT(2, onMemberInfoValue),
        LISTENER_SLOT(3, onFansBrand),       LISTENER_SLOT(4, onKeepAliveFirst),
        LISTENER_SLOT(5, onKeepAliveSecond), LISTENER_SLOT(6, onHostText),
        LISTENER_SLOT(7, onShowEnd),         LISTENER_SLOT(8, onBarrageMessage),
        LISTENER_SLOT(9, onNoticeValue),
    };
    for (const SlotCase& c : cases) {
        EXPECT_EQ(c.vtableIndex, c.slot) << c.name;
    }
}

TEST(InterfaceSlots, LoadedLibraryAnswersThroughItsSlots) {
    IsolatedWorkspace workspace;
    QLibrary library(QStringLiteral(TOLVANE_LIBRARY_PATH));
    ASSERT_TRUE(library.load()) << library.errorString().toStdString();
    auto create = reinterpret_cast<CreateNetServiceFunction>(library.resolve("CreateNetService"));
    ASSERT_NE(create, nullptr);
    ILiveencoderNetService* service = create(nullptr, nullptr);
    ASSERT_NE(service, nullptr);
    EXPECT_EQ(service->isAvailable(), 1);
    EXPECT_STREQ(service->getAppId(), "vxtool");
    EXPECT_EQ(service->getBizType(), 13);
    service->stop();
    service->release();
}

}  // namespace

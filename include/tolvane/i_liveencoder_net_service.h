#pragma once

#include <QByteArray>
#include <cstdint>
#include <string>
#include <vector>

#include "tolvane/account_records.h"
#include "tolvane/breadcrumb.h"
#include "tolvane/export.h"
#include "tolvane/request_descriptor.h"
#include "tolvane/room_records.h"
#include "tolvane/service_observer.h"

class IVxLiveRoomInfo;  // the gift and resource catalogue: tolvane/i_vx_live_room_info.h

// The service as the host sees it. The order of declaration is the binary contract:
// never insert, remove or reorder an operation. Operations returning int32_t give a
// result code (0 success, 210 no answer from the network, other values mapped from the
// platform). All calls are made on the thread that created the service.
class ILiveencoderNetService {
public:
    /* 0 */ virtual int32_t login(const char* name, const char* password, std::string& errorMessage,
                                  std::string& longTokenOut) = 0;
    /* 1 */ virtual int32_t loginByToken(std::string& longToken, std::string& errorMessage) = 0;
    /* 2 */ virtual int32_t login_third_party(const std::string& longToken,
                                              const ShortTokenInfo& tokenInfo) = 0;
    /* 3 */ virtual int32_t get_rtmp_address(std::string& pushUrl, int32_t& lineId) = 0;
    /* 4 */ virtual int32_t getRoomId() = 0;
    /* 5 */ virtual bool getAvatarBig(std::string& url) = 0;
    /* 6 */ virtual bool getAvatarMiddle(std::string& url) = 0;
    /* 7 */ virtual bool getAvatarSmall(std::string& url) = 0;
    /* 8 */ virtual bool sendBarrageText(const char* text) = 0;
    /* 9 */ virtual void stop() = 0;
    /* 10 */ virtual int32_t get_black_user_list(std::string& reply) = 0;
    /* 11 */ virtual int32_t unblack_user(const std::string& userId, std::string& reply) = 0;
    /* 12 */ virtual int32_t get_all_rtmp_addresses(PushAddress*& addresses, int32_t& count,
                                                    PushAddress*& h265Addresses,
                                                    int32_t& h265Count) = 0;
    /* 13 */ virtual void freeArray(PushAddress* addresses) = 0;
    /* 14 */ virtual int32_t open_live_room(const std::string& pushUrl) = 0;
    /* 15 */ virtual int32_t stop_live_room() = 0;
    /* 16 */ virtual int32_t getOnlineCount() = 0;
    /* 17 */ virtual int32_t sendChatMessage(const char* text) = 0;
    /* 18 */ virtual const char* getNickname() = 0;
    /* 19 */ virtual int32_t loginRequestCall(const std::string& first, const std::string& second,
                                              int32_t value) = 0;
    /* 20 */ virtual bool getRtmpAddressList(std::vector<PushAddress>& addresses) = 0;
    /* 21 */ virtual bool getRoomUrl(std::string& url) = 0;
    /* 22 */ virtual bool hasOwnRoom() = 0;
    /* 23 */ virtual void getLastLoginMessage(std::string& message) = 0;
    /* 24 */ virtual void getRoomRecord(RoomSummary& room) = 0;
    /* 25 */ virtual void release() = 0;
    /* 26 */ virtual void barrageLoginCall(int32_t giftId, int32_t kind, int32_t count) = 0;
    /* 27 */ virtual void getRemoteLoginInfo(bool& isForeignTel, std::string& hidePhone,
                                             std::string& remoteLoginCode) = 0;
    /* 28 */ virtual int32_t sendPhoneCaptcha(const std::string& text,
                                              std::string& errorMessage) = 0;
    /* 29 */ virtual int32_t remoteLogin(const std::string& text1, const std::string& text2,
                                         std::string& longTokenOut, std::string& errorMessage) = 0;
    /* 30 */ virtual void setClientVersion(const std::string& deviceId,
                                           const std::string& version) = 0;
    /* 31 */ virtual void getToken(std::string& token) = 0;
    /* 32 */ virtual int32_t loginByPhone(const std::string& text1, const std::string& text2,
                                          const std::string& text3, std::string& longTokenOut,
                                          std::string& errorMessage) = 0;
    /* 33 */ virtual int32_t isAvailable() = 0;
    /* 34 */ virtual int32_t getQRCodeURL(std::string& secondField, std::string& firstField,
                                          int32_t& thirdField) = 0;
    /* 35 */ virtual int32_t loginByQRCode(const std::string& code, std::string& longTokenOut,
                                           std::string& errorMessage) = 0;
    /* 36 */ virtual void logout() = 0;
    /* 37 */ virtual int32_t getSessionValueA() = 0;
    /* 38 */ virtual int32_t getWatermarkLocation() = 0;
    /* 39 */ virtual int32_t getSessionValueB() = 0;
    /* 40 */ virtual void barrageCall() = 0;
    /* 41 */ virtual int32_t classifyIsVoice(bool* isVoice, std::string& message) = 0;
    /* 42 */ virtual int32_t getFollowCnt(int32_t& count) = 0;
    /* 43 */ virtual double getLivingStatistic() = 0;
    /* 44 */ virtual int32_t checkInGuild(bool& inGuild) = 0;
    /* 45 */ virtual int64_t getServerTime() = 0;
    /* 46 */ virtual int32_t getLiveRoomParameter(LiveRoomParameter& parameter) = 0;
    /* 47 */ virtual int32_t setLiveClassify(int32_t cid2, int32_t cid3, std::string& message) = 0;
    /* 48 */ virtual int32_t getClassifyInfo(std::vector<CategoryNode>& tree,
                                             std::vector<CategoryNode>& suggestions,
                                             std::string& message) = 0;
    /* 49 */ virtual int32_t loadGiftTables() = 0;
    /* 50 */ virtual int32_t barrageCallConnected() = 0;
    /* 51 */ virtual int32_t submitGameInfoEx(const GameProcessInfo& game,
                                              std::string& message) = 0;
    /* 52 */ virtual int32_t setGameTag(int32_t tid, std::string& message) = 0;
    /* 53 */ virtual int32_t getVipId() = 0;
    /* 54 */ virtual int32_t getAnchorLevel() = 0;
    /* 55 */ virtual int32_t getSex() = 0;
    /* 56 */ virtual int32_t sendRawMessage(const char* text) = 0;
    /* 57 */ virtual int32_t getLivingStatisticalInfo(LivingStatistics& statistics) = 0;
    /* 58 */ virtual void refreshRoomInfo() = 0;
    /* 59 */ virtual int32_t getLiveTags(bool& hasTags, int32_t& hasIcon, std::string& tagGroupName,
                                         std::vector<CategoryNode>& tags, std::string& message) = 0;
    /* 60 */ virtual void getSessionText(std::string& longToken) = 0;
    /* 61 */ virtual int32_t sendLiveRemindCustom(const std::string& title,
                                                  std::string& message) = 0;
    /* 62 */ virtual int32_t getIntelligentSettingConfig(std::vector<BitrateConfig>& configs) = 0;
    /* 63 */ virtual int32_t bindPhoneNum(const std::string& phoneNumber,
                                          std::string& errorMessage) = 0;
    /* 64 */ virtual bool refreshUserInfo(std::string& errorMessage) = 0;
    /* 65 */ virtual void getUserRecord(UserRecord& user) = 0;
    /* 66 */ virtual int32_t createLiveRoom(int32_t tagId, int32_t id) = 0;
    /* 67 */ virtual void getStoredList(std::vector<CategoryNode>& emotionWhiteList) = 0;
    /* 68 */ virtual int32_t loginByPhoneCaptcha(const std::string& text1, const std::string& text2,
                                                 const std::string& text3,
                                                 std::string& longTokenOut,
                                                 std::string& errorMessage) = 0;
    /* 69 */ virtual int32_t getCustomerServiceEntry(const std::string& appCode,
                                                     std::string& remark, std::string& url) = 0;
    /* 70 */ virtual int32_t loginCheckNew(const LoginCheckRequest& request,
                                           std::string& errorMessage,
                                           std::string& longTokenOut) = 0;
    /* 71 */ virtual int32_t sendPhoneCaptchaNew(const LoginCheckRequest& request, bool confirm,
                                                 std::string& errorMessage) = 0;
    /* 72 */ virtual int32_t sendPhoneLoginCaptchaNew(const LoginCheckRequest& request,
                                                      std::string& errorMessage) = 0;
    /* 73 */ virtual int32_t getLoginAuthPorts(std::vector<int32_t>& ports) = 0;
    /* 74 */ virtual int32_t getLoginAuthCode(const std::string& bizType,
                                              std::string& refererInCodeOut, int32_t& expire) = 0;
    /* 75 */ virtual int32_t barrageListCall(std::vector<std::string>& latestMessages) = 0;
    /* 76 */ virtual int32_t reportFeedback(const std::string& title, const std::string& content,
                                            const FeedbackRecord& feedback,
                                            const std::vector<std::string>& imagePaths,
                                            std::string& reply) = 0;
    /* 77 */ virtual int32_t getSessionValueC() = 0;
    /* 78 */ virtual int32_t getAnchorLocation(int32_t isAllowPoi, std::string& message) = 0;
    /* 79 */ virtual int32_t reportAnchorLocation(const std::string& city,
                                                  const std::string& longitude,
                                                  const std::string& latitude,
                                                  std::string& message) = 0;
    /* 80 */ virtual int32_t requestLiveAuthInfo(std::string& reply) = 0;
    /* 81 */ virtual int32_t getAnchorHeadHoverInfo(AnchorCardUser& user,
                                                    AnchorCardLevel& level) = 0;
    /* 82 */ virtual const char* getAppId() = 0;
    /* 83 */ virtual int32_t getBizType() = 0;
    /* 84 */ virtual bool getRequest(QByteArray& reply, const std::string& url,
                                     const ParamList& headers, const ParamList& query,
                                     int32_t timeoutMs) = 0;
    /* 85 */ virtual bool postRequest(QByteArray& reply, const std::string& url,
                                      const ParamList& headers, const ParamList& query,
                                      const ParamList& form, int32_t timeoutMs) = 0;
    /* 86 */ virtual void startServerTimeSync() = 0;
    /* 87 */ virtual int32_t setLiveParameters(const LiveParameters& parameters) = 0;
    /* 88 */ virtual int32_t getRoomState(bool& live, bool& showType) = 0;
    /* 89 */ virtual int32_t getLoginInfo(ShortTokenInfo& tokenInfo) = 0;
    /* 90 */ virtual void setBarrageProtocolNumber(int32_t number) = 0;
    /* 91 */ virtual void getEmptyText(std::string& text) = 0;
    /* 92 */ virtual void getUserDevice(std::string& userDevice) = 0;
    /* 93 */ virtual int32_t startBarrage() = 0;
    /* 94 */ virtual IVxLiveRoomInfo* getLiveRoomInfo() = 0;
    /* 95 */ virtual void setProxy(const std::string& proxy) = 0;
    /* 96 */ virtual bool requestGet(QByteArray& reply, const RequestDescriptor& request) = 0;
    /* 97 */ virtual bool requestPost(QByteArray& reply, const RequestDescriptor& request) = 0;

protected:
    ~ILiveencoderNetService() = default;  // the host calls release() instead of delete
};

extern "C" {
// Builds the one service object. Neither argument is owned; both may be null.
TOLVANE_API ILiveencoderNetService* CreateNetService(ServiceObserver* observer,
                                                     BreadcrumbSink* breadcrumbSink);
using CreateNetServiceFunction = ILiveencoderNetService* (*)(ServiceObserver*, BreadcrumbSink*);
}

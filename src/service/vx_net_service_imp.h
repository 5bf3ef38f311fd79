#pragma once

#include <QList>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "log/persistent_log_writer.h"
#include "net/endpoints.h"
#include "net/operation_row.h"
#include "net/param_list.h"
#include "parse/data_parser.h"
#include "parse/server_address.h"
#include "tolvane/i_liveencoder_net_service.h"
#include "tolvane/i_room_listener.h"

// The one service object. Its operations are defined next to the subsystem that owns
// them (account/, room/, barrage/ ...); this file and vx_net_service_imp.cpp hold the
// lifecycle. Lives on the thread that created it, which must run a Qt event loop.
class EasyNetManager;
namespace tolvane::net {
struct PreparedRequest;
}  // namespace tolvane::net
class LoginRequest;
class VxNetRequest;
class VxRoomClient;
class VxLiveRoomInfo;
struct LoginInfo;
struct RemoteLoginInfo;

class VxNetServiceImp : public QObject, public ILiveencoderNetService, public IRoomListener {
    Q_OBJECT

public:
    // Reads an operation's reply into its records and returns the operation's result code.
    using ReplyParser = std::function<int32_t(const QByteArray& reply)>;

    VxNetServiceImp(ServiceObserver* observer, BreadcrumbSink* breadcrumbSink);
    ~VxNetServiceImp() override;

    // ILiveencoderNetService, in slot order.
    /* 0 */ int32_t login(const char* name, const char* password, std::string& errorMessage,
                          std::string& longTokenOut) override;
    /* 1 */ int32_t loginByToken(std::string& longToken, std::string& errorMessage) override;
    /* 2 */ int32_t login_third_party(const std::string& longToken,
                                      const ShortTokenInfo& tokenInfo) override;
    /* 3 */ int32_t get_rtmp_address(std::string& pushUrl, int32_t& lineId) override;
    /* 4 */ int32_t getRoomId() override;
    /* 5 */ bool getAvatarBig(std::string& url) override;
    /* 6 */ bool getAvatarMiddle(std::string& url) override;
    /* 7 */ bool getAvatarSmall(std::string& url) override;
    /* 8 */ bool sendBarrageText(const char* text) override;
    /* 9 */ void stop() override;
    /* 10 */ int32_t get_black_user_list(std::string& reply) override;
    /* 11 */ int32_t unblack_user(const std::string& userId, std::string& reply) override;
    /* 12 */ int32_t get_all_rtmp_addresses(PushAddress*& addresses, int32_t& count,
                                            PushAddress*& h265Addresses,
                                            int32_t& h265Count) override;
    /* 13 */ void freeArray(PushAddress* addresses) override;
    /* 14 */ int32_t open_live_room(const std::string& pushUrl) override;
    /* 15 */ int32_t stop_live_room() override;
    /* 16 */ int32_t getOnlineCount() override;
    /* 17 */ int32_t sendChatMessage(const char* text) override;
    /* 18 */ const char* getNickname() override;
    /* 19 */ int32_t loginRequestCall(const std::string& first, const std::string& second,
                                      int32_t value) override;
    /* 20 */ bool getRtmpAddressList(std::vector<PushAddress>& addresses) override;
    /* 21 */ bool getRoomUrl(std::string& url) override;
    /* 22 */ bool hasOwnRoom() override;
    /* 23 */ void getLastLoginMessage(std::string& message) override;
    /* 24 */ void getRoomRecord(RoomSummary& room) override;
    /* 25 */ void release() override;
    /* 26 */ void barrageLoginCall(int32_t giftId, int32_t kind, int32_t count) override;
    /* 27 */ void getRemoteLoginInfo(bool& isForeignTel, std::string& hidePhone,
                                     std::string& remoteLoginCode) override;
    /* 28 */ int32_t sendPhoneCaptcha(const std::string& text, std::string& errorMessage) override;
    /* 29 */ int32_t remoteLogin(const std::string& text1, const std::string& text2,
                                 std::string& longTokenOut, std::string& errorMessage) override;
    /* 30 */ void setClientVersion(const std::string& deviceId,
                                   const std::string& version) override;
    /* 31 */ void getToken(std::string& token) override;
    /* 32 */ int32_t loginByPhone(const std::string& text1, const std::string& text2,
                                  const std::string& text3, std::string& longTokenOut,
                                  std::string& errorMessage) override;
    /* 33 */ int32_t isAvailable() override;
    /* 34 */ int32_t getQRCodeURL(std::string& secondField, std::string& firstField,
                                  int32_t& thirdField) override;
    /* 35 */ int32_t loginByQRCode(const std::string& code, std::string& longTokenOut,
                                   std::string& errorMessage) override;
    /* 36 */ void logout() override;
    /* 37 */ int32_t getSessionValueA() override;
    /* 38 */ int32_t getWatermarkLocation() override;
    /* 39 */ int32_t getSessionValueB() override;
    /* 40 */ void barrageCall() override;
    /* 41 */ int32_t classifyIsVoice(bool* isVoice, std::string& message) override;
    /* 42 */ int32_t getFollowCnt(int32_t& count) override;
    /* 43 */ double getLivingStatistic() override;
    /* 44 */ int32_t checkInGuild(bool& inGuild) override;
    /* 45 */ int64_t getServerTime() override;
    /* 46 */ int32_t getLiveRoomParameter(LiveRoomParameter& parameter) override;
    /* 47 */ int32_t setLiveClassify(int32_t cid2, int32_t cid3, std::string& message) override;
    /* 48 */ int32_t getClassifyInfo(std::vector<CategoryNode>& tree,
                                     std::vector<CategoryNode>& suggestions,
                                     std::string& message) override;
    /* 49 */ int32_t loadGiftTables() override;
    /* 50 */ int32_t barrageCallConnected() override;
    /* 51 */ int32_t submitGameInfoEx(const GameProcessInfo& game, std::string& message) override;
    /* 52 */ int32_t setGameTag(int32_t tid, std::string& message) override;
    /* 53 */ int32_t getVipId() override;
    /* 54 */ int32_t getAnchorLevel() override;
    /* 55 */ int32_t getSex() override;
    /* 56 */ int32_t sendRawMessage(const char* text) override;
    /* 57 */ int32_t getLivingStatisticalInfo(LivingStatistics& statistics) override;
    /* 58 */ void refreshRoomInfo() override;
    /* 59 */ int32_t getLiveTags(bool& hasTags, int32_t& hasIcon, std::string& tagGroupName,
                                 std::vector<CategoryNode>& tags, std::string& message) override;
    /* 60 */ void getSessionText(std::string& longToken) override;
    /* 61 */ int32_t sendLiveRemindCustom(const std::string& title, std::string& message) override;
    /* 62 */ int32_t getIntelligentSettingConfig(std::vector<BitrateConfig>& configs) override;
    /* 63 */ int32_t bindPhoneNum(const std::string& phoneNumber,
                                  std::string& errorMessage) override;
    /* 64 */ bool refreshUserInfo(std::string& errorMessage) override;
    /* 65 */ void getUserRecord(UserRecord& user) override;
    /* 66 */ int32_t createLiveRoom(int32_t tagId, int32_t id) override;
    /* 67 */ void getStoredList(std::vector<CategoryNode>& emotionWhiteList) override;
    /* 68 */ int32_t loginByPhoneCaptcha(const std::string& text1, const std::string& text2,
                                         const std::string& text3, std::string& longTokenOut,
                                         std::string& errorMessage) override;
    /* 69 */ int32_t getCustomerServiceEntry(const std::string& appCode, std::string& remark,
                                             std::string& url) override;
    /* 70 */ int32_t loginCheckNew(const LoginCheckRequest& request, std::string& errorMessage,
                                   std::string& longTokenOut) override;
    /* 71 */ int32_t sendPhoneCaptchaNew(const LoginCheckRequest& request, bool confirm,
                                         std::string& errorMessage) override;
    /* 72 */ int32_t sendPhoneLoginCaptchaNew(const LoginCheckRequest& request,
                                              std::string& errorMessage) override;
    /* 73 */ int32_t getLoginAuthPorts(std::vector<int32_t>& ports) override;
    /* 74 */ int32_t getLoginAuthCode(const std::string& bizType, std::string& refererInCodeOut,
                                      int32_t& expire) override;
    /* 75 */ int32_t barrageListCall(std::vector<std::string>& latestMessages) override;
    /* 76 */ int32_t reportFeedback(const std::string& title, const std::string& content,
                                    const FeedbackRecord& feedback,
                                    const std::vector<std::string>& imagePaths,
                                    std::string& reply) override;
    /* 77 */ int32_t getSessionValueC() override;
    /* 78 */ int32_t getAnchorLocation(int32_t isAllowPoi, std::string& message) override;
    /* 79 */ int32_t reportAnchorLocation(const std::string& city, const std::string& longitude,
                                          const std::string& latitude,
                                          std::string& message) override;
    /* 80 */ int32_t requestLiveAuthInfo(std::string& reply) override;
    /* 81 */ int32_t getAnchorHeadHoverInfo(AnchorCardUser& user, AnchorCardLevel& level) override;
    /* 82 */ const char* getAppId() override;
    /* 83 */ int32_t getBizType() override;
    /* 84 */ bool getRequest(QByteArray& reply, const std::string& url, const ParamList& headers,
                             const ParamList& query, int32_t timeoutMs) override;
    /* 85 */ bool postRequest(QByteArray& reply, const std::string& url, const ParamList& headers,
                              const ParamList& query, const ParamList& form,
                              int32_t timeoutMs) override;
    /* 86 */ void startServerTimeSync() override;
    /* 87 */ int32_t setLiveParameters(const LiveParameters& parameters) override;
    /* 88 */ int32_t getRoomState(bool& live, bool& showType) override;
    /* 89 */ int32_t getLoginInfo(ShortTokenInfo& tokenInfo) override;
    /* 90 */ void setBarrageProtocolNumber(int32_t number) override;
    /* 91 */ void getEmptyText(std::string& text) override;
    /* 92 */ void getUserDevice(std::string& userDevice) override;
    /* 93 */ int32_t startBarrage() override;
    /* 94 */ IVxLiveRoomInfo* getLiveRoomInfo() override;
    /* 95 */ void setProxy(const std::string& proxy) override;
    /* 96 */ bool requestGet(QByteArray& reply, const RequestDescriptor& request) override;
    /* 97 */ bool requestPost(QByteArray& reply, const RequestDescriptor& request) override;
    // IRoomListener: called by the barrage client on the message library's threads.
    int32_t onRoomStatus(int32_t status) override;
    int32_t onMemberInfoValue(int32_t value) override;
    int32_t onFansBrand(const char* brand) override;
    int32_t onKeepAliveFirst(int32_t value) override;
    int32_t onKeepAliveSecond(int32_t value) override;
    int32_t onHostText(const char* text) override;
    int32_t onShowEnd(int32_t reason, int32_t banHours) override;
    int32_t onBarrageMessage(const BarrageMessage* message) override;
    int32_t onNoticeValue(int32_t value) override;

    int environment() const { return environment_; }
    int64_t serverTimeOffset() const { return serverTimeOffset_; }
    // Re-reads default.data; the request client keeps the index it was built with.
    void reloadEnvironment();

    // The anchor's profile; a login counts as done only when it loads.
    int32_t initUserInfo(std::string& errorMessage);
    int32_t refreshUserInfoPrivate();
    // Turns a login result into the stored session (JSON reply or login-library form).
    int32_t onLoginReply(const QByteArray& bytes, std::string& errorMessage,
                         std::string& longTokenOut);
    int32_t onLoginResult(int code, std::string& errorMessage, const LoginInfo& info,
                          const RemoteLoginInfo& remote, std::string& longTokenOut);

public Q_SLOTS:
    void sltInitServerTime();

    // --- Room information and barrage gateway (room/room_info.cpp, room/emotion_list.cpp) ---
public:
    // Barrage start-up up to the server list: the emotion list, the gateway's servers, then
    // the room's own servers after them. Returns the room information's result; a failed
    // gateway is left out on purpose.
    int32_t collectBarrageServers(QList<ServerAddress>& servers);

private:
    // The room information request ("my_room"); each caller reads its own part of the reply.
    int32_t requestRoomInfo(const ReplyParser& parse, bool sessionExpiryHook);
    // The barrage start-up leaves the gift catalogue to the store's fetch thread: going live
    // needs none of it. Everyone else loads it here (slot 49) before returning.
    int32_t initRoomInfo(QList<ServerAddress>& servers, bool catalogueInBackground = false);
    int32_t getGatewayList(QList<ServerAddress>& servers);
    int32_t requestEmotionSeiyClassifyList();
    // Hook for the live room information store to copy the room information it needs.
    void onRoomInfoLoaded();
    // Slot 49's tables queued on the store's fetch thread instead (liveroom/).
    void loadGiftTablesInBackground();
    // --- end of room information and barrage gateway ---

    // --- Push lines, live start and stop, categories and tags (room/push_lines.cpp,
    // room/live_control.cpp, room/categories.cpp) ---
public:
    // The web site's list of the room's categories; no slot of the interface reaches it.
    int32_t getClassifyListExt(std::vector<CategoryNode>& list, std::string& message);

private:
    // "cid2" and "cid3" when the host set a category, then "module_id" when it set one.
    void appendLiveCategory(ParamList& items) const;
    // --- end of push lines, live and categories ---

    // --- The anchor's queries (room/anchor_queries.cpp, room/room_black_list.cpp) ---
private:
    // Runs an operation whose reply the host reads itself: the body goes to `reply` unparsed,
    // or the request client's made-up reply when nothing answered (then 210); else 0.
    int32_t runRawReplyOperation(const tolvane::net::OperationRow& row, const ParamList& items,
                                 std::string& reply);
    // --- end of the anchor's queries ---

private:
    // Runs one HTTP operation as its row describes: banner, common items, signature, send,
    // 210 and the network text in *message when nothing answers, the parser, the row's failure
    // lines, the session-expiry hook. Without a parser the reply is a bare envelope and its
    // message goes to *message. *reply, when given, receives the body (or the made-up reply).
    // `files` are the file parts of a multipart row, each sent under `fileField`.
    // `extraHeaders` go out before the headers the row adds itself.
    int32_t runOperation(const tolvane::net::OperationRow& row, const ParamList& items,
                         std::string* message = nullptr, const ReplyParser& parse = ReplyParser(),
                         QByteArray* reply = nullptr, const QStringList& files = QStringList(),
                         const QString& fileField = QString(),
                         const ParamList& extraHeaders = ParamList());
    // Sends a multipart row through the Qt client; false leaves `body` as it was when nothing
    // went out (a file that cannot be opened, a stopped client).
    bool sendUpload(const tolvane::net::PreparedRequest& request, const QStringList& files,
                    const QString& fileField, int timeoutMs, QByteArray& body);

    static void logBanner(const char* operation);
    // Logs the barrage client out and forgets the values it reported.
    void logoutBarrage();
    using LibraryLoginCall =
        std::function<bool(int& code, QString& message, LoginInfo&, RemoteLoginInfo&)>;
    int32_t runLibraryLogin(const LibraryLoginCall& call, const char* errorUrl,
                            std::string& errorMessage, std::string& longTokenOut);
    // Any call of the login library: the same failure texts and log line. `resultOf` turns the
    // library's code into the result; without it the code is read as a plain code result.
    using LibraryCodeCall = std::function<bool(int& code, QString& message)>;
    int32_t runLibraryCodeCall(const LibraryCodeCall& call, const char* errorUrl,
                               std::string& errorMessage,
                               const std::function<int32_t(int code)>& resultOf = {});
    int32_t storeLogin(int32_t parseResult, std::string& errorMessage,
                       const std::string& longTokenOut);
    int32_t fetchUserInfo(const char* operation, std::string& errorMessage);
    // Operations whose session expired refresh the profile and report the code unchanged.
    int32_t afterSessionCheck(int32_t result);
    // Starts one server-time request; the reply arrives through the event loop.
    void getServerTime(int timeoutMs);
    void onServerTimeReply(const QByteArray& reply);
    // aid, server time and session token as every signed request carries them.
    tolvane::net::CommonValues commonValues();
    std::string sessionToken() const;

    int32_t environment_ = 0;
    VxEndpoints endpoints_;              // address tables with default.data's overrides
    int64_t serverTimeOffset_ = -65535;  // seconds; -65535 means not synchronised
    EasyNetManager* qtClient_ = nullptr;
    std::atomic<ServiceObserver*> observer_{nullptr};  // read on the barrage threads
    BreadcrumbSink* breadcrumbSink_ = nullptr;
    ShortTokenInfo tokenInfo_;
    std::string lastLoginMessage_;
    std::string longToken_;
    std::vector<PushAddress> pushAddresses_;
    std::string deviceId_ = "00_00_00_00_FF_FF";
    std::string clientVersion_ = "v1.0.0.0";
    VxRoomClient* roomClient_ = nullptr;
    DataParser parser_;
    QTimer* timer_ = nullptr;
    // php.log is followed live by its readers: each line reaches the file at once.
    tolvane::log::PersistentLogWriter requestLog_{tolvane::log::FlushPolicy::EveryLine};
    VxNetRequest* request_ = nullptr;
    int32_t roomFlag_ = 0;
    int32_t liveFlag_ = 1;
    uint8_t liveByteFlags_[3] = {0, 0, 0};
    LoginRequest* loginClient_ = nullptr;
    int32_t barrageProtocolNumber_ = 20180809;
    // The gift and resource catalogue; slot 94 hands it out, so it lives as long as the service.
    std::shared_ptr<VxLiveRoomInfo> liveRoomInfo_;
    LiveParameters liveParameters_;
    // Values the barrage client last reported; written on its thread, read on the host's.
    std::atomic<int32_t> onlineCount_{0};
    std::atomic<int32_t> keepAliveSecond_{0};
    std::atomic<int32_t> memberInfoValue_{0};
    std::atomic<int32_t> noticeValue_{0};
    std::string fansBrand_;  // written only while the barrage client's callbacks are registered
};

#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "halyard/login_records.h"
#include "parse/room_info.h"
#include "parse/server_address.h"
#include "tolvane/account_records.h"
#include "tolvane/room_records.h"

// Reads every JSON reply of the platform's web services: the envelope check, the translation
// of server codes into the codes returned to the host, and the typed field readers. The reply
// parsers of each subsystem are further members, defined next to the operations they serve.
// Used from one thread at a time.
class DataParser : public QObject {
    Q_OBJECT

public:
    // Envelope failures; below -999 so that they never meet a server code.
    static constexpr int kReplyNotJson = -1000;
    static constexpr int kReplyNotObject = -1001;
    static constexpr int kReplyWithoutCode = -1002;
    static constexpr int kReplyCodeNotNumber = -1003;

    explicit DataParser(QObject* parent = nullptr);
    ~DataParser() override;

    // UTF-8 message of the last failed envelope check; valid until the next check.
    const std::string& lastErrorMessage() const { return state_.lastErrorMessage; }
    void setLastErrorMessage(const std::string& message) { state_.lastErrorMessage = message; }

    // Returns every member to its value after construction (logout).
    void reset();

    // Parses `bytes` into `root` and takes the code out of it. Returns the server's code
    // unmapped (0 = success) or one of the envelope failures; on failure also stores the
    // message and logs the code and the body.
    int parseReplyEnvelope(const QByteArray& bytes, QJsonObject& root, const QString& codeKey,
                           const QString& messageKey);

    static int mapServerErrorCode(int serverCode);

    // Typed readers: a missing or mistyped value is logged and gives the default (or false).
    static QString readString(const QJsonObject& object, const QString& key,
                              const QString& defaultValue);
    static int readInt(const QJsonObject& object, const QString& key, int defaultValue);
    static double readDouble(const QJsonObject& object, const QString& key, double defaultValue);
    static bool readObject(const QJsonObject& object, const QString& key, QJsonObject& out);
    static bool readArray(const QJsonObject& object, const QString& key, QJsonArray& out);

    // The bytes between the first "(" and the last ")"; empty (and logged) without them.
    static QByteArray unwrapConfigCallback(const QByteArray& bytes);

    // The start of a parser of a callback-wrapped configuration file, which carries no envelope:
    // banner, unwrapping and the "data" object. Returns 0 with `data` filled; 1 for an empty
    // body, and 1 after logging "parse data failed!" and the raw body for one that is not a JSON
    // object with a "data" object.
    static int parseConfigReply(const char* parserName, const QByteArray& bytes, QJsonObject& data);

    // Replies whose only content is the code: 0 on success, else the mapped code.
    int parseCodeResult(const QByteArray& bytes);
    int parseCodeResult(const QByteArray& bytes, const QString& codeKey, const QString& messageKey);
    static int parseCodeResult(int code);

    // One integer field of "data": 0 and `out` set, 1 when "data" is not an object, else the
    // mapped code.
    int parseIntValue(const QByteArray& bytes, const QString& key, int& out);

    // The common start of a parser whose reply carries a "data" object: banner, envelope check
    // (message key "data") and the object. Returns 0 with `data` filled; else the mapped code
    // with the envelope's message, or 1 with the data-error text, each copied into
    // *errorMessage, or kept in the parser alone when that is null.
    int parseDataObject(const char* parserName, const QByteArray& bytes, QJsonObject& data,
                        std::string* errorMessage);

    // "call function: DataParser::<functionName> -----------------"
    static void writeParseBanner(const char* functionName);

    // Login results (account/session.cpp): the JSON reply form and the login library form.
    int parseLoginResult(const QByteArray& bytes, std::string& errorMessage,
                         std::string& longTokenOut, ShortTokenInfo& record);
    int parseLoginResult(int code, std::string& errorMessage, std::string& longTokenOut,
                         ShortTokenInfo& record, const RemoteLoginInfo& remote,
                         const LoginInfo& info);
    // What a remote-login refusal carried; kept until the next one.
    bool isForeignTel() const { return state_.isForeignTel; }
    const std::string& hidePhone() const { return state_.hidePhone; }
    const std::string& remoteLoginCode() const { return state_.remoteLoginCode; }

    // The anchor's profile (account/user_info.cpp).
    // The host's user record without its uid, which the session record keeps.
    using UserProfile = UserRecord;
    int parseUserInfoResult(const QByteArray& bytes, std::string& errorMessage);
    const UserProfile& userProfile() const { return state_.profile; }

    // The platform's clock (net/server_time.cpp).
    int parseServerTimeResult(const QByteArray& bytes, int& serverTime);

    // The anchor's room and the barrage servers (room/room_info_parsers.cpp). Server lists
    // are only appended to, in reply order.
    int parseRoomInfoResult(const QByteArray& bytes, std::string& errorMessage,
                            QList<ServerAddress>& servers);
    int parseGatewayResult(const QByteArray& bytes, std::string& errorMessage,
                           QList<ServerAddress>& servers);
    // Does not touch the room information; a missing "data" sets lastErrorMessage().
    int parseIsRoomBroadcastingResult(const QByteArray& bytes, bool& live, bool& showType);
    const RoomInfo& roomInfo() const { return state_.roomInfo; }

    // The cate2 ids that may show emotion effects (room/emotion_list.cpp); only the ids of
    // the nodes are set.
    int parseEmotionSeiyClassifyList(const QByteArray& bytes);
    const std::vector<CategoryNode>& emotionWhiteList() const { return state_.emotionWhiteList; }

    // The anchor's queries (room/anchor_queries.cpp). None of these replies carries a message
    // the host reads, so a refusal's text stays in lastErrorMessage(); a refused reply leaves
    // the outputs as they were.
    // "data"."in" == 1.
    int parseCheckInGuildResult(const QByteArray& bytes, bool& inGuild);
    // "data"."userInfo" and "data"."levelInfo"; a missing one leaves its record as it was.
    int parseAnchorHeadHoverInfo(const QByteArray& bytes, AnchorCardUser& user,
                                 AnchorCardLevel& level);
    // "data"."remark" and "data"."url".
    int parseCustomerServiceEntry(const QByteArray& bytes, std::string& remark, std::string& url);

    // Push lines (room/push_lines.cpp). Arrays handed out are allocated with new[] and are the
    // host's to free through freeArray.
    int parseRtmpResult(const QByteArray& bytes, std::string& pushUrl, int32_t& lineId);
    int parseAllRtmpAddressResult(const QByteArray& bytes, PushAddress*& addresses, int32_t& count,
                                  PushAddress*& h265Addresses, int32_t& h265Count);
    // The line id of a push URL, looked up in the main table and then the H.265 table.
    bool findPushLine(const std::string& url, int32_t& lineId) const;
    std::string fmsValue() const;
    std::string referenceUrl() const;

    // Categories and tags (room/categories.cpp).
    int parseGetClassifyListResult(const QByteArray& bytes, std::string& message,
                                   std::vector<CategoryNode>& tree,
                                   std::vector<CategoryNode>& suggestions);
    int parseGetClassifyListExtResult(const QByteArray& bytes, std::string& message,
                                      std::vector<CategoryNode>& list);
    int parseGetLiveTagsResult(const QByteArray& bytes, std::string& message, int32_t& hasIcon,
                               std::string& tagGroupName, std::vector<CategoryNode>& tags);
    void setCurrentCategory(int32_t cid2, int32_t cid3);
    int32_t currentCid2() const;
    int32_t currentCid3() const;

    // The anchor's room settings (room/room_settings.cpp).
    // The watermark corners as a mask (corner 1 → 1, 2 → 2, 3 → 8, 4 → 4); the mask stays 15,
    // every corner, unless "data" is an array.
    int parseWatermarkLocationResult(const QByteArray& bytes, int32_t& mask);
    // Each sub-object of the reply is optional; an absent one leaves its fields as they were,
    // except the credit, which becomes -1.
    int parseLiveRoomParamter(const QByteArray& bytes, LiveRoomParameter& parameter);
    // Appends the presets whose entries carry every key; others are skipped.
    int parseIntelligentSettingConfigList(const QByteArray& bytes,
                                          std::vector<BitrateConfig>& configs);
    // The new room's id, "data" itself, becomes the room id of roomInfo().
    int parseCreateLiveRoomResult(const QByteArray& bytes);
    int parseLivingStatisticalInfo(const QByteArray& bytes, LivingStatistics& statistics);

private:
    // Push URL -> line id of the lines the last reply offered.
    using PushLineTable = std::map<std::string, int32_t>;

    // The start of a parser that parseDataObject does not fit: another message key, "data" as an
    // array, or failure codes that carry a payload of their own (room/push_lines.cpp). Banner,
    // envelope check into `root`, then "data". Returns 0 with `data` filled; 1 with the
    // data-error text in lastErrorMessage() when "data" is missing or of the other type; else
    // the server's code unmapped, its message in lastErrorMessage() and `root` keeping the rest
    // of the reply. Callers return mapServerErrorCode of it, which leaves the 1 as it is.
    int parseReplyData(const char* parserName, const QByteArray& bytes, const QString& messageKey,
                       QJsonObject& root, QJsonObject& data);
    int parseReplyData(const char* parserName, const QByteArray& bytes, const QString& messageKey,
                       QJsonObject& root, QJsonArray& data);

    // Everything reset() restores, so a member added here is restored with no further code.
    struct State {
        std::string lastErrorMessage;
        bool isForeignTel = true;
        std::string hidePhone;
        std::string remoteLoginCode;
        UserProfile profile;
        RoomInfo roomInfo;
        std::vector<CategoryNode> emotionWhiteList;
        // Read and written only under pushLinesMutex_.
        PushLineTable pushLines;
        PushLineTable h265PushLines;
        std::string fmsValue;
        std::string referenceUrl;
        int32_t currentCid2 = 0;
        int32_t currentCid3 = 0;
    };

    State state_;
    // Outside State, which reset() reassigns under this lock. A standard mutex rather than
    // QMutex, whose contended path ThreadSanitizer cannot see.
    mutable std::mutex pushLinesMutex_;
};

#pragma once

#include <QJsonObject>
#include <QString>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/sim_anchor_records.h"
#include "platform/sim_category_catalogue.h"
#include "platform/sim_live_state.h"
#include "platform/sim_passport_state.h"
#include "platform/sim_room_settings.h"

namespace tolvane::sim {

// One account of the fixture: credentials, profile and room as the services hand them out.
struct SimAccount {
    std::string name;
    std::string password;
    std::string uid;
    std::string phone;
    std::string areaCode;
    bool remoteLogin = false;  // every login asks for an SMS confirmation first
    bool foreignTel = false;
    bool longTokenExpired = false;  // token logins with its long tokens are refused
    int profileError = 0;           // my_info answers this code instead of the profile
    QJsonObject profile;
    QJsonObject room;
};

// A signed-in session: what the module's "token" parameter names.
struct SimSession {
    std::string uid;
    std::string shortToken;
    int bizType = 13;
    int clientType = 3;
    int longTokenId = 0;
};

// One barrage server as the gateway and the room information hand it out.
struct SimServerAddress {
    std::string ip;
    int port = 0;
};

// Everything the simulated platform remembers; shared by its services, safe to use from the
// server threads and from tests at once.
class SimPlatformState {
public:
    SimPlatformState();  // loads the compiled-in account fixture

    std::optional<SimAccount> accountByName(const std::string& name) const;
    std::optional<SimAccount> accountByPhone(const std::string& phone) const;
    std::optional<SimAccount> accountByUid(const std::string& uid) const;
    // Gives the account a room, which every service then sees; false for an unknown uid.
    bool setAccountRoom(const std::string& uid, QJsonObject room);

    // A new long token and session for the account.
    struct Grant {
        std::string longToken;
        SimSession session;
    };
    Grant grantLogin(const SimAccount& account);
    // The account a long token belongs to, if it was issued and not revoked.
    std::optional<SimAccount> accountByLongToken(const std::string& longToken) const;
    // The session named by a "token" parameter (uid_biz_short_client_longTokenId).
    std::optional<SimSession> sessionByToken(const std::string& token) const;

    // Server clock: local seconds plus a settable skew.
    void setClockSkewSeconds(int64_t skew);
    int64_t nowSeconds() const;
    // The next `count` timestamp requests fail with the given reply kind.
    enum class TimeFailure { NegativeTime, ServerError, NotJson };
    void failTimestamps(int count, TimeFailure kind = TimeFailure::NegativeTime);
    std::optional<TimeFailure> takeTimestampFailure();

    // The room's live state as "my_room" reports it: show_status 1 when live, else 2.
    void setLive(bool live);
    bool live() const;
    void setShowType(int showType);
    int showType() const;

    // Barrage servers named by the gateway ("iplist") and by the room information ("servers").
    void setGatewayServers(std::vector<SimServerAddress> servers);
    std::vector<SimServerAddress> gatewayServers() const;
    void setRoomServers(std::vector<SimServerAddress> servers);
    std::vector<SimServerAddress> roomServers() const;

    // The cate2 ids of the emotion white list.
    void setEmotionWhiteList(std::vector<int> cate2Ids);
    std::vector<int> emotionWhiteList() const;

    // Push lines and show events, and categories and tags; each guards itself.
    SimLiveState& liveState() { return liveState_; }
    const SimLiveState& liveState() const { return liveState_; }
    SimCategoryCatalogue& categories() { return categories_; }
    const SimCategoryCatalogue& categories() const { return categories_; }
    // Followers, guild, location, card, black lists and customer service; guards itself.
    SimAnchorRecords& anchorRecords() { return anchorRecords_; }
    const SimAnchorRecords& anchorRecords() const { return anchorRecords_; }
    // Video settings, watermark corners, bit-rate presets, statistics, created rooms and
    // reminders; guards itself.
    SimRoomSettings& roomSettings() { return roomSettings_; }
    const SimRoomSettings& roomSettings() const { return roomSettings_; }
    // SMS, remote-login and QR codes, phone bindings, app authorisation; guards itself.
    SimPassportState& passport() { return passport_; }
    const SimPassportState& passport() const { return passport_; }

private:
    std::optional<SimAccount> findAccount(std::string SimAccount::*field,
                                          const std::string& value) const;

    mutable std::mutex mutex_;
    std::vector<SimAccount> accounts_;
    std::map<std::string, std::string> longTokens_;  // long token -> uid
    std::map<std::string, SimSession> sessions_;     // short token -> session
    int64_t clockSkew_ = 0;
    int timeFailuresLeft_ = 0;
    TimeFailure timeFailure_ = TimeFailure::NegativeTime;
    uint64_t counter_ = 0;
    bool live_ = false;
    int showType_ = 0;
    std::vector<SimServerAddress> gatewayServers_;
    std::vector<SimServerAddress> roomServers_;
    std::vector<int> emotionWhiteList_{201, 207, 311};
    SimLiveState liveState_;
    SimCategoryCatalogue categories_;
    SimAnchorRecords anchorRecords_;
    SimRoomSettings roomSettings_;
    SimPassportState passport_;
};

}  // namespace tolvane::sim

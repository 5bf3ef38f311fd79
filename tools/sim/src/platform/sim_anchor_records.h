#pragma once

#include <QJsonObject>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tolvane::sim {

// Where an anchor last said the show takes place; the texts as they arrived.
struct SimAnchorLocation {
    std::string city;
    std::string longitude;
    std::string latitude;
};

// One viewer the anchor shut out of the room.
struct SimBlockedUser {
    std::string uid;
    std::string nickname;
    std::string blockedAt;  // "yyyy-MM-dd HH:mm:ss"
};

// What the customer-service host answers for one app code.
struct SimServiceEntry {
    std::string remark;
    std::string url;
};

// The small things the platform knows about an anchor beside the room itself: followers,
// guild, location, identity link, the hover card, the rooms' black lists and the
// customer-service entries. Starts from compiled-in values for the fixture's anchor (uid
// 10001, room 880001); safe from server threads and tests at once.
class SimAnchorRecords {
public:
    SimAnchorRecords();

    // A room nobody set has no followers.
    int followers(int roomId) const;
    void setFollowers(int roomId, int count);

    bool inGuild(const std::string& uid) const;
    void setInGuild(const std::string& uid, bool member);

    // Whether the anchor lets viewers see the location, as getAnchorPoi last said; unset
    // before it was ever asked.
    std::optional<bool> locationShown(const std::string& uid) const;
    void setLocationShown(const std::string& uid, bool shown);
    std::optional<SimAnchorLocation> location(const std::string& uid) const;
    void setLocation(const std::string& uid, SimAnchorLocation location);

    // The page where the anchor verifies their identity; "%1" stands for the uid.
    std::string identityUrl(const std::string& uid) const;
    void setIdentityUrlPattern(std::string pattern);

    // The "data" object of the hover card, when a test wrote one for the uid; otherwise the
    // service builds the card from the account.
    std::optional<QJsonObject> card(const std::string& uid) const;
    void setCard(const std::string& uid, QJsonObject data);

    std::vector<SimBlockedUser> blackList(int roomId) const;
    void setBlackList(int roomId, std::vector<SimBlockedUser> users);
    // False, and nothing changes, when the uid is not on the room's list.
    bool unblock(int roomId, const std::string& uid);

    std::optional<SimServiceEntry> serviceEntry(const std::string& appCode) const;
    void setServiceEntry(const std::string& appCode, SimServiceEntry entry);

private:
    mutable std::mutex mutex_;
    std::map<int, int> followers_;
    std::set<std::string> guildMembers_;
    std::map<std::string, bool> locationShown_;
    std::map<std::string, SimAnchorLocation> locations_;
    std::string identityUrlPattern_;
    std::map<std::string, QJsonObject> cards_;
    std::map<int, std::vector<SimBlockedUser>> blackLists_;
    std::map<std::string, SimServiceEntry> serviceEntries_;
};

}  // namespace tolvane::sim

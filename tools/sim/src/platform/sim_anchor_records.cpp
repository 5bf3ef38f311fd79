#include "platform/sim_anchor_records.h"

#include <QString>
#include <algorithm>
#include <utility>

namespace tolvane::sim {

namespace {

constexpr int kFixtureRoom = 880001;
const char kFixtureUid[] = "10001";

}  // namespace

SimAnchorRecords::SimAnchorRecords()
    : followers_{{kFixtureRoom, 3260}},
      guildMembers_{kFixtureUid},
      identityUrlPattern_("https://ident.tolvane.example/pc/verify?uid=%1"),
      blackLists_{{kFixtureRoom,
                   {{"20001", "Heckler", "2030-01-02 21:14:05"},
                    {"20002", u8"刷屏机器人", "2030-01-03 08:00:00"}}}},
      serviceEntries_{
          {"tolvane_pc", {u8"在线客服 9:00-21:00", "https://kf.tolvane.example/chat?app=pc"}}} {}

int SimAnchorRecords::followers(int roomId) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = followers_.find(roomId);
    return it == followers_.end() ? 0 : it->second;
}

void SimAnchorRecords::setFollowers(int roomId, int count) {
    std::lock_guard<std::mutex> lock(mutex_);
    followers_[roomId] = count;
}

bool SimAnchorRecords::inGuild(const std::string& uid) const {
    std::lock_guard<std::mutex> lock(mutex_);
    return guildMembers_.count(uid) != 0;
}

void SimAnchorRecords::setInGuild(const std::string& uid, bool member) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (member) {
        guildMembers_.insert(uid);
    } else {
        guildMembers_.erase(uid);
    }
}

std::optional<bool> SimAnchorRecords::locationShown(const std::string& uid) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = locationShown_.find(uid);
    if (it == locationShown_.end()) {
        return std::nullopt;
    }
    return it->second;
}

void SimAnchorRecords::setLocationShown(const std::string& uid, bool shown) {
    std::lock_guard<std::mutex> lock(mutex_);
    locationShown_[uid] = shown;
}

std::optional<SimAnchorLocation> SimAnchorRecords::location(const std::string& uid) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = locations_.find(uid);
    if (it == locations_.end()) {
        return std::nullopt;
    }
    return it->second;
}

void SimAnchorRecords::setLocation(const std::string& uid, SimAnchorLocation location) {
    std::lock_guard<std::mutex> lock(mutex_);
    locations_[uid] = std::move(location);
}

std::string SimAnchorRecords::identityUrl(const std::string& uid) const {
    std::lock_guard<std::mutex> lock(mutex_);
    return QString::fromStdString(identityUrlPattern_)
        .arg(QString::fromStdString(uid))
        .toStdString();
}

void SimAnchorRecords::setIdentityUrlPattern(std::string pattern) {
    std::lock_guard<std::mutex> lock(mutex_);
    identityUrlPattern_ = std::move(pattern);
}

std::optional<QJsonObject> SimAnchorRecords::card(const std::string& uid) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = cards_.find(uid);
    if (it == cards_.end()) {
        return std::nullopt;
    }
    return it->second;
}

void SimAnchorRecords::setCard(const std::string& uid, QJsonObject data) {
    std::lock_guard<std::mutex> lock(mutex_);
    cards_[uid] = std::move(data);
}

std::vector<SimBlockedUser> SimAnchorRecords::blackList(int roomId) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = blackLists_.find(roomId);
    return it == blackLists_.end() ? std::vector<SimBlockedUser>() : it->second;
}

void SimAnchorRecords::setBlackList(int roomId, std::vector<SimBlockedUser> users) {
    std::lock_guard<std::mutex> lock(mutex_);
    blackLists_[roomId] = std::move(users);
}

bool SimAnchorRecords::unblock(int roomId, const std::string& uid) {
    std::lock_guard<std::mutex> lock(mutex_);
    auto& users = blackLists_[roomId];
    const auto it = std::find_if(users.begin(), users.end(),
                                 [&uid](const SimBlockedUser& user) { return user.uid == uid; });
    if (it == users.end()) {
        return false;
    }
    users.erase(it);
    return true;
}

std::optional<SimServiceEntry> SimAnchorRecords::serviceEntry(const std::string& appCode) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = serviceEntries_.find(appCode);
    if (it == serviceEntries_.end()) {
        return std::nullopt;
    }
    return it->second;
}

void SimAnchorRecords::setServiceEntry(const std::string& appCode, SimServiceEntry entry) {
    std::lock_guard<std::mutex> lock(mutex_);
    serviceEntries_[appCode] = std::move(entry);
}

}  // namespace tolvane::sim

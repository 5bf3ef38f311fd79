#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace tolvane::sim {

// A room's video settings in the platform's own values, as the settings service writes them.
struct SimVideoSettings {
    std::string newTitle;  // the title sent for review
    int titleReview = 0;   // "title_vertify"
    std::string lastNotice;
    std::string newNotice;
    int noticeStatus = 0;  // "new_status"
    bool noticeAlways = false;
    std::string coverUrl;
    int coverStatus = 0;  // "cover_status"
    std::string coverMessage;
    bool coverButton = false;
    bool openCloseCover = false;
    std::optional<int> credit = 12;  // none: the reply has no "credit_info"
    int64_t categoryTime = 0;        // "cate_time", seconds
};

// One bit-rate preset of a category.
struct SimBitratePreset {
    int type = 1;
    int cate2Id = 0;
    std::string cate2Name;
    int min = 0;
    int max = 0;
};

// The figures of a room's current show.
struct SimLiveStatistics {
    int64_t mh = 0;
    int nac = 0;
    int nsuc = 0;
    int nsfi = 0;
    int nfbi = 0;
    int ld = 0;
    int bancount = 0;
};

// A reminder an anchor sent to the room's followers.
struct SimReminder {
    std::string uid;
    int roomId = 0;
    std::string title;
    std::string clientVersion;
};

// A room the platform created, and what the request asked for.
struct SimRoomCreation {
    std::string uid;
    int roomId = 0;
    std::string tagId;
    std::string id;
};

// Per room: video settings, watermark corners and show statistics; the platform's bit-rate
// presets; the rooms it created and the reminders it received. Safe from server threads and
// tests at once.
class SimRoomSettings {
public:
    SimRoomSettings();  // room 880001's settings and the presets of the fixture categories

    // A room nobody set up has empty texts, every state 0 and a credit of 12.
    SimVideoSettings videoSettings(int roomId) const;
    void updateVideoSettings(int roomId, const std::function<void(SimVideoSettings&)>& change);

    // Corner numbers 1 to 4 as the reply lists them; a room starts with 1 and 3.
    std::vector<int> corners(int roomId) const;
    void setCorners(int roomId, std::vector<int> corners);

    std::vector<SimBitratePreset> bitratePresets() const;
    void setBitratePresets(std::vector<SimBitratePreset> presets);

    // The figures as a request sees them: while the room is live each request first counts one
    // more step of the show, so that they grow from one request to the next.
    SimLiveStatistics advanceStatistics(int roomId, bool live);
    SimLiveStatistics statistics(int roomId) const;
    void setStatistics(int roomId, SimLiveStatistics statistics);

    // A new room id (880101, 880102, ...) recorded with what the request asked for.
    int createRoom(const std::string& uid, const std::string& tagId, const std::string& id);
    std::vector<SimRoomCreation> creations() const;

    void recordReminder(SimReminder reminder);
    std::vector<SimReminder> reminders() const;

private:
    mutable std::mutex mutex_;
    std::map<int, SimVideoSettings> videoSettings_;
    std::map<int, std::vector<int>> corners_;
    std::vector<SimBitratePreset> presets_;
    std::map<int, SimLiveStatistics> statistics_;
    std::vector<SimRoomCreation> creations_;
    std::vector<SimReminder> reminders_;
    int nextRoomId_ = 880101;
};

}  // namespace tolvane::sim

#include "platform/sim_room_settings.h"

#include <utility>

namespace tolvane::sim {

namespace {

constexpr int kFixtureRoom = 880001;

SimVideoSettings fixtureRoomSettings() {
    SimVideoSettings settings;
    settings.newTitle = "Endgame night";
    settings.titleReview = 1;
    settings.lastNotice = "Live every night at 22:00";
    settings.newNotice = "Blitz tournament on Sunday";
    settings.noticeStatus = 1;
    settings.noticeAlways = true;
    settings.coverUrl = "https://img.tolvane.example/cover/880001.jpg";
    settings.coverStatus = 1;
    settings.coverButton = true;
    settings.openCloseCover = true;
    settings.credit = 12;
    settings.categoryTime = 1714003200;
    return settings;
}

// Presets for four of the fixture's categories; the others have none.
std::vector<SimBitratePreset> fixturePresets() {
    return {{1, 12, "Chess", 1500, 4000},
            {2, 201, "Singing", 1000, 3000},
            {2, 207, "Voice chat", 300, 800},
            {1, 311, "Cooking", 2000, 6000}};
}

// What one step of a live show adds to its figures; bans only come from the anchor.
void addShowStep(SimLiveStatistics& figures) {
    figures.mh += 1000;
    figures.nac += 3;
    figures.nsuc += 1;
    figures.nsfi += 2;
    figures.nfbi += 1;
    figures.ld += 4;
}

}  // namespace

SimRoomSettings::SimRoomSettings() : presets_(fixturePresets()) {
    videoSettings_[kFixtureRoom] = fixtureRoomSettings();
}

SimVideoSettings SimRoomSettings::videoSettings(int roomId) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = videoSettings_.find(roomId);
    return it == videoSettings_.end() ? SimVideoSettings() : it->second;
}

void SimRoomSettings::updateVideoSettings(int roomId,
                                          const std::function<void(SimVideoSettings&)>& change) {
    std::lock_guard<std::mutex> lock(mutex_);
    change(videoSettings_[roomId]);
}

std::vector<int> SimRoomSettings::corners(int roomId) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = corners_.find(roomId);
    return it == corners_.end() ? std::vector<int>{1, 3} : it->second;
}

void SimRoomSettings::setCorners(int roomId, std::vector<int> corners) {
    std::lock_guard<std::mutex> lock(mutex_);
    corners_[roomId] = std::move(corners);
}

std::vector<SimBitratePreset> SimRoomSettings::bitratePresets() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return presets_;
}

void SimRoomSettings::setBitratePresets(std::vector<SimBitratePreset> presets) {
    std::lock_guard<std::mutex> lock(mutex_);
    presets_ = std::move(presets);
}

SimLiveStatistics SimRoomSettings::advanceStatistics(int roomId, bool live) {
    std::lock_guard<std::mutex> lock(mutex_);
    SimLiveStatistics& figures = statistics_[roomId];
    if (live) {
        addShowStep(figures);
    }
    return figures;
}

SimLiveStatistics SimRoomSettings::statistics(int roomId) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = statistics_.find(roomId);
    return it == statistics_.end() ? SimLiveStatistics() : it->second;
}

void SimRoomSettings::setStatistics(int roomId, SimLiveStatistics statistics) {
    std::lock_guard<std::mutex> lock(mutex_);
    statistics_[roomId] = statistics;
}

int SimRoomSettings::createRoom(const std::string& uid, const std::string& tagId,
                                const std::string& id) {
    std::lock_guard<std::mutex> lock(mutex_);
    const int roomId = nextRoomId_++;
    creations_.push_back({uid, roomId, tagId, id});
    return roomId;
}

std::vector<SimRoomCreation> SimRoomSettings::creations() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return creations_;
}

void SimRoomSettings::recordReminder(SimReminder reminder) {
    std::lock_guard<std::mutex> lock(mutex_);
    reminders_.push_back(std::move(reminder));
}

std::vector<SimReminder> SimRoomSettings::reminders() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return reminders_;
}

}  // namespace tolvane::sim

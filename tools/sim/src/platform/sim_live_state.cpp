#include "platform/sim_live_state.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <utility>

namespace tolvane::sim {

extern const char* const kPushLinesFixture;

namespace {

std::vector<SimPushLine> readLines(const QJsonArray& array) {
    std::vector<SimPushLine> lines;
    for (const QJsonValue& value : array) {
        const QJsonObject line = value.toObject();
        lines.push_back({line.value(QStringLiteral("id")).toInt(),
                         line.value(QStringLiteral("url")).toString().toStdString()});
    }
    return lines;
}

std::map<int, SimRoomLines> loadRooms() {
    std::map<int, SimRoomLines> rooms;
    const QJsonObject fixture = QJsonDocument::fromJson(QByteArray(kPushLinesFixture))
                                    .object()
                                    .value(QStringLiteral("rooms"))
                                    .toObject();
    for (auto it = fixture.begin(); it != fixture.end(); ++it) {
        const QJsonObject room = it.value().toObject();
        SimRoomLines& lines = rooms[it.key().toInt()];
        lines.fmsValue = room.value(QStringLiteral("fms_val")).toString().toStdString();
        lines.main = readLines(room.value(QStringLiteral("lines")).toArray());
        lines.h265 = readLines(room.value(QStringLiteral("h265_lines")).toArray());
    }
    return rooms;
}

}  // namespace

SimLineRefusal SimLineRefusal::roomClosed(std::string reason, std::string openTime, double duration,
                                          std::string message) {
    SimLineRefusal refusal;
    refusal.code = 608;
    refusal.message = std::move(message);
    refusal.reason = std::move(reason);
    refusal.openTime = std::move(openTime);
    refusal.duration = duration;
    return refusal;
}

SimLineRefusal SimLineRefusal::verificationNeeded(std::string message, std::string refUrl) {
    SimLineRefusal refusal;
    refusal.code = 9;
    refusal.message = std::move(message);
    refusal.refUrl = std::move(refUrl);
    return refusal;
}

SimLiveState::SimLiveState() : rooms_(loadRooms()) {}

SimRoomLines SimLiveState::lines(int roomId) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = rooms_.find(roomId);
    return it == rooms_.end() ? SimRoomLines() : it->second;
}

void SimLiveState::setLines(int roomId, SimRoomLines lines) {
    std::lock_guard<std::mutex> lock(mutex_);
    rooms_[roomId] = std::move(lines);
}

void SimLiveState::update(int roomId, const std::function<void(SimRoomLines&)>& change) {
    std::lock_guard<std::mutex> lock(mutex_);
    change(rooms_[roomId]);
}

SimSendAddress SimLiveState::sendAddress(int roomId) const {
    const SimRoomLines room = lines(roomId);
    if (room.sendAddress) {
        return *room.sendAddress;
    }
    if (room.main.empty()) {
        return {QJsonValue(-1), std::string(), std::string()};
    }
    const SimPushLine& first = room.main.front();
    const std::string::size_type slash = first.url.rfind('/');
    if (slash == std::string::npos) {
        return {QJsonValue(first.id), first.url, std::string()};
    }
    return {QJsonValue(first.id), first.url.substr(0, slash), first.url.substr(slash + 1)};
}

bool SimRoomLines::hasLine(int lineId) const {
    const auto named = [lineId](const SimPushLine& line) { return line.id == lineId; };
    return std::any_of(main.begin(), main.end(), named) ||
           std::any_of(h265.begin(), h265.end(), named);
}

void SimLiveState::recordLineRequest(int roomId, SimLineRequest request) {
    std::lock_guard<std::mutex> lock(mutex_);
    lineRequests_[roomId] = std::move(request);
}

std::optional<SimLineRequest> SimLiveState::lastLineRequest(int roomId) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = lineRequests_.find(roomId);
    if (it == lineRequests_.end()) {
        return std::nullopt;
    }
    return it->second;
}

void SimLiveState::setShowEndedListener(std::function<void(int)> listener) {
    std::lock_guard<std::mutex> lock(mutex_);
    showEnded_ = std::move(listener);
}

void SimLiveState::endShow(int roomId) {
    std::function<void(int)> listener;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        listener = showEnded_;
    }
    // Called unlocked, so that the listener may read this state.
    if (listener) {
        listener(roomId);
    }
}

}  // namespace tolvane::sim

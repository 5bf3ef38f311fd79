#pragma once

#include <algorithm>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "tolvane/i_room_listener.h"

// Keeps what the barrage client reports; the client calls it on the message library's thread.
class RecordingListener : public IRoomListener {
public:
    struct State {
        std::vector<int32_t> statuses;
        std::vector<std::pair<int32_t, int32_t>> showEnds;
        std::vector<BarrageMessage> messages;
        std::vector<int32_t> memberInfo;
        std::vector<int32_t> notices;
        std::vector<std::string> fansBrands;

        int countOfType(const std::string& typeName) const {
            return static_cast<int>(
                std::count_if(messages.begin(), messages.end(),
                              [&](const BarrageMessage& m) { return m.typeName == typeName; }));
        }
    };

    int32_t onRoomStatus(int32_t status) override {
        return update([&](State& s) { s.statuses.push_back(status); });
    }
    int32_t onMemberInfoValue(int32_t value) override {
        return update([&](State& s) { s.memberInfo.push_back(value); });
    }
    int32_t onFansBrand(const char* brand) override {
        return update([&](State& s) { s.fansBrands.emplace_back(brand); });
    }
    // The keep-alive values are shown through the service, which stores them.
    int32_t onKeepAliveFirst(int32_t) override { return 0; }
    int32_t onKeepAliveSecond(int32_t) override { return 0; }
    int32_t onHostText(const char*) override { return 0; }
    int32_t onShowEnd(int32_t reason, int32_t banHours) override {
        return update([&](State& s) { s.showEnds.emplace_back(reason, banHours); });
    }
    int32_t onBarrageMessage(const BarrageMessage* message) override {
        return update([&](State& s) { s.messages.push_back(*message); });
    }
    int32_t onNoticeValue(int32_t value) override {
        return update([&](State& s) { s.notices.push_back(value); });
    }

    State state() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return state_;
    }

private:
    int32_t update(const std::function<void(State&)>& change) {
        std::lock_guard<std::mutex> lock(mutex_);
        change(state_);
        return 0;
    }

    mutable std::mutex mutex_;
    State state_;
};

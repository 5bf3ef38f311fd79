#pragma once

#include <chrono>
#include <condition_variable>
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
        std::vector<std::pair<int32_t, int32_t>> keepAlives;  // (first, second)

        int countOfType(const std::string& typeName) const {
            int count = 0;
            for (const BarrageMessage& m : messages) {
                count += m.typeName == typeName ? 1 : 0;
            }
            return count;
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
    int32_t onKeepAliveFirst(int32_t value) override {
        return update([&](State& s) {
            if (!s.keepAlives.empty()) {
                s.keepAlives.back().first = value;
            }
        });
    }
    int32_t onKeepAliveSecond(int32_t value) override {
        // The client reports the second value first.
        return update([&](State& s) { s.keepAlives.emplace_back(0, value); });
    }
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

    // Blocks (without an event loop) until the condition holds; false on time-out.
    bool waitFor(const std::function<bool(const State&)>& condition, int timeoutMs = 5000) const {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                                 [&] { return condition(state_); });
    }

private:
    int32_t update(const std::function<void(State&)>& change) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            change(state_);
        }
        changed_.notify_all();
        return 0;
    }

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    State state_;
};

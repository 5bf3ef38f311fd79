#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "tolvane/service_observer.h"

// The host's side: keeps what reaches it as lines such as "status 0", from whichever thread.
class RecordingObserver : public ServiceObserver {
public:
    void onRoomStatus(int32_t status) override { add("status " + std::to_string(status)); }
    void onText(const std::string& text) override { add("text " + text); }
    void onShowEnd(int32_t reason, float hours) override {
        add("end " + std::to_string(reason) + " " + std::to_string(hours));
    }
    void onBarrageMessage(const BarrageMessage* message) override {
        add("message " + message->typeName);
    }

    // The events that start with the prefix, in order; all of them for an empty prefix.
    std::vector<std::string> events(const std::string& prefix = {}) const {
        std::lock_guard<std::mutex> lock(mutex_);
        std::vector<std::string> matching;
        for (const std::string& event : events_) {
            if (event.rfind(prefix, 0) == 0) {
                matching.push_back(event);
            }
        }
        return matching;
    }

private:
    void add(std::string event) {
        std::lock_guard<std::mutex> lock(mutex_);
        events_.push_back(std::move(event));
    }

    mutable std::mutex mutex_;
    std::vector<std::string> events_;
};

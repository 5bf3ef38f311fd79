#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "tolvane/i_vx_live_room_info.h"

// The host's catalogue observer: keeps what it heard as "table 0" or "room 880001" lines.
class RecordingSubject : public IVxDataSubject {
public:
    void onTableChanged(VxCatalogueTable table) override {
        add("table " + std::to_string(static_cast<int>(table)));
    }
    void onRoomChanged(int32_t roomId) override { add("room " + std::to_string(roomId)); }

    std::vector<std::string> events() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return events_;
    }
    bool heard(const std::string& event) const {
        std::lock_guard<std::mutex> lock(mutex_);
        for (const std::string& e : events_) {
            if (e == event) {
                return true;
            }
        }
        return false;
    }
    void clear() {
        std::lock_guard<std::mutex> lock(mutex_);
        events_.clear();
    }

private:
    void add(std::string event) {
        std::lock_guard<std::mutex> lock(mutex_);
        events_.push_back(std::move(event));
    }

    mutable std::mutex mutex_;
    std::vector<std::string> events_;
};

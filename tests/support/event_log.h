#pragma once

#include <algorithm>
#include <iterator>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

// What a host callback heard, as lines such as "status 0", kept from whichever thread calls.
class EventLog {
public:
    // The events that start with the prefix, in order; all of them for an empty prefix.
    std::vector<std::string> events(const std::string& prefix = {}) const {
        std::lock_guard<std::mutex> lock(mutex_);
        std::vector<std::string> matching;
        std::copy_if(events_.begin(), events_.end(), std::back_inserter(matching),
                     [&](const std::string& event) { return event.rfind(prefix, 0) == 0; });
        return matching;
    }
    bool heard(const std::string& event) const {
        std::lock_guard<std::mutex> lock(mutex_);
        return std::find(events_.begin(), events_.end(), event) != events_.end();
    }
    void clear() {
        std::lock_guard<std::mutex> lock(mutex_);
        events_.clear();
    }
    void add(std::string event) {
        std::lock_guard<std::mutex> lock(mutex_);
        events_.push_back(std::move(event));
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> events_;
};

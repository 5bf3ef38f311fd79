#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

#include "http/sim_records.h"

namespace tolvane::sim {

// Every request the server saw, in arrival order, for tests to assert on.
class SimRequestLog {
public:
    void add(const SimRequest& request);
    void clear();

    std::vector<SimRequest> all() const;
    std::vector<SimRequest> to(const std::string& path) const;
    std::size_t size() const;
    std::size_t authFailures() const;

    // Waits until at least `count` requests were seen; false when the time ran out.
    bool waitForCount(std::size_t count, std::chrono::milliseconds timeout) const;

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable added_;
    std::vector<SimRequest> requests_;
    std::size_t authFailures_ = 0;
};

}  // namespace tolvane::sim

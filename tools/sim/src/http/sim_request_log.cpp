#include "http/sim_request_log.h"

namespace tolvane::sim {

void SimRequestLog::add(const SimRequest& request) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        requests_.push_back(request);
        if (!request.authOk) {
            ++authFailures_;
        }
    }
    added_.notify_all();
}

void SimRequestLog::clear() {
    std::lock_guard<std::mutex> lock(mutex_);
    requests_.clear();
    authFailures_ = 0;
}

std::vector<SimRequest> SimRequestLog::all() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return requests_;
}

std::vector<SimRequest> SimRequestLog::to(const std::string& path) const {
    std::lock_guard<std::mutex> lock(mutex_);
    std::vector<SimRequest> found;
    for (const SimRequest& request : requests_) {
        if (request.path == path) {
            found.push_back(request);
        }
    }
    return found;
}

std::size_t SimRequestLog::size() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return requests_.size();
}

std::size_t SimRequestLog::authFailures() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return authFailures_;
}

bool SimRequestLog::waitForCount(std::size_t count, std::chrono::milliseconds timeout) const {
    std::unique_lock<std::mutex> lock(mutex_);
    return added_.wait_for(lock, timeout, [&] { return requests_.size() >= count; });
}

}  // namespace tolvane::sim

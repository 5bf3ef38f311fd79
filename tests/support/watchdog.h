#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

// Unless destroyed within the limit, says what it waited for and ends the test program at once,
// since a deadlock leaves no thread to report it before the runner's time-out.
class Watchdog {
public:
    explicit Watchdog(std::string what, std::chrono::milliseconds limit = std::chrono::seconds(10))
        : what_(std::move(what)), thread_([this, limit] { watch(limit); }) {}
    ~Watchdog() {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            done_ = true;
        }
        changed_.notify_all();
        thread_.join();
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

private:
    void watch(std::chrono::milliseconds limit) {
        std::unique_lock<std::mutex> lock(mutex_);
        if (!changed_.wait_for(lock, limit, [this] { return done_; })) {
            std::fprintf(stderr, "watchdog: hung for %lld ms in %s\n",
                         static_cast<long long>(limit.count()), what_.c_str());
            std::fflush(stderr);
            std::abort();
        }
    }

    std::string what_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool done_ = false;
    std::thread thread_;  // last: starts once the rest exists
};

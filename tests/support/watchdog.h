#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

// Ends the whole run, naming what hung, when a step is still running after its time: a
// deadlock has to fail in seconds rather than at the CI's time-out, and a thread that will
// never come back leaves nothing else to do.
class Watchdog {
public:
    Watchdog(std::string what, std::chrono::milliseconds limit)
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
            std::fprintf(stderr, "\nWATCHDOG: still waiting after %lld ms for %s\n",
                         static_cast<long long>(limit.count()), what_.c_str());
            std::fflush(stderr);
            std::abort();
        }
    }

    const std::string what_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool done_ = false;
    std::thread thread_;  // last: starts once the members it reads exist
};

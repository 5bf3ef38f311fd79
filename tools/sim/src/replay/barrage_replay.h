#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "replay/msg_log_lines.h"

namespace sim {
class BarrageServer;
}  // namespace sim

namespace tolvane::sim {

// Plays recorded barrage messages through barrage servers at the recorded pace, or `speed`
// times faster, on a thread of its own. Every message goes to every open connection of every
// server; the play starts with the first login any of them accepts, and runs once.
class BarrageReplay {
public:
    BarrageReplay(std::vector<ReplayStep> steps, double speed);
    ~BarrageReplay();
    BarrageReplay(const BarrageReplay&) = delete;
    BarrageReplay& operator=(const BarrageReplay&) = delete;

    // Takes over the servers' login check (every login is accepted) to start on the first;
    // the servers must outlive the replay.
    void attach(const std::vector<::sim::BarrageServer*>& servers);
    // Starts playing now unless it already has; returns at once.
    void begin();
    void stop();

    std::size_t size() const { return steps_.size(); }
    // Messages handed to the servers so far.
    std::size_t sent() const { return sent_.load(); }

private:
    // What the servers' login checks reach the replay through; cut before the replay goes.
    struct Link {
        std::mutex mutex;
        BarrageReplay* replay = nullptr;
    };

    void play();

    const std::vector<ReplayStep> steps_;
    const double speed_;
    std::vector<::sim::BarrageServer*> servers_;
    std::shared_ptr<Link> link_ = std::make_shared<Link>();
    std::atomic<std::size_t> sent_{0};
    std::mutex mutex_;
    std::condition_variable stopping_;
    bool stopped_ = false;
    std::thread thread_;
};

}  // namespace tolvane::sim

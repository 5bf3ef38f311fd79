#include "replay/barrage_replay.h"

#include <utility>

#include "barrage/barrage_server.h"

namespace tolvane::sim {

BarrageReplay::BarrageReplay(std::vector<ReplayStep> steps, double speed)
    : steps_(std::move(steps)), speed_(speed > 0 ? speed : 1.0) {}

BarrageReplay::~BarrageReplay() {
    {
        std::lock_guard<std::mutex> lock(link_->mutex);
        link_->replay = nullptr;
    }
    stop();
}

void BarrageReplay::attach(const std::vector<::sim::BarrageServer*>& servers) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        servers_ = servers;
    }
    {
        std::lock_guard<std::mutex> lock(link_->mutex);
        link_->replay = this;
    }
    for (::sim::BarrageServer* server : servers) {
        server->setLoginCheck([link = link_](const ::sim::BarrageConnectionRecord&) {
            std::lock_guard<std::mutex> lock(link->mutex);
            if (link->replay != nullptr) {
                link->replay->begin();
            }
            return 0;
        });
    }
}

void BarrageReplay::begin() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!thread_.joinable() && !stopped_) {
        thread_ = std::thread([this] { play(); });
    }
}

void BarrageReplay::stop() {
    std::thread player;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopped_ = true;
        player = std::move(thread_);
    }
    stopping_.notify_all();
    if (player.joinable()) {
        player.join();
    }
}

void BarrageReplay::play() {
    const auto start = std::chrono::steady_clock::now();
    std::unique_lock<std::mutex> lock(mutex_);
    for (const ReplayStep& step : steps_) {
        const auto due = start + std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                                     std::chrono::duration<double, std::milli>(
                                         static_cast<double>(step.at.count()) / speed_));
        if (stopping_.wait_until(lock, due, [this] { return stopped_; })) {
            return;
        }
        // The servers queue the text on their own threads, in call order.
        for (::sim::BarrageServer* server : servers_) {
            server->sendText(step.text);
        }
        ++sent_;
    }
}

}  // namespace tolvane::sim

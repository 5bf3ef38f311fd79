#include "liveroom/fetch_queue.h"

#include <algorithm>

namespace tolvane::liveroom {

FetchQueue::FetchQueue(Fetch fetch) : fetch_(std::move(fetch)), worker_([this] { run(); }) {}

FetchQueue::~FetchQueue() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    worker_.join();
}

bool FetchQueue::request(const FetchKey& key) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        const Clock::time_point now = Clock::now();
        auto found = states_.find(key);
        if (found != states_.end()) {
            State& state = found->second;
            if (state.active || now < state.due) {
                return false;
            }
            state = State{};
            state.due = now;
        } else {
            if (states_.size() >= policy_.capacity && !dropRestedKeys(now)) {
                return false;
            }
            State state;
            state.due = now;
            states_.emplace(key, state);
        }
    }
    wake_.notify_all();
    return true;
}

bool FetchQueue::dropRestedKeys(Clock::time_point now) {
    bool dropped = false;
    for (auto it = states_.begin(); it != states_.end();) {
        if (!it->second.active && it->second.due <= now) {
            it = states_.erase(it);
            dropped = true;
        } else {
            ++it;
        }
    }
    return dropped;
}

void FetchQueue::clear() {
    std::lock_guard<std::mutex> lock(mutex_);
    ++generation_;
    for (auto it = states_.begin(); it != states_.end();) {
        it = it->second.running ? std::next(it) : states_.erase(it);
    }
}

void FetchQueue::setPolicy(const Policy& policy) {
    std::lock_guard<std::mutex> lock(mutex_);
    policy_ = policy;
}

bool FetchQueue::busy() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return std::any_of(states_.begin(), states_.end(),
                       [](const auto& entry) { return entry.second.active; });
}

bool FetchQueue::nextDue(FetchKey& key, Clock::time_point& due) const {
    bool found = false;
    for (const auto& [candidate, state] : states_) {
        if (state.active && !state.running && (!found || state.due < due)) {
            key = candidate;
            due = state.due;
            found = true;
        }
    }
    return found;
}

std::chrono::milliseconds FetchQueue::retryDelay(int failures) const {
    std::chrono::milliseconds delay = policy_.firstRetry;
    for (int i = 1; i < failures && delay < policy_.longestRetry; ++i) {
        delay *= 2;
    }
    return std::min(delay, policy_.longestRetry);
}

void FetchQueue::run() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!stopping_) {
        FetchKey key;
        Clock::time_point due;
        if (!nextDue(key, due)) {
            wake_.wait(lock);
            continue;
        }
        if (Clock::now() < due) {
            wake_.wait_until(lock, due);
            continue;
        }
        states_[key].running = true;
        const uint64_t generation = generation_;
        lock.unlock();
        const bool done = fetch_(key);
        lock.lock();
        auto found = states_.find(key);
        if (found == states_.end()) {
            continue;
        }
        State& state = found->second;
        state.running = false;
        if (done || generation != generation_) {
            states_.erase(found);
            continue;
        }
        ++state.failures;
        const Clock::time_point now = Clock::now();
        if (state.failures < policy_.attempts) {
            state.due = now + retryDelay(state.failures);
        } else {
            state.active = false;
            state.due = now + policy_.longestRetry;
        }
    }
}

}  // namespace tolvane::liveroom

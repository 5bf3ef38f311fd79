#include "liveroom/fetch_queue.h"

#include <algorithm>

#include "liveroom/serving_wait.h"

namespace tolvane::liveroom {

FetchQueue::FetchQueue(Fetch fetch) : fetch_(std::move(fetch)), worker_([this] { run(); }) {}

FetchQueue::~FetchQueue() {
    stop();
}

void FetchQueue::stop() {
    {
        std::unique_lock<std::mutex> lock(mutex_);
        stopping_ = true;
        states_.clear();
        wake_.notify_all();
        waitServingEvents(lock, wake_, [this] { return stopped_; });
    }
    if (worker_.joinable()) {
        worker_.join();
    }
}

bool FetchQueue::request(const FetchKey& key) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (stopping_) {
            return false;
        }
        const Clock::time_point now = Clock::now();
        auto found = states_.find(key);
        if (found != states_.end()) {
            State& state = found->second;
            if (state.running && runningGeneration_ != generation_) {
                // Its answer belongs to a cleared generation; fetch it again once it is in.
                const bool queued = !state.askedAgain;
                state.askedAgain = true;
                return queued;
            }
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
        if (it->second.running) {
            it->second.askedAgain = false;
            ++it;
        } else {
            it = states_.erase(it);
        }
    }
}

bool FetchQueue::current(uint64_t generation) const {
    std::lock_guard<std::mutex> lock(mutex_);
    return generation == generation_;
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
        runningGeneration_ = generation;
        lock.unlock();
        const bool done = fetch_(key, generation);
        lock.lock();
        auto found = states_.find(key);
        if (found == states_.end()) {
            continue;
        }
        State& state = found->second;
        state.running = false;
        if (generation != generation_ && state.askedAgain) {
            state = State{};
            state.due = Clock::now();
            continue;
        }
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
    stopped_ = true;
    wake_.notify_all();
}

}  // namespace tolvane::liveroom

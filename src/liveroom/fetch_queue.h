#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <tuple>

namespace tolvane::liveroom {

// What the catalogue fetches on its own thread: one gift, one prop or one resource file.
struct FetchKey {
    // The room's gift template and prop list together, ordered before anything asked for at
    // the same moment.
    enum Kind : int32_t { Tables = -1, Gift = 0, Prop = 1, Resource = 2 };
    int32_t kind = Gift;
    int32_t id = 0;     // gift or prop id, the resource table, or the room of the tables
    int32_t extra = 0;  // the gift's skin id

    bool operator<(const FetchKey& other) const {
        return std::tie(kind, id, extra) < std::tie(other.kind, other.id, other.extra);
    }
};

// A single worker thread that runs fetches one at a time. A key asked for while it waits,
// runs or waits for a retry is not queued again, however many threads ask; a failed fetch is
// retried after a growing delay, and after its last attempt the key rests until the longest
// delay has passed, so that a steady stream of requests never turns into a stream of fetches.
class FetchQueue {
public:
    // Runs on the worker thread; true when the key is done with. `generation` is the queue's
    // generation when the key was handed out: its result is still wanted while current(generation).
    using Fetch = std::function<bool(const FetchKey&, uint64_t generation)>;
    using Clock = std::chrono::steady_clock;

    struct Policy {
        std::chrono::milliseconds firstRetry{1000};  // doubled after each failure
        std::chrono::milliseconds longestRetry{60000};
        int attempts = 5;  // fetches in a row before the key rests
        // Keys kept at once; a stream naming ever new ids queues no more than this.
        std::size_t capacity = 1000;
    };

    explicit FetchQueue(Fetch fetch);
    ~FetchQueue();  // stop()s

    FetchQueue(const FetchQueue&) = delete;
    FetchQueue& operator=(const FetchQueue&) = delete;

    // True when the key was queued now; never blocks on a fetch. False also when the queue
    // holds `capacity` keys and none of the resting ones may go yet.
    bool request(const FetchKey& key);
    // Forgets every waiting and resting key; a running fetch finishes but is not retried, and a
    // key asked for again meanwhile is fetched anew once it has.
    void clear();
    // False once clear() has run since the key of that generation was handed out.
    bool current(uint64_t generation) const;
    // Ends the worker: drops every key and waits for a running fetch, while the calling thread
    // keeps serving its queued Qt calls (the fetch may be waiting for one). Later requests are
    // refused.
    void stop();
    void setPolicy(const Policy& policy);
    // True while a key waits, runs or waits for a retry.
    bool busy() const;

private:
    struct State {
        bool active = true;  // waiting, running or waiting for a retry
        bool running = false;
        bool askedAgain = false;  // asked for after a clear() while it ran
        int failures = 0;
        Clock::time_point due;
    };

    void run();
    // Forgets resting keys whose rest is over; true when any went.
    bool dropRestedKeys(Clock::time_point now);
    // The active key due first that is not running; false when there is none.
    bool nextDue(FetchKey& key, Clock::time_point& due) const;
    std::chrono::milliseconds retryDelay(int failures) const;

    Fetch fetch_;
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::map<FetchKey, State> states_;
    Policy policy_;
    uint64_t generation_ = 0;         // bumped by clear()
    uint64_t runningGeneration_ = 0;  // the generation the running key was handed out in
    bool stopping_ = false;
    bool stopped_ = false;  // the worker has left its loop
    std::thread worker_;    // last: starts once everything above exists
};

}  // namespace tolvane::liveroom

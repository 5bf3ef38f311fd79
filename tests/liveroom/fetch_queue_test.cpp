#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <mutex>
#include <thread>
#include <vector>

#include "liveroom/fetch_queue.h"
#include "support/wait.h"

namespace {

using tolvane::liveroom::FetchKey;
using tolvane::liveroom::FetchQueue;
using namespace std::chrono_literals;

FetchQueue::Policy fastPolicy(int attempts) {
    FetchQueue::Policy policy;
    policy.firstRetry = 40ms;
    policy.longestRetry = 2000ms;
    policy.attempts = attempts;
    return policy;
}

// Fetches that count themselves and run until released, so requests arrive while they run.
struct HeldFetches {
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    std::atomic<int> fetches{0};
    FetchQueue* queue = nullptr;  // when set, notes whether each answer was still wanted
    std::mutex mutex;
    std::vector<bool> wanted;
    FetchQueue::Fetch holdAll(bool result = true) {
        return [this, result](const FetchKey&, uint64_t generation) {
            ++fetches;
            released.wait();
            std::lock_guard<std::mutex> lock(mutex);
            wanted.push_back(queue != nullptr && queue->current(generation));
            return result;
        };
    }
};

TEST(FetchQueue, ManyThreadsAskingForOneKeyCauseOneFetch) {
    HeldFetches held;
    FetchQueue queue(held.holdAll());
    std::vector<std::thread> askers;
    std::atomic<int> queued{0};
    for (int t = 0; t < 4; ++t) {
        askers.emplace_back([&] {
            for (int i = 0; i < 250; ++i) {
                queued += queue.request({FetchKey::Gift, 107, 0}) ? 1 : 0;
            }
        });
    }
    for (std::thread& asker : askers) {
        asker.join();
    }
    held.release.set_value();
    ASSERT_TRUE(waitUntil([&] { return !queue.busy(); }));
    EXPECT_EQ(held.fetches.load(), 1);
    EXPECT_EQ(queued.load(), 1);
    // Done with: asking again fetches again (the caller asks only for what it still lacks).
    EXPECT_TRUE(queue.request({FetchKey::Gift, 107, 0}));
}

TEST(FetchQueue, FailuresAreRetriedLaterAndThenRest) {
    std::atomic<int> fetches{0};
    std::vector<std::chrono::steady_clock::time_point> times;
    std::mutex timesMutex;
    FetchQueue queue([&](const FetchKey&, uint64_t) {
        ++fetches;
        std::lock_guard<std::mutex> lock(timesMutex);
        times.push_back(std::chrono::steady_clock::now());
        return false;
    });
    queue.setPolicy(fastPolicy(3));
    ASSERT_TRUE(queue.request({FetchKey::Prop, 5, 0}));
    // A stream of requests during the retries and the rest adds no fetch.
    const auto end = std::chrono::steady_clock::now() + 600ms;
    while (std::chrono::steady_clock::now() < end) {
        EXPECT_FALSE(queue.request({FetchKey::Prop, 5, 0}));
        std::this_thread::sleep_for(5ms);
    }
    EXPECT_EQ(fetches.load(), 3);
    std::lock_guard<std::mutex> lock(timesMutex);
    ASSERT_EQ(times.size(), 3u);
    EXPECT_GE(times[1] - times[0], 40ms);
    EXPECT_GE(times[2] - times[1], 80ms);  // the delay doubles
}

TEST(FetchQueue, ClearDropsWaitingRetriesAndKeysQueuedBehindARunningFetch) {
    HeldFetches held;
    FetchQueue queue(held.holdAll(false));
    queue.setPolicy(fastPolicy(5));
    queue.request({FetchKey::Gift, 1, 0});
    ASSERT_TRUE(waitUntil([&] { return held.fetches.load() == 1; }));
    queue.request({FetchKey::Gift, 2, 0});
    queue.clear();
    held.release.set_value();
    ASSERT_TRUE(waitUntil([&] { return !queue.busy(); }));
    std::this_thread::sleep_for(150ms);
    EXPECT_EQ(held.fetches.load(), 1);  // neither a retry of 1 nor a fetch of 2
}

// A logout mid-fetch, then a login naming the same key: the stale answer is known as such.
TEST(FetchQueue, AKeyNamedAgainAfterAClearIsFetchedAnewOnceTheStaleFetchEnds) {
    HeldFetches held;
    FetchQueue queue(held.holdAll());
    held.queue = &queue;
    ASSERT_TRUE(queue.request({FetchKey::Gift, 7, 0}));
    ASSERT_TRUE(waitUntil([&] { return held.fetches.load() == 1; }));
    queue.clear();
    EXPECT_TRUE(queue.request({FetchKey::Gift, 7, 0}));
    EXPECT_FALSE(queue.request({FetchKey::Gift, 7, 0})) << "queued twice";
    held.release.set_value();
    ASSERT_TRUE(waitUntil([&] { return !queue.busy(); }));
    std::lock_guard<std::mutex> lock(held.mutex);
    EXPECT_EQ(held.wanted, (std::vector<bool>{false, true}));
}

TEST(FetchQueue, AStreamOfNewIdsQueuesNoMoreThanTheCapacity) {
    HeldFetches held;
    FetchQueue queue(held.holdAll());
    FetchQueue::Policy policy = fastPolicy(5);
    policy.capacity = 10;
    queue.setPolicy(policy);
    int queued = 0;
    for (int32_t id = 1; id <= 5000; ++id) {
        queued += queue.request({FetchKey::Gift, id, 0}) ? 1 : 0;
    }
    EXPECT_EQ(queued, 10);
    held.release.set_value();
    ASSERT_TRUE(waitUntil([&] { return !queue.busy(); }));
    EXPECT_EQ(held.fetches.load(), 10);
}

}  // namespace

#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "corvid/message_callbacks.h"

// Registers every callback of the table and keeps what arrives, in order, for tests.
class CallbackRecorder {
public:
    enum class Kind { Message, KeepAlive, Error, Gate, RepeaterFinished, Abort, LoginReply };
    struct Event {
        Kind kind;
        int32_t code = 0;
        std::string text = {};  // message, detail or reply
        std::string host = {};
        int32_t port = 0;
        bool failed = false;
    };
    using Events = std::vector<Event>;

    MessageCallbacks table() const {
        MessageCallbacks t;
        t.onMessage = [](const char* message, void* user) {
            self(user)->add({Kind::Message, 0, message});
        };
        t.onKeepAlive = [](void* user) {
            self(user)->add({Kind::KeepAlive});
            return self(user)->consumeKeepAlive.load();
        };
        t.onError = [](int32_t code, const char* detail, void* user) {
            self(user)->add({Kind::Error, code, detail});
        };
        t.onGateServerConnectFinished = [](int32_t code, int32_t port, int32_t, bool failed,
                                           void* user) {
            self(user)->add({Kind::Gate, code, {}, {}, port, failed});
        };
        t.onRepeaterServerConnectFinished = [](int32_t code, const char* host, int32_t port,
                                               int32_t, void* user) {
            self(user)->add({Kind::RepeaterFinished, code, {}, host, port});
        };
        t.onRepeaterServerConnectAbort = [](int32_t code, const char* details, const char* host,
                                            int32_t port, void* user) {
            self(user)->add({Kind::Abort, code, details, host, port});
        };
        t.onRepeaterServerLoginReply = [](const char* reply, void* user) {
            self(user)->add({Kind::LoginReply, 0, reply});
        };
        return t;
    }

    Events events() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return events_;
    }

    bool waitFor(const std::function<bool(const Events&)>& condition,
                 std::chrono::milliseconds timeout = std::chrono::seconds(10)) const {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, timeout, [&] { return condition(events_); });
    }

    bool waitForCount(Kind kind, std::size_t count) const {
        return waitFor([&](const Events& e) { return countOf(e, kind) >= count; });
    }

    static std::size_t countOf(const Events& events, Kind kind) {
        return static_cast<std::size_t>(std::count_if(
            events.begin(), events.end(), [kind](const Event& e) { return e.kind == kind; }));
    }

    static std::vector<Kind> kinds(const Events& events) {
        std::vector<Kind> out;
        for (const Event& e : events) {
            if (e.kind != Kind::Message && e.kind != Kind::KeepAlive) {
                out.push_back(e.kind);
            }
        }
        return out;
    }

    std::atomic<bool> consumeKeepAlive{false};
    // Set by a test once a callback must no longer arrive; any later one is counted.
    std::atomic<bool> closed{false};
    std::atomic<int> lateCalls{0};
    // Stretches every callback so that an unregistering caller really has to wait for it.
    std::atomic<int> callbackDelayMs{0};

private:
    static CallbackRecorder* self(void* user) { return static_cast<CallbackRecorder*>(user); }

    void add(Event event) {
        if (closed) {
            ++lateCalls;
        }
        if (const int delay = callbackDelayMs.load()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(delay));
        }
        {
            std::lock_guard<std::mutex> lock(mutex_);
            events_.push_back(std::move(event));
        }
        changed_.notify_all();
    }

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    Events events_;
};

#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "corvid/message_callbacks.h"

namespace corvid {

// The registered callbacks of one client. A callback runs on a copy of the table, never under
// a lock, so a user's callback may block on anything, even on a thread that is registering
// anew. A new registration (or close) waits until no callback of the old table runs on another
// thread, and none starts after it; a callback may re-register or close from inside itself
// without waiting for itself.
//
// Every received message is a callback, so starting one takes no lock: it counts itself in,
// then reads the current registration; a registration publishes the new one, then waits for
// the count to drain before it frees the old. With both orders sequentially consistent, a
// call either reads the new registration or is counted.
class CallbackTable {
public:
    CallbackTable();
    ~CallbackTable();
    CallbackTable(const CallbackTable&) = delete;
    CallbackTable& operator=(const CallbackTable&) = delete;

    // False for a table whose size field is not 96; a null or all-null table unregisters.
    bool set(const MessageCallbacks* table, void* userData);
    // Unregisters for good: later set() calls are refused.
    void close();

    void message(const char* text);
    // True when the keep-alive callback consumed the answer.
    bool keepAlive();
    void error(int32_t code, const char* detail);
    void gateServerConnectFinished(int32_t code, int32_t port, int32_t elapsedMs, bool failed);
    void repeaterServerConnectFinished(int32_t code, const char* host, int32_t port,
                                       int32_t elapsedMs);
    void repeaterServerConnectAbort(int32_t code, const char* details, const char* host,
                                    int32_t port);
    void repeaterServerLoginReply(const char* reply);

private:
    class Call;
    struct Registration {
        MessageCallbacks table{};
        void* userData = nullptr;
    };

    // Publishes the table, then waits for the callbacks of the old one running elsewhere.
    bool replace(const MessageCallbacks& table, void* userData, bool closing);

    std::mutex mutex_;  // orders registrations; callbacks never take it
    bool closed_ = false;
    std::atomic<const Registration*> current_;
    std::atomic<int> running_{0};  // callbacks under way, on any thread
};

}  // namespace corvid

#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "corvid/message_callbacks.h"

namespace corvid {

// The registered callbacks of one client. A callback runs on a copy of the table taken under
// the lock, never under the lock itself, so a user's callback may block on anything, even on
// a thread that is registering anew. A new registration (or close) waits until no callback of
// the old table runs on another thread, and none starts after it; a callback may re-register
// or close from inside itself without waiting for itself.
class CallbackTable {
public:
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

    // Swaps the table in, then waits for the callbacks of the old one running elsewhere.
    bool replace(const MessageCallbacks& table, void* userData, bool closing);

    std::mutex mutex_;
    std::condition_variable idle_;
    MessageCallbacks table_{};
    void* userData_ = nullptr;
    bool closed_ = false;
    int running_ = 0;  // callbacks under way, on any thread
};

}  // namespace corvid

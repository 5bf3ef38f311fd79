#pragma once

#include <cstdint>
#include <mutex>

#include "corvid/message_callbacks.h"

namespace corvid {

// The registered callbacks of one client. Every call goes through the table's lock, so a
// new registration (or close) waits for a running callback and no callback of the old table
// starts after it. The lock is recursive because a callback may itself re-register.
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
    std::recursive_mutex mutex_;
    MessageCallbacks table_{};
    void* userData_ = nullptr;
    bool closed_ = false;
};

}  // namespace corvid

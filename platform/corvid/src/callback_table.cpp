#include "callback_table.h"

namespace corvid {

bool CallbackTable::set(const MessageCallbacks* table, void* userData) {
    if (table != nullptr && table->size != sizeof(MessageCallbacks)) {
        return false;
    }
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    if (closed_) {
        return false;
    }
    table_ = table != nullptr ? *table : MessageCallbacks{};
    // The unused fields are never called, whatever a caller left in them.
    table_.unused32 = table_.unused40 = table_.unused64 = table_.unused72 = nullptr;
    userData_ = userData;
    return true;
}

void CallbackTable::close() {
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    table_ = MessageCallbacks{};
    userData_ = nullptr;
    closed_ = true;
}

void CallbackTable::message(const char* text) {
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    if (table_.onMessage != nullptr) {
        table_.onMessage(text, userData_);
    }
}

bool CallbackTable::keepAlive() {
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    return table_.onKeepAlive != nullptr && table_.onKeepAlive(userData_);
}

void CallbackTable::error(int32_t code, const char* detail) {
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    if (table_.onError != nullptr) {
        table_.onError(code, detail, userData_);
    }
}

void CallbackTable::gateServerConnectFinished(int32_t code, int32_t port, int32_t elapsedMs,
                                              bool failed) {
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    if (table_.onGateServerConnectFinished != nullptr) {
        table_.onGateServerConnectFinished(code, port, elapsedMs, failed, userData_);
    }
}

void CallbackTable::repeaterServerConnectFinished(int32_t code, const char* host, int32_t port,
                                                  int32_t elapsedMs) {
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    if (table_.onRepeaterServerConnectFinished != nullptr) {
        table_.onRepeaterServerConnectFinished(code, host, port, elapsedMs, userData_);
    }
}

void CallbackTable::repeaterServerConnectAbort(int32_t code, const char* details, const char* host,
                                               int32_t port) {
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    if (table_.onRepeaterServerConnectAbort != nullptr) {
        table_.onRepeaterServerConnectAbort(code, details, host, port, userData_);
    }
}

void CallbackTable::repeaterServerLoginReply(const char* reply) {
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    if (table_.onRepeaterServerLoginReply != nullptr) {
        table_.onRepeaterServerLoginReply(reply, userData_);
    }
}

}  // namespace corvid

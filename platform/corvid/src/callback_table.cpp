#include "callback_table.h"

namespace corvid {

namespace {

// The callbacks under way on this thread, innermost first: a thread that re-registers from
// inside a callback must not wait for itself.
struct Frame {
    const CallbackTable* table;
    const Frame* outer;
};
thread_local const Frame* tlFrames = nullptr;

int depthOnThisThread(const CallbackTable* table) {
    int depth = 0;
    for (const Frame* frame = tlFrames; frame != nullptr; frame = frame->outer) {
        depth += frame->table == table ? 1 : 0;
    }
    return depth;
}

}  // namespace

// One callback under way: holds a copy of the table, counted as running until it ends.
class CallbackTable::Call {
public:
    explicit Call(CallbackTable& owner) : owner_(owner), frame_{&owner, tlFrames} {
        std::lock_guard<std::mutex> lock(owner_.mutex_);
        table = owner_.table_;
        userData = owner_.userData_;
        ++owner_.running_;
        tlFrames = &frame_;
    }
    ~Call() {
        tlFrames = frame_.outer;
        std::lock_guard<std::mutex> lock(owner_.mutex_);
        if (--owner_.running_ == 0) {
            owner_.idle_.notify_all();
        }
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    MessageCallbacks table;
    void* userData = nullptr;

private:
    CallbackTable& owner_;
    const Frame frame_;
};

bool CallbackTable::set(const MessageCallbacks* table, void* userData) {
    if (table != nullptr && table->size != sizeof(MessageCallbacks)) {
        return false;
    }
    return replace(table != nullptr ? *table : MessageCallbacks{}, userData, false);
}

void CallbackTable::close() {
    replace(MessageCallbacks{}, nullptr, true);
}

bool CallbackTable::replace(const MessageCallbacks& table, void* userData, bool closing) {
    const int own = depthOnThisThread(this);
    std::unique_lock<std::mutex> lock(mutex_);
    if (closed_) {
        return closing;
    }
    table_ = table;
    // The unused fields are never called, whatever a caller left in them.
    table_.unused32 = table_.unused40 = table_.unused64 = table_.unused72 = nullptr;
    userData_ = userData;
    closed_ = closing;
    idle_.wait(lock, [&] { return running_ == own; });
    return true;
}

void CallbackTable::message(const char* text) {
    const Call call(*this);
    if (call.table.onMessage != nullptr) {
        call.table.onMessage(text, call.userData);
    }
}

bool CallbackTable::keepAlive() {
    const Call call(*this);
    return call.table.onKeepAlive != nullptr && call.table.onKeepAlive(call.userData);
}

void CallbackTable::error(int32_t code, const char* detail) {
    const Call call(*this);
    if (call.table.onError != nullptr) {
        call.table.onError(code, detail, call.userData);
    }
}

void CallbackTable::gateServerConnectFinished(int32_t code, int32_t port, int32_t elapsedMs,
                                              bool failed) {
    const Call call(*this);
    if (call.table.onGateServerConnectFinished != nullptr) {
        call.table.onGateServerConnectFinished(code, port, elapsedMs, failed, call.userData);
    }
}

void CallbackTable::repeaterServerConnectFinished(int32_t code, const char* host, int32_t port,
                                                  int32_t elapsedMs) {
    const Call call(*this);
    if (call.table.onRepeaterServerConnectFinished != nullptr) {
        call.table.onRepeaterServerConnectFinished(code, host, port, elapsedMs, call.userData);
    }
}

void CallbackTable::repeaterServerConnectAbort(int32_t code, const char* details, const char* host,
                                               int32_t port) {
    const Call call(*this);
    if (call.table.onRepeaterServerConnectAbort != nullptr) {
        call.table.onRepeaterServerConnectAbort(code, details, host, port, call.userData);
    }
}

void CallbackTable::repeaterServerLoginReply(const char* reply) {
    const Call call(*this);
    if (call.table.onRepeaterServerLoginReply != nullptr) {
        call.table.onRepeaterServerLoginReply(reply, call.userData);
    }
}

}  // namespace corvid

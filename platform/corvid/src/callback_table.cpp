#include "callback_table.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>

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

// How long a registration sleeps between two looks at the callbacks under way, at first and
// at most: most end within microseconds, and registrations are rare.
constexpr std::chrono::microseconds kFirstPollInterval(50);
constexpr std::chrono::microseconds kPollInterval(2000);

// One callback under way: holds a copy of the table, counted as running until it ends.
class CallbackTable::Call {
public:
    explicit Call(CallbackTable& owner) : owner_(owner), frame_{&owner, tlFrames} {
        owner_.running_.fetch_add(1);
        const Registration& current = *owner_.current_.load();
        table = current.table;
        userData = current.userData;
        tlFrames = &frame_;
    }
    ~Call() {
        tlFrames = frame_.outer;
        owner_.running_.fetch_sub(1);
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    MessageCallbacks table;
    void* userData = nullptr;

private:
    CallbackTable& owner_;
    const Frame frame_;
};

CallbackTable::CallbackTable() : current_(new Registration) {}

CallbackTable::~CallbackTable() {
    delete current_.load();
}

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
    auto next = std::make_unique<Registration>();
    next->table = table;
    // The unused fields are never called, whatever a caller left in them.
    next->table.unused32 = next->table.unused40 = next->table.unused64 = next->table.unused72 =
        nullptr;
    next->userData = userData;
    std::unique_ptr<const Registration> old;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (closed_) {
            return closing;
        }
        closed_ = closing;
        old.reset(current_.exchange(next.release()));
    }
    // A call that read the old registration is counted until it ends; the calls of this
    // thread have their copies already.
    std::chrono::microseconds interval = kFirstPollInterval;
    while (running_.load() > own) {
        std::this_thread::sleep_for(interval);
        interval = std::min(interval * 2, kPollInterval);
    }
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

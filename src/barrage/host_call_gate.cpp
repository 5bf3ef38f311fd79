#include "barrage/host_call_gate.h"

#include <QCoreApplication>
#include <QEvent>
#include <chrono>

namespace tolvane::barrage {

namespace {

// The passes held on this thread, innermost first.
thread_local const HostCallGate::Pass* tlPasses = nullptr;

// How long the closing thread sleeps between two rounds of queued calls: a host call blocked
// on this thread waits at most this long for its answer.
constexpr std::chrono::milliseconds kServeInterval(2);

}  // namespace

HostCallGate::Pass::Pass(HostCallGate& gate) : gate_(gate), outer_(tlPasses) {
    std::lock_guard<std::mutex> lock(gate_.mutex_);
    if (gate_.open_) {
        admitted_ = true;
        ++gate_.inside_;
        tlPasses = this;
    }
}

HostCallGate::Pass::~Pass() {
    if (!admitted_) {
        return;
    }
    tlPasses = outer_;
    std::lock_guard<std::mutex> lock(gate_.mutex_);
    if (--gate_.inside_ == 0) {
        gate_.idle_.notify_all();
    }
}

void HostCallGate::open() {
    std::lock_guard<std::mutex> lock(mutex_);
    open_ = true;
}

void HostCallGate::close() {
    int own = 0;
    for (const Pass* pass = tlPasses; pass != nullptr; pass = pass->outer_) {
        own += &pass->gate_ == this ? 1 : 0;
    }
    std::unique_lock<std::mutex> lock(mutex_);
    open_ = false;
    while (inside_ > own) {
        lock.unlock();
        // Only queued calls: timers, sockets and other posted events keep waiting, so no
        // unrelated work of this thread runs inside the caller's operation.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
        lock.lock();
        idle_.wait_for(lock, kServeInterval, [&] { return inside_ <= own; });
    }
}

}  // namespace tolvane::barrage

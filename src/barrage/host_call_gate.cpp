#include "barrage/host_call_gate.h"

#include <QCoreApplication>
#include <QEvent>
#include <algorithm>
#include <chrono>
#include <thread>

namespace tolvane::barrage {

namespace {

// The passes held on this thread, innermost first.
thread_local const HostCallGate::Pass* tlPasses = nullptr;

// How long the closing thread sleeps between two rounds of queued calls, at first and at
// most: a call inside usually leaves within microseconds, and one blocked on this thread
// waits at most the longer interval for its answer.
constexpr std::chrono::microseconds kFirstServeInterval(50);
constexpr std::chrono::microseconds kServeInterval(2000);

}  // namespace

HostCallGate::Pass::Pass(HostCallGate& gate) : gate_(gate), outer_(tlPasses) {
    gate_.inside_.fetch_add(1);
    if (!gate_.open_.load()) {
        gate_.inside_.fetch_sub(1);  // the last touch of the gate: it may go once close() sees it
        return;
    }
    admitted_ = true;
    tlPasses = this;
}

HostCallGate::Pass::~Pass() {
    if (!admitted_) {
        return;
    }
    tlPasses = outer_;
    // Nothing of the gate is touched after this: close() may return and its owner go on.
    gate_.inside_.fetch_sub(1);
}

void HostCallGate::open() {
    open_.store(true);
}

void HostCallGate::close() {
    int own = 0;
    for (const Pass* pass = tlPasses; pass != nullptr; pass = pass->outer_) {
        own += &pass->gate_ == this ? 1 : 0;
    }
    open_.store(false);
    std::chrono::microseconds interval = kFirstServeInterval;
    while (inside_.load() > own) {
        // Only queued calls: timers, sockets and other posted events keep waiting, so no
        // unrelated work of this thread runs inside the caller's operation.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
        std::this_thread::sleep_for(interval);
        interval = std::min(interval * 2, kServeInterval);
    }
}

}  // namespace tolvane::barrage

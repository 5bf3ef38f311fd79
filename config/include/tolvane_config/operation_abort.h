#pragma once

#include <atomic>

class QEventLoop;
class QTimer;

namespace tolvane::net {

// The abort flag that the owner of the calling thread may have put on it (see
// tolvane/operation_abort.h), looked up once when a transfer starts. The module's clients and
// the login library share it, so that every transfer on that thread can be abandoned.
class OperationAbort {
public:
    OperationAbort();

    // Whether the thread carries a flag at all, so that callers know it is worth polling.
    bool watched() const { return flag_ != nullptr; }
    bool requested() const { return flag_ != nullptr && flag_->load(); }

    // Nothing signals the flag, so a wait looks at it every 20 ms through `check`, a timer the
    // caller owns, and quits `loop` once it is raised. Does nothing on a thread without a flag.
    void quitOnRequest(QEventLoop& loop, QTimer& check) const;

private:
    const std::atomic<bool>* flag_ = nullptr;
};

}  // namespace tolvane::net

#pragma once

#include <atomic>

namespace tolvane::net {

// The abort flag that the owner of the calling thread may have put on it (see
// tolvane/operation_abort.h), looked up once when a transfer starts.
class OperationAbort {
public:
    OperationAbort();

    // Whether the thread carries a flag at all, so that callers know it is worth polling.
    bool watched() const { return flag_ != nullptr; }
    bool requested() const { return flag_ != nullptr && flag_->load(); }

private:
    const std::atomic<bool>* flag_ = nullptr;
};

}  // namespace tolvane::net

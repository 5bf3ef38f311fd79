#pragma once

#include <atomic>

namespace tolvane::barrage {

// Lets the message library's threads into host code only while open. Closing waits for the
// calls already inside, and meanwhile delivers the queued calls posted to the closing thread,
// because a host callback may be blocked on exactly such a call (a blocking queued connection
// to the thread that is closing). A call inside the gate on the closing thread itself is not
// waited for.
//
// Every received message passes, so a pass costs two atomic operations and no lock. The gate
// must outlive every pass: its owner closes it and then unregisters from the message library,
// which waits for the callbacks still running, before the gate can go.
class HostCallGate {
public:
    // Held for the length of one call into host code; false when the gate was closed.
    class Pass {
    public:
        explicit Pass(HostCallGate& gate);
        ~Pass();
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;
        explicit operator bool() const { return admitted_; }

    private:
        friend class HostCallGate;
        HostCallGate& gate_;
        bool admitted_ = false;
        const Pass* outer_ = nullptr;
    };

    void open();
    // Returns once no call admitted before is still inside on another thread.
    void close();

private:
    // A pass counts itself in, then looks at open_; close() clears open_, then counts. With
    // both orders sequentially consistent, either the pass sees the gate closed or close()
    // sees the pass.
    std::atomic<bool> open_{false};
    std::atomic<int> inside_{0};
};

}  // namespace tolvane::barrage

#pragma once

namespace tolvane {

// A host that runs the service on a thread of its own (as AsyncNetService does) can abort the
// operation running there. It sets this dynamic property on that thread's QThread object, from
// that thread and before the first operation, to a `void*` pointing at a std::atomic<bool> that
// outlives the thread. While the flag is true, every HTTP transfer the module runs on that
// thread ends within a few tens of milliseconds, and one that would start fails at once, each
// as a transfer without an answer (result 210 where the operation has one). The host clears the
// flag before the next operation. Without the property nothing changes.
inline constexpr char kOperationAbortProperty[] = "tolvane.operationAbort";

}  // namespace tolvane

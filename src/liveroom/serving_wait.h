#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>

namespace tolvane::liveroom {

// Waits on `changed` until `done()` holds, with `lock` held around each check. A thread that runs
// a Qt event loop keeps serving its queued calls meanwhile, because what it waits for may itself
// be waiting for one of them (a host callback with a blocking queued connection to this thread).
void waitServingEvents(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
                       const std::function<bool()>& done);

}  // namespace tolvane::liveroom

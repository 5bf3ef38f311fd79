#include "liveroom/serving_wait.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <chrono>

namespace tolvane::liveroom {

void waitServingEvents(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
                       const std::function<bool()>& done) {
    if (QAbstractEventDispatcher::instance() == nullptr) {
        // No event loop on this thread, so nothing can be waiting for it to turn.
        changed.wait(lock, done);
        return;
    }
    while (!changed.wait_for(lock, std::chrono::milliseconds(2), done)) {
        lock.unlock();
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        lock.lock();
    }
}

}  // namespace tolvane::liveroom

#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QThread>
#include <chrono>
#include <condition_variable>
#include <mutex>

// A GUI host's blocking queued hand-over of a callback to this object's thread, through locks
// that ThreadSanitizer sees (Qt's own semaphore is invisible to it).
class BlockingHandOver : public QObject {
public:
    // Returns once the owner thread has served the call; on that thread itself, at once.
    void handOver() {
        if (QThread::currentThread() == thread()) {
            return;
        }
        std::unique_lock<std::mutex> lock(mutex_);
        const int ticket = ++asked_;
        ++waiting_;
        changed_.notify_all();
        // Typed as a queued call, since a service that waits for its host serves only those.
        QCoreApplication::postEvent(this, new QEvent(QEvent::MetaCall));
        changed_.wait(lock, [&] { return answered_ >= ticket; });
        --waiting_;
    }
    // Waits without serving the owner thread's events, as a busy GUI thread would.
    bool waitUntilWaiting(std::chrono::milliseconds limit = std::chrono::seconds(5)) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, limit, [this] { return waiting_ > 0; });
    }
    // How many callbacks wait for the owner thread right now.
    int waiting() {
        std::lock_guard<std::mutex> lock(mutex_);
        return waiting_;
    }

protected:
    // Every event here is a hand-over; reading the event itself would race with its allocation
    // on the waiting thread as ThreadSanitizer sees it.
    bool event(QEvent*) override {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            ++answered_;
        }
        changed_.notify_all();
        return true;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int asked_ = 0;
    int answered_ = 0;
    int waiting_ = 0;
};

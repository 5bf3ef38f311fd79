#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QTimer>
#include <cstdio>

#ifdef __linux__
#include <fcntl.h>
#include <unistd.h>
#endif

// Ticks every few milliseconds on the GUI thread; the longest gap between two ticks is the
// longest time anything held the event loop, and the step during which it happened. Time the
// thread spent ready but waiting for a CPU is left out, so that a busy machine does not read as
// a held loop; time spent blocked in a call still counts.
class EventLoopWatchdog {
public:
    static constexpr int kTickMs = 5;

    EventLoopWatchdog() {
        timer_.setTimerType(Qt::PreciseTimer);
        timer_.setInterval(kTickMs);
        QObject::connect(&timer_, &QTimer::timeout, [this] { tick(); });
    }
    ~EventLoopWatchdog() {
#ifdef __linux__
        if (schedstat_ >= 0) {
            close(schedstat_);
        }
#endif
    }
    EventLoopWatchdog(const EventLoopWatchdog&) = delete;
    EventLoopWatchdog& operator=(const EventLoopWatchdog&) = delete;

    // Called on the GUI thread.
    void start(const QString& step) {
#ifdef __linux__
        schedstat_ = open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC);
#endif
        step_ = step;
        lastWaitNs_ = runQueueWaitNs();
        clock_.start();
        timer_.start();
    }
    void setStep(const QString& step) {
        step_ = step;
    }
    // Forgets the time since the last tick: for work the test itself does on the GUI thread.
    void skipGap() {
        clock_.restart();
        lastWaitNs_ = runQueueWaitNs();
    }

    qint64 worstGapMs() const {
        return worst_;
    }
    QString worstStep() const {
        return worstStep_;
    }

private:
    void tick() {
        const qint64 waitNs = runQueueWaitNs();
        const qint64 gap = clock_.restart() - (waitNs - lastWaitNs_) / 1000000;
        lastWaitNs_ = waitNs;
        if (gap > worst_) {
            worst_ = gap;
            worstStep_ = step_;
        }
    }

    // The thread's time spent runnable but not running, from the scheduler's statistics.
    qint64 runQueueWaitNs() const {
#ifdef __linux__
        char text[96] = {};
        long long onCpu = 0, waiting = 0;
        if (schedstat_ >= 0 && pread(schedstat_, text, sizeof text - 1, 0) > 0 &&
            std::sscanf(text, "%lld %lld", &onCpu, &waiting) == 2) {
            return waiting;
        }
#endif
        return 0;
    }

    QTimer timer_;
    QElapsedTimer clock_;
    QString step_;
    QString worstStep_;
    qint64 worst_ = 0;
    qint64 lastWaitNs_ = 0;
    int schedstat_ = -1;
};

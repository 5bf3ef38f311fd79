#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QTimer>

// Ticks every few milliseconds on the GUI thread; the longest gap between two ticks is the
// longest time anything held the event loop, and the step during which it happened.
class EventLoopWatchdog {
public:
    static constexpr int kTickMs = 5;

    EventLoopWatchdog() {
        timer_.setTimerType(Qt::PreciseTimer);
        timer_.setInterval(kTickMs);
        QObject::connect(&timer_, &QTimer::timeout, [this] { tick(); });
    }

    void start(const QString& step) {
        step_ = step;
        clock_.start();
        timer_.start();
    }
    void setStep(const QString& step) { step_ = step; }
    // Forgets the time since the last tick: for work the test itself does on the GUI thread.
    void skipGap() { clock_.restart(); }

    qint64 worstGapMs() const { return worst_; }
    QString worstStep() const { return worstStep_; }

private:
    void tick() {
        const qint64 gap = clock_.restart();
        if (gap > worst_) {
            worst_ = gap;
            worstStep_ = step_;
        }
    }

    QTimer timer_;
    QElapsedTimer clock_;
    QString step_;
    QString worstStep_;
    qint64 worst_ = 0;
};

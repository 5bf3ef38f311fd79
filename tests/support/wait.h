#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>
#include <functional>

// Runs the test thread's event loop until the condition holds or the time runs out.
inline bool waitUntil(const std::function<bool()>& condition, int timeoutMs = 3000) {
    const QDeadlineTimer deadline(timeoutMs);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::msleep(1);
    }
    return true;
}

// Runs the event loop for a while, for checks that something does not happen.
inline void spinEvents(int durationMs) {
    waitUntil([] { return false; }, durationMs);
}

#pragma once

#include <QMutex>
#include <QTextStream>
#include <atomic>
#include <map>
#include <string>

#include "tolvane/breadcrumb.h"
#include "tolvane/service_observer.h"

// The host's side of the callbacks: prints what the module reports. Barrage events arrive
// on the module's threads, so output is serialised.
class PrintingObserver : public ServiceObserver, public BreadcrumbSink {
public:
    explicit PrintingObserver(QTextStream& out) : out_(out) {}
    virtual ~PrintingObserver() = default;

    void onRoomStatus(int32_t status) override;
    void onText(const std::string& text) override;
    void onShowEnd(int32_t reason, float banHours) override;
    void onBarrageMessage(const BarrageMessage* message) override;
    void onBreadcrumb(const VxBreadcrumb<VxBreadcrumb_Http>& crumb) override;

    void setVerboseBreadcrumbs(bool verbose) { verboseBreadcrumbs_ = verbose; }
    int breadcrumbCount() const { return breadcrumbs_.load(); }
    int messageCount() const { return messages_.load(); }
    int lastRoomStatus() const { return lastStatus_.load(); }
    int showEndCount() const { return showEnds_.load(); }
    // Messages that were not printed as lines, counted by type, as "dayrk 3, weekrk 2".
    QString summary();

private:
    QTextStream& out_;
    QMutex mutex_;
    std::atomic<int> breadcrumbs_{0};
    std::atomic<int> messages_{0};
    std::atomic<int> lastStatus_{-1};
    std::atomic<int> showEnds_{0};
    std::map<std::string, int> counted_;  // guarded by mutex_
    bool verboseBreadcrumbs_ = false;
};

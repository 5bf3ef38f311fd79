#pragma once

#include <QMutex>
#include <QStringList>
#include <QTextStream>
#include <atomic>
#include <map>
#include <string>
#include <vector>

#include "tolvane/breadcrumb.h"
#include "tolvane/i_vx_live_room_info.h"
#include "tolvane/service_observer.h"

// The host's side of the callbacks: prints what the module reports. Barrage events arrive
// on the module's threads, so output is serialised. Gifts and props are printed by name from
// the module's catalogue; one the catalogue does not know yet is held back until the catalogue
// reports that it has fetched it.
class PrintingObserver : public ServiceObserver, public BreadcrumbSink, public IVxDataSubject {
public:
    explicit PrintingObserver(QTextStream& out) : out_(out) {}
    virtual ~PrintingObserver() = default;

    void onRoomStatus(int32_t status) override;
    void onText(const std::string& text) override;
    void onShowEnd(int32_t reason, float banHours) override;
    void onBarrageMessage(const BarrageMessage* message) override;
    void onBreadcrumb(const VxBreadcrumb<VxBreadcrumb_Http>& crumb) override;
    void onTableChanged(VxCatalogueTable table) override;
    void onRoomChanged(int32_t roomId) override {}

    // Registers with the service's catalogue; null unregisters (before the service goes).
    // Not to be called from one of the observer's own callbacks.
    void setCatalogue(IVxLiveRoomInfo* catalogue);
    // Prints the gifts still waiting for a name, by id, and forgets them.
    void flushUnnamedGifts();
    // Names of the items that were printed only after the catalogue fetched them.
    QStringList namedLater();

    void setVerboseBreadcrumbs(bool verbose) { verboseBreadcrumbs_ = verbose; }
    int breadcrumbCount() const { return breadcrumbs_.load(); }
    int messageCount() const { return messages_.load(); }
    int lastRoomStatus() const { return lastStatus_.load(); }
    int showEndCount() const { return showEnds_.load(); }
    // Messages that were not printed as lines, counted by type, as "dayrk 3, weekrk 2".
    QString summary();

private:
    struct HeldGift {
        bool isProp;
        int32_t id;
        QString sender;
        QString count;
    };
    // Under mutex_: the item's name, or empty when the catalogue does not know it.
    QString itemName(bool isProp, int32_t id) const;
    void printGift(const HeldGift& gift, const QString& name, bool late);

    QTextStream& out_;
    QMutex mutex_;
    std::atomic<int> breadcrumbs_{0};
    std::atomic<int> messages_{0};
    std::atomic<int> lastStatus_{-1};
    std::atomic<int> showEnds_{0};
    std::map<std::string, int> counted_;  // guarded by mutex_
    bool verboseBreadcrumbs_ = false;
    std::atomic<IVxLiveRoomInfo*> catalogue_{nullptr};
    std::vector<HeldGift> held_;  // guarded by mutex_
    QStringList namedLater_;      // guarded by mutex_
};

// The gift catalogue as the anchor's gift panel shows it, and a gift sent from the panel.
#include <QStringList>

#include "barrage/barrage_server.h"
#include "catalogue_resources.h"
#include "demo_road.h"
#include "platform/sim_platform.h"
#include "printing_observer.h"
#include "tolvane/i_vx_live_room_info.h"

namespace {

QString text(const std::string& value) {
    return QString::fromStdString(value);
}

}  // namespace

void DemoRoad::showGiftCatalogue() {
    IVxLiveRoomInfo* catalogue = service_.getLiveRoomInfo();
    if (!expect(QStringLiteral("getLiveRoomInfo"), catalogue != nullptr,
                QStringLiteral("the catalogue"))) {
        return;
    }
    // The room start-up loads the tables on the catalogue's own thread, as a gift panel would
    // wait for its observer's call.
    runEvents(kCatalogueResourceWaitMs,
              [catalogue] { return !catalogue->gifts().empty() && !catalogue->props().empty(); });
    QStringList gifts;
    for (const VxGiftRecord& gift : catalogue->gifts()) {
        gifts << QStringLiteral("%1 %2").arg(text(gift.name)).arg(gift.price);
    }
    expect(QStringLiteral("gift template"), !gifts.isEmpty(),
           QStringLiteral("room %1: %2; %3 skins")
               .arg(catalogue->roomId())
               .arg(gifts.join(QStringLiteral(", ")))
               .arg(catalogue->giftSkins().size()));
    QStringList props;
    for (const VxPropRecord& prop : catalogue->props()) {
        props << QStringLiteral("%1 %2").arg(text(prop.name)).arg(prop.price);
    }
    expect(QStringLiteral("prop list"), !props.isEmpty(), props.join(QStringLiteral(", ")));

    const bool loaded = runEvents(kCatalogueResourceWaitMs,
                                  [catalogue] { return catalogueResourcesLoaded(*catalogue); });
    QStringList counts;
    for (const CatalogueResource& resource : kCatalogueResources) {
        counts << QStringLiteral("%1 %2")
                      .arg(QLatin1String(resource.name))
                      .arg(catalogue->resources(resource.table).size());
    }
    expect(QStringLiteral("resource files"), loaded, counts.join(QStringLiteral(", ")));
}

void DemoRoad::sendGift() {
    IVxLiveRoomInfo* catalogue = service_.getLiveRoomInfo();
    const std::vector<VxGiftRecord> gifts = catalogue->gifts();
    if (gifts.empty()) {
        return;
    }
    const VxGiftRecord& gift = gifts.back();
    constexpr int32_t kCount = 2;
    const int32_t value = catalogue->resolveSendValue(gift.id, kVxSendGift, kCount);
    service_.barrageLoginCall(gift.id, kVxSendGift, kCount);
    // What the barrage server received, as the platform would bill it.
    const bool received = runEvents(2000, [this] {
        for (int i = 0; i < sim_.barrageServerCount(); ++i) {
            for (const auto& connection : sim_.barrageServer(i).connections()) {
                if (!connection.gifts.empty()) {
                    return true;
                }
            }
        }
        return false;
    });
    expect(QStringLiteral("barrageLoginCall"), received,
           QStringLiteral("%1 \u00d7 %2, value %3").arg(kCount).arg(text(gift.name)).arg(value));
}

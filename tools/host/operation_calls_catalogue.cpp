// `tolvane-host call` entries for the gift and resource catalogue: loading it, listing it and
// sending a gift from it.
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QThread>

#include "call_arguments.h"
#include "catalogue_resources.h"
#include "tolvane/i_vx_live_room_info.h"

namespace host_calls {

namespace {

void waitForResources(const IVxLiveRoomInfo& catalogue) {
    QElapsedTimer clock;
    clock.start();
    while (catalogue.roomId() != -1 && !catalogueResourcesLoaded(catalogue) &&
           clock.elapsed() < kCatalogueResourceWaitMs) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(5);
    }
}

QJsonObject catalogueObject(const IVxLiveRoomInfo& catalogue) {
    QJsonArray gifts;
    for (const VxGiftRecord& gift : catalogue.gifts()) {
        QJsonArray skins;
        for (const int32_t skin : gift.skinIds) {
            skins.append(skin);
        }
        gifts.append(QJsonObject{{"id", gift.id},
                                 {"name", text(gift.name)},
                                 {"price", gift.price},
                                 {"icon", text(gift.icon)},
                                 {"skins", skins}});
    }
    QJsonArray skins;
    for (const VxGiftSkinRecord& skin : catalogue.giftSkins()) {
        skins.append(QJsonObject{{"id", skin.id},
                                 {"giftId", skin.giftId},
                                 {"name", text(skin.name)},
                                 {"icon", text(skin.icon)}});
    }
    QJsonArray props;
    for (const VxPropRecord& prop : catalogue.props()) {
        props.append(QJsonObject{{"id", prop.id},
                                 {"name", text(prop.name)},
                                 {"price", prop.price},
                                 {"icon", text(prop.icon)}});
    }
    QJsonObject resources;
    for (const CatalogueResource& resource : kCatalogueResources) {
        QJsonArray records;
        for (const VxResourceRecord& record : catalogue.resources(resource.table)) {
            records.append(QJsonObject{
                {"id", record.id}, {"name", text(record.name)}, {"icon", text(record.icon)}});
        }
        resources.insert(QLatin1String(resource.key), records);
    }
    return {{"roomId", catalogue.roomId()},
            {"anchorLevel", catalogue.anchorLevel()},
            {"vipId", catalogue.vipId()},
            {"currentUserId", catalogue.currentUserId()},
            {"clientVersion", text(catalogue.clientVersion())},
            {"gifts", gifts},
            {"giftSkins", skins},
            {"props", props},
            {"resources", resources}};
}

}  // namespace

void addCatalogueCalls(const AddCall& add) {
    using S = ILiveencoderNetService;
    using A = const QStringList&;

    add("loadGiftTables", "", [](S& s, A) { return resultOnly(s.loadGiftTables()); });
    add("getLiveRoomInfo", "", [](S& s, A) {
        IVxLiveRoomInfo* catalogue = s.getLiveRoomInfo();
        if (catalogue == nullptr) {
            return resultOnly(QJsonValue());
        }
        waitForResources(*catalogue);
        return withOutputs(true, catalogueObject(*catalogue));
    });
    add("barrageLoginCall", "ID KIND(1 gift, 2 prop) COUNT", [](S& s, A a) {
        // The value the slot sends, looked up the same way before it goes.
        IVxLiveRoomInfo* catalogue = s.getLiveRoomInfo();
        const int32_t value = catalogue != nullptr ? catalogue->resolveSendValue(
                                                         intArg(a, 0), intArg(a, 1), intArg(a, 2))
                                                   : 0;
        s.barrageLoginCall(intArg(a, 0), intArg(a, 1), intArg(a, 2));
        return withOutputs(QJsonValue(), {{"value", value}});
    });
}

}  // namespace host_calls

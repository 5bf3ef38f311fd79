// The service's operations on the gift and resource catalogue: loading it for the room, and
// handing it to the host.
#include "liveroom/catalogue_parsers.h"
#include "liveroom/catalogue_rows.h"
#include "liveroom/vx_live_room_info.h"
#include "parse/data_parser.h"
#include "service/vx_net_service_imp.h"

namespace {
constexpr int32_t kNoRoom = -1;
}  // namespace

// slot 49
int32_t VxNetServiceImp::loadGiftTables() {
    logBanner("loadGiftTables");
    const int32_t roomId = parser_.roomInfo().roomId;
    if (roomId == kNoRoom) {
        return 1;
    }
    const ParamList items{{QStringLiteral("rid"), QString::number(roomId)}};
    std::vector<VxGiftRecord> gifts;
    std::vector<VxGiftSkinRecord> skins;
    // A table whose request fails keeps what it held; unknown items are fetched singly later.
    if (runOperation(tolvane::liveroom::giftTemplateRow(), items, nullptr,
                     [&](const QByteArray& reply) {
                         return tolvane::liveroom::parseGiftList(parser_, reply, gifts, skins);
                     }) == 0) {
        liveRoomInfo_->storeGifts(gifts, skins);
    }
    std::vector<VxPropRecord> props;
    if (runOperation(tolvane::liveroom::propListRow(), items, nullptr,
                     [&](const QByteArray& reply) {
                         return tolvane::liveroom::parsePropList(parser_, reply, props);
                     }) == 0) {
        liveRoomInfo_->storeProps(props);
    }
    // The configuration files are not needed to go live, so they load off the host's thread.
    liveRoomInfo_->loadResourceFiles();
    return 0;
}

void VxNetServiceImp::loadGiftTablesInBackground() {
    logBanner("loadGiftTables");
    const int32_t roomId = parser_.roomInfo().roomId;
    if (roomId != kNoRoom) {
        liveRoomInfo_->loadTablesInBackground(roomId);
    }
}

void VxNetServiceImp::onRoomInfoLoaded() {
    liveRoomInfo_->refreshFromRoomInfo();
}

// slot 94
IVxLiveRoomInfo* VxNetServiceImp::getLiveRoomInfo() {
    return liveRoomInfo_.get();
}

// The room's gift template and prop list fetched on the store's own thread: what the barrage
// start-up asks for, since going live needs no catalogue and must not wait for one.
#include "liveroom/catalogue_parsers.h"
#include "liveroom/catalogue_rows.h"
#include "liveroom/vx_live_room_info.h"
#include "log/log_writer.h"
#include "parse/data_parser.h"

namespace {

// The lines a refused table writes, as the service's own loading writes them.
void logRefused(const tolvane::net::OperationRow& row, const QByteArray& body) {
    tolvane::log::writeLine(tolvane::log::kMainLog,
                            QStringLiteral("error Url: %1").arg(QLatin1String(row.path)));
    tolvane::log::writeLine(tolvane::log::kMainLog,
                            QStringLiteral("result data : %1").arg(QString::fromUtf8(body)));
}

}  // namespace

void VxLiveRoomInfo::loadTablesInBackground(int32_t roomId) {
    queue_->request({FetchKey::Tables, roomId, 0});
    loadResourceFiles();
}

bool VxLiveRoomInfo::fetchTables(int32_t roomId) {
    uint64_t generation = 0;
    {
        std::lock_guard<std::mutex> lock(fillMutex_);
        generation = generation_;
    }
    const ParamList items{{QStringLiteral("rid"), QString::number(roomId)}};
    DataParser parser;
    // As slot 49 does: a table whose request fails keeps what it held and is not asked again,
    // so the requests on the wire stay the same.
    const tolvane::net::OperationRow& giftRow = tolvane::liveroom::giftTemplateRow();
    QByteArray giftBody;
    std::vector<VxGiftRecord> gifts;
    std::vector<VxGiftSkinRecord> skins;
    const bool giftsRead = send(giftRow, items, giftBody) &&
                           tolvane::liveroom::parseGiftList(parser, giftBody, gifts, skins) == 0;
    if (!giftsRead) {
        logRefused(giftRow, giftBody);
    }
    const tolvane::net::OperationRow& propRow = tolvane::liveroom::propListRow();
    QByteArray propBody;
    std::vector<VxPropRecord> props;
    const bool propsRead = send(propRow, items, propBody) &&
                           tolvane::liveroom::parsePropList(parser, propBody, props) == 0;
    if (!propsRead) {
        logRefused(propRow, propBody);
    }
    {
        std::lock_guard<std::mutex> lock(fillMutex_);
        if (generation != generation_) {
            return true;  // the user logged out meanwhile; the tables are for nobody
        }
        if (giftsRead) {
            gifts_.replace(gifts);
            skins_.replace(skins);
        }
        if (propsRead) {
            props_.replace(props);
        }
    }
    if (giftsRead) {
        notifyTable(VxCatalogueTable::Gifts);
        notifyTable(VxCatalogueTable::GiftSkins);
    }
    if (propsRead) {
        notifyTable(VxCatalogueTable::Props);
    }
    return true;
}

// Starting and closing the broadcast on a push line the platform handed out.
#include "parse/data_parser.h"
#include "service/vx_net_service_imp.h"

namespace {

using tolvane::net::BaseKind;
using tolvane::net::CommonPlacement;
using tolvane::net::HttpMethod;
using tolvane::net::registerOperation;

const tolvane::net::OperationRow& kOpenLiveRoom = registerOperation(
    baseRow("open_live_room", HttpMethod::Post, BaseKind::Mobile3, "mgapi/livenc/anchor/startLive")
        .commonIn(CommonPlacement::Headers)
        .withClientSys()
        .withExpiryHook());

const tolvane::net::OperationRow& kStopLiveRoom = registerOperation(
    baseRow("stop_live_room", HttpMethod::Post, BaseKind::Mobile3, "mgapi/livenc/anchor/closeLive")
        .commonIn(CommonPlacement::Headers)
        .withClientSys());

QString flag(bool value) {
    return value ? QStringLiteral("1") : QStringLiteral("0");
}

}  // namespace

void VxNetServiceImp::appendLiveCategory(ParamList& items) const {
    // A category of 0 was never set, and its third level means nothing without it.
    if (liveParameters_.cid2 != 0) {
        items.append({QStringLiteral("cid2"), QString::number(liveParameters_.cid2)});
        items.append({QStringLiteral("cid3"), QString::number(liveParameters_.cid3)});
    }
    if (liveParameters_.module_id != 0) {
        items.append({QStringLiteral("module_id"), QString::number(liveParameters_.module_id)});
    }
}

// slot 14
int32_t VxNetServiceImp::open_live_room(const std::string& pushUrl) {
    int32_t lineId = 0;
    if (!parser_.findPushLine(pushUrl, lineId)) {
        logBanner(kOpenLiveRoom.name);
        return 1;  // not a line of the last reply: nothing is sent
    }
    const LiveParameters& live = liveParameters_;
    ParamList items{
        {QStringLiteral("token"), QString::fromStdString(sessionToken())},
        {QStringLiteral("client_sys"), QStringLiteral("pc")},
        {QStringLiteral("fms_val"), QString::fromStdString(parser_.fmsValue())},
        {QStringLiteral("rtmp_id"), QString::number(lineId)},
        {QStringLiteral("live_client_type"), QStringLiteral("11")},
        {QStringLiteral("room_live_type"), QString::number(live.room_live_type)},
        {QStringLiteral("is_third_party_obs"), flag(live.is_third_party_obs)},
        {QStringLiteral("is_rtc"), flag(live.is_rtc)},
        {QStringLiteral("is_hdr"), flag(live.is_hdr)},
    };
    // The server reads a missing "is_audio" as a video room; "0" is never sent.
    if (live.is_audio != 0) {
        items.append({QStringLiteral("is_audio"), QStringLiteral("1")});
    }
    appendLiveCategory(items);
    return runOperation(kOpenLiveRoom, items);
}

// slot 15
int32_t VxNetServiceImp::stop_live_room() {
    return runOperation(kStopLiveRoom,
                        {{QStringLiteral("token"), QString::fromStdString(sessionToken())}});
}

// slot 20
bool VxNetServiceImp::getRtmpAddressList(std::vector<PushAddress>& addresses) {
    addresses = pushAddresses_;
    return true;
}

// The anchor's room and the barrage servers: what the service must know after login before
// the barrage client can connect and before any other room operation can run.
#include "log/log_writer.h"
#include "parse/data_parser.h"
#include "service/vx_net_service_imp.h"

namespace {

using tolvane::net::BaseKind;
using tolvane::net::FailureLog;
using tolvane::net::HostKind;
using tolvane::net::HttpMethod;
using tolvane::net::registerOperation;

// "my_room" answers the room information, the push line of slot 3 and the live state alike.
const tolvane::net::OperationRow& kRoomInfoRequest =
    registerOperation(baseRow("requestRoomInfo", HttpMethod::Post, BaseKind::ContentV1, "my_room")
                          .timeout(3000)
                          .logging(FailureLog::ReplyOnly));

const tolvane::net::OperationRow& kGatewayList =
    registerOperation(hostRow("getGatewayList", HttpMethod::Get, HostKind::ContentApi,
                              "/lapi/live/gateway/client2", "lapi/live/gateway/client2")
                          .logging(FailureLog::ReplyOnly)
                          .loggingReplyWithoutAnswer());

}  // namespace

int32_t VxNetServiceImp::requestRoomInfo(const ReplyParser& parse, bool sessionExpiryHook) {
    const ParamList items{{QStringLiteral("token"), QString::fromStdString(sessionToken())},
                          {QStringLiteral("biz_type"), QStringLiteral("13")}};
    return runOperation(sessionExpiryHook ? kRoomInfoRequest.withExpiryHook() : kRoomInfoRequest,
                        items, nullptr, parse);
}

int32_t VxNetServiceImp::initRoomInfo(QList<ServerAddress>& servers, bool catalogueInBackground) {
    logBanner("initRoomInfo");
    const int32_t result = requestRoomInfo(
        [&](const QByteArray& reply) {
            std::string errorMessage;
            return parser_.parseRoomInfoResult(reply, errorMessage, servers);
        },
        false);
    if (result != 0) {
        return result;
    }
    if (catalogueInBackground) {
        loadGiftTablesInBackground();
    } else {
        loadGiftTables();
    }
    onRoomInfoLoaded();
    return 0;
}

int32_t VxNetServiceImp::getGatewayList(QList<ServerAddress>& servers) {
    return runOperation(kGatewayList, ParamList(), nullptr, [&](const QByteArray& reply) {
        std::string errorMessage;
        return parser_.parseGatewayResult(reply, errorMessage, servers);
    });
}

int32_t VxNetServiceImp::collectBarrageServers(QList<ServerAddress>& servers) {
    requestEmotionSeiyClassifyList();
    servers.clear();
    // A gateway that fails leaves the room's own servers, which are enough to connect.
    getGatewayList(servers);
    return initRoomInfo(servers, true);
}

// slot 4
int32_t VxNetServiceImp::getRoomId() {
    return parser_.roomInfo().roomId;
}

// slot 24
void VxNetServiceImp::getRoomRecord(RoomSummary& room) {
    const RoomInfo& info = parser_.roomInfo();
    room.roomId = info.roomId;
    room.roomUrl = endpoints_.roomUrl(environment_, info.roomId);
    room.roomName = info.roomName;
    room.gameName = info.gameName;
    room.childName = info.childName;
    room.roomFlag = roomFlag_;
    room.cateId = info.cateId;
}

// slot 53
int32_t VxNetServiceImp::getVipId() {
    return parser_.roomInfo().vipId;
}

// slot 54
int32_t VxNetServiceImp::getAnchorLevel() {
    return parser_.roomInfo().anchorLevel;
}

// slot 58
void VxNetServiceImp::refreshRoomInfo() {
    QList<ServerAddress> scratch;
    initRoomInfo(scratch);
}

// slot 88
int32_t VxNetServiceImp::getRoomState(bool& live, bool& showType) {
    logBanner("getRoomState");
    return requestRoomInfo(
        [&](const QByteArray& reply) {
            return parser_.parseIsRoomBroadcastingResult(reply, live, showType);
        },
        true);
}

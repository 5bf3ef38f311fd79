// The anchor's room and the barrage servers: what the service must know after login before
// the barrage client can connect and before any other room operation can run.
#include <QUrl>
#include <QUrlQuery>

#include "net/own_url_request.h"
#include "net/vx_net_request.h"
#include "parse/data_parser.h"
#include "service/log_writer.h"
#include "service/vx_net_service_imp.h"

namespace {

constexpr int kContentApiBase = 2;
constexpr int kContentApiHost = 0;
constexpr int kRoomInfoTimeoutMs = 3000;
constexpr int kGatewayTimeoutMs = 30000;
constexpr int kNoAnswer = 210;
constexpr int32_t kNoRoom = -1;

void logReplyText(const QByteArray& reply) {
    tolvane::log::writeLine(tolvane::log::kMainLog,
                            QStringLiteral("result data : %1").arg(QString::fromUtf8(reply)));
}

}  // namespace

int32_t VxNetServiceImp::requestRoomInfo(QByteArray& reply) {
    logBanner("requestRoomInfo");
    RequestDescriptor request;
    request.kind = kContentApiBase;
    request.path = QStringLiteral("my_room");
    request.groupB = {{QStringLiteral("aid"), QStringLiteral("vxtool")},
                      {QStringLiteral("time"), QString::number(getServerTime())}};
    request.groupC = {{QStringLiteral("token"), QString::fromStdString(sessionToken())},
                      {QStringLiteral("biz_type"), QStringLiteral("13")}};
    request.timeoutMs = kRoomInfoTimeoutMs;
    return requestPost(reply, request) ? 0 : kNoAnswer;
}

int32_t VxNetServiceImp::initRoomInfo(QList<ServerAddress>& servers) {
    logBanner("initRoomInfo");
    QByteArray reply;
    const int32_t requested = requestRoomInfo(reply);
    if (requested != 0) {
        return requested;
    }
    std::string errorMessage;
    const int32_t result = parser_.parseRoomInfoResult(reply, errorMessage, servers);
    if (result != 0) {
        logReplyText(reply);
        return result;
    }
    loadGiftTables();
    onRoomInfoLoaded();
    return 0;
}

void VxNetServiceImp::onRoomInfoLoaded() {
    // The live room information store will copy anchor level, vip id and room id from here
    // once it exists; until then nothing else keeps a copy of the room information.
}

int32_t VxNetServiceImp::getGatewayList(QList<ServerAddress>& servers) {
    logBanner("getGatewayList");
    tolvane::net::OwnUrlRequestInput input;
    input.method = tolvane::net::HttpMethod::Get;
    input.host = endpoints_.host(kContentApiHost, environment_);
    input.urlPath = QStringLiteral("/lapi/live/gateway/client2");
    input.signingPath = QStringLiteral("lapi/live/gateway/client2");
    input.time = getServerTime();
    const tolvane::net::OwnUrlRequest request = tolvane::net::buildOwnUrlRequest(input);

    QByteArray reply;
    if (!request_->cprSyncGet(reply, request.url, QUrlQuery(request.url), request.headers,
                              kGatewayTimeoutMs)) {
        logReplyText(reply);
        return kNoAnswer;
    }
    std::string errorMessage;
    const int32_t result = parser_.parseGatewayResult(reply, errorMessage, servers);
    if (result != 0) {
        logReplyText(reply);
    }
    return result;
}

int32_t VxNetServiceImp::collectBarrageServers(QList<ServerAddress>& servers) {
    requestEmotionSeiyClassifyList();
    servers.clear();
    // A gateway that fails leaves the room's own servers, which are enough to connect.
    getGatewayList(servers);
    return initRoomInfo(servers);
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

// slot 49
int32_t VxNetServiceImp::loadGiftTables() {
    // The gift and prop tables arrive with the live room information store; without a room
    // there is nothing to load them for.
    return parser_.roomInfo().roomId == kNoRoom ? 1 : 0;
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
    QByteArray reply;
    int32_t result = requestRoomInfo(reply);
    if (result == 0) {
        result = parser_.parseIsRoomBroadcastingResult(reply, live, showType);
        if (result != 0) {
            logReplyText(reply);
        }
    }
    return afterSessionCheck(result);
}

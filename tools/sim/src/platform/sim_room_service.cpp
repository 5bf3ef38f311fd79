#include "platform/sim_room_service.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "http/sim_http_server.h"
#include "http/sim_replies.h"
#include "platform/sim_caller.h"
#include "platform/sim_platform_state.h"

namespace tolvane::sim {

namespace {

// The room information writes ports as text, the gateway as numbers; the module must read both.
QJsonArray serverList(const std::vector<SimServerAddress>& servers, bool portAsText) {
    QJsonArray list;
    for (const SimServerAddress& server : servers) {
        const QJsonValue port =
            portAsText ? QJsonValue(QString::number(server.port)) : QJsonValue(server.port);
        list.append(QJsonObject{{"ip", QString::fromStdString(server.ip)}, {"port", port}});
    }
    return list;
}

// The room names the category it last picked, and its main push line.
void addRoomSetup(const SimPlatformState& state, int roomId, QJsonObject& room) {
    if (const auto category = state.categories().category(roomId)) {
        room.insert(QStringLiteral("cate_id"), QString::number(category->cid2));
        room.insert(QStringLiteral("game_name"), QString::fromStdString(category->cate2Name));
        room.insert(QStringLiteral("child_name"), QString::fromStdString(category->cate3Name));
    }
    const SimSendAddress send = state.liveState().sendAddress(roomId);
    room.insert(QStringLiteral("rtmp_send_id"), send.id);
    room.insert(QStringLiteral("rtmp_send_url"), QString::fromStdString(send.url));
    room.insert(QStringLiteral("rtmp_send_live"), QString::fromStdString(send.live));
}

SimReply myRoom(SimPlatformState& state, const SimRequest& request) {
    const SimCaller caller =
        identifyCaller(state, request.queryValue("time"), request.formValue("token"));
    if (!caller.account) {
        return caller.refusal;
    }
    QJsonObject room = caller.account->room;
    if (caller.roomId() != 0) {
        addRoomSetup(state, caller.roomId(), room);
    }
    room.insert(QStringLiteral("servers"), serverList(state.roomServers(), true));
    room.insert(QStringLiteral("show_status"),
                state.live() ? QStringLiteral("1") : QStringLiteral("2"));
    room.insert(QStringLiteral("roomShowType"), state.showType());
    return okReply(room);
}

SimReply gateway(SimPlatformState& state, const SimRequest& request) {
    if (!timeInWindow(state, request.queryValue("time"))) {
        return timeRefusal();
    }
    return okReply(QJsonObject{{"iplist", serverList(state.gatewayServers(), false)}});
}

SimReply emotionWhiteList(const SimPlatformState& state) {
    QJsonArray ids;
    for (const int id : state.emotionWhiteList()) {
        ids.append(id);
    }
    const QJsonObject body{{"data", QJsonObject{{"white_cate2_list", ids}}}};
    // The configuration service wraps its files in a callback for browsers; a static file
    // carries no "error" member.
    std::string text = "VXConfigCallback(";
    text += QJsonDocument(body).toJson(QJsonDocument::Compact).toStdString();
    text += ")";
    return SimReply{200, text, "application/javascript"};
}

}  // namespace

void addRoomRoutes(SimHttpServer& server, SimPlatformState& state) {
    SimPlatformState* s = &state;
    server.routes().add({"POST", SimAddressTable::Base, 2, "/api/v1/my_room", "my_room",
                         SimSignRule::Query, [s](const SimRequest& r) { return myRoom(*s, r); }});
    server.routes().add({"GET", SimAddressTable::Host, 0, "/lapi/live/gateway/client2",
                         "lapi/live/gateway/client2", SimSignRule::CommonLists,
                         [s](const SimRequest& r) { return gateway(*s, r); }});
    // The configuration service's files are not signed.
    server.routes().add({"GET", SimAddressTable::Host, 4, "/resource/common/emotion_w.json", "",
                         SimSignRule::None,
                         [s](const SimRequest&) { return emotionWhiteList(*s); }});
}

}  // namespace tolvane::sim

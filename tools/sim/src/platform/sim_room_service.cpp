#include "platform/sim_room_service.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cstdlib>

#include "http/sim_http_server.h"
#include "http/sim_replies.h"
#include "platform/sim_content_service.h"
#include "platform/sim_platform_state.h"

namespace tolvane::sim {

namespace {

using namespace content_codes;

bool timeInWindow(const SimPlatformState& state, const SimRequest& request) {
    const long long sent = std::atoll(request.queryValue("time").c_str());
    return std::llabs(sent - state.nowSeconds()) <= kSignedTimeWindowSeconds;
}

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

SimReply myRoom(SimPlatformState& state, const SimRequest& request) {
    if (!timeInWindow(state, request)) {
        return errorReply(kTimeOutOfWindow, QStringLiteral("请求时间无效"));
    }
    const auto session = state.sessionByToken(request.formValue("token"));
    const auto account = session ? state.accountByUid(session->uid) : std::nullopt;
    if (!account) {
        return errorReply(kSessionExpired, QStringLiteral("登录已失效，请重新登录"));
    }
    QJsonObject room = account->room;
    room.insert(QStringLiteral("servers"), serverList(state.roomServers(), true));
    room.insert(QStringLiteral("show_status"),
                state.live() ? QStringLiteral("1") : QStringLiteral("2"));
    room.insert(QStringLiteral("roomShowType"), state.showType());
    return okReply(room);
}

SimReply gateway(SimPlatformState& state, const SimRequest& request) {
    if (!timeInWindow(state, request)) {
        return errorReply(kTimeOutOfWindow, QStringLiteral("请求时间无效"));
    }
    return okReply(QJsonObject{{"iplist", serverList(state.gatewayServers(), false)}});
}

SimReply emotionWhiteList(const SimPlatformState& state) {
    QJsonArray ids;
    for (const int id : state.emotionWhiteList()) {
        ids.append(id);
    }
    const QJsonObject body{{"error", 0}, {"data", QJsonObject{{"white_cate2_list", ids}}}};
    // The configuration service wraps its files in a callback for browsers.
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

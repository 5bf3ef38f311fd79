#include "platform/sim_live_service.h"

#include <QJsonArray>
#include <QJsonObject>
#include <algorithm>

#include "http/sim_http_server.h"
#include "http/sim_replies.h"
#include "platform/sim_caller.h"
#include "platform/sim_platform_state.h"

namespace tolvane::sim {

namespace {

using namespace live_codes;

QString q(const std::string& text) {
    return QString::fromStdString(text);
}

// Mobile services take the time from the headers and the session from the form.
SimCaller roomOwner(const SimPlatformState& state, const SimRequest& request) {
    return identifyRoomOwner(state, request.header("time"), request.formValue("token"));
}

SimReply refusalReply(const SimLineRefusal& refusal) {
    switch (refusal.code) {
        case kRoomClosed:
            return jsonReply(200,
                             QJsonObject{{"error", refusal.code},
                                         {"msg", q(refusal.message)},
                                         {"data", QJsonObject{{"reason", q(refusal.reason)},
                                                              {"open_time", q(refusal.openTime)},
                                                              {"duration", refusal.duration}}}});
        case kVerificationNeeded:
            return jsonReply(200,
                             QJsonObject{{"error", refusal.code},
                                         {"data", QJsonObject{{"msg", q(refusal.message)},
                                                              {"ref_url", q(refusal.refUrl)}}}});
        default:
            return errorReply(refusal.code, q(refusal.message));
    }
}

QJsonArray sortedLines(const std::vector<SimPushLine>& lines) {
    QJsonArray array;
    for (const SimPushLine& line : lines) {
        array.append(QJsonObject{{"id", line.id}, {"url", q(line.url)}});
    }
    return array;
}

// The older "list" names each line by its id as the only key, in id order.
QJsonArray keyedLines(std::vector<SimPushLine> lines) {
    std::stable_sort(lines.begin(), lines.end(),
                     [](const SimPushLine& a, const SimPushLine& b) { return a.id < b.id; });
    QJsonArray array;
    for (const SimPushLine& line : lines) {
        array.append(QJsonObject{{QString::number(line.id), q(line.url)}});
    }
    return array;
}

void insertList(QJsonObject& data, const char* key, SimLineListShape shape,
                const QJsonArray& lines) {
    if (shape != SimLineListShape::Absent) {
        data.insert(QLatin1String(key), shape == SimLineListShape::Lines ? lines : QJsonArray());
    }
}

SimReply lineList(SimPlatformState& state, const SimRequest& request) {
    const SimCaller caller = roomOwner(state, request);
    if (!caller.account) {
        return caller.refusal;
    }
    state.liveState().recordLineRequest(
        caller.roomId(),
        {request.formValue("cid2"), request.formValue("cid3"), request.formValue("module_id")});
    const SimRoomLines lines = state.liveState().lines(caller.roomId());
    if (lines.refusal.code != 0) {
        return refusalReply(lines.refusal);
    }
    QJsonObject data{{"fms_val", q(lines.fmsValue)}};
    insertList(data, "list", lines.list, keyedLines(lines.main));
    insertList(data, "list_sort", lines.listSort, sortedLines(lines.main));
    insertList(data, "h265_list_sort", lines.h265List, sortedLines(lines.h265));
    return okReply(data);
}

SimReply startLive(SimPlatformState& state, const SimRequest& request) {
    const SimCaller caller = roomOwner(state, request);
    if (!caller.account) {
        return caller.refusal;
    }
    const SimRoomLines lines = state.liveState().lines(caller.roomId());
    bool isNumber = false;
    const int lineId = q(request.formValue("rtmp_id")).toInt(&isNumber);
    if (!isNumber || !lines.hasLine(lineId)) {
        return errorReply(kUnknownLine, QStringLiteral("推流线路无效，请重新获取推流地址"));
    }
    if (request.formValue("fms_val") != lines.fmsValue) {
        return errorReply(kStaleFms, QStringLiteral("推流信息已过期，请重新获取推流地址"));
    }
    state.setLive(true);
    return okReply(QJsonObject());
}

SimReply closeLive(SimPlatformState& state, const SimRequest& request) {
    const SimCaller caller = roomOwner(state, request);
    if (!caller.account) {
        return caller.refusal;
    }
    state.setLive(false);
    state.liveState().endShow(caller.roomId());
    return okReply(QJsonObject());
}

}  // namespace

void addLiveRoutes(SimHttpServer& server, SimPlatformState& state) {
    auto add = [&server](const char* path, SimHandler handler) {
        server.routes().add({"POST", SimAddressTable::Base, 6, std::string("/") + path, path,
                             SimSignRule::Mobile3, std::move(handler)});
    };
    SimPlatformState* s = &state;
    add("mgapi/livenc/anchor/getRtMpList", [s](const SimRequest& r) { return lineList(*s, r); });
    add("mgapi/livenc/anchor/startLive", [s](const SimRequest& r) { return startLive(*s, r); });
    add("mgapi/livenc/anchor/closeLive", [s](const SimRequest& r) { return closeLive(*s, r); });
}

}  // namespace tolvane::sim

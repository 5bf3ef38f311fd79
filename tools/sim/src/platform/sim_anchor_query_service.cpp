#include "platform/sim_anchor_query_service.h"

#include <QJsonArray>
#include <QJsonObject>
#include <cmath>
#include <utility>

#include "http/sim_http_server.h"
#include "http/sim_replies.h"
#include "platform/sim_caller.h"
#include "platform/sim_platform_state.h"

namespace tolvane::sim {

namespace {

using namespace anchor_codes;

QString q(const std::string& text) {
    return QString::fromStdString(text);
}

SimReply followerCount(const SimPlatformState& state, const SimRequest& request) {
    const SimCaller anchor = identifyCaller(state, request);
    if (!anchor.account) {
        return anchor.refusal;
    }
    const int roomId = q(request.formValue("rid")).toInt();
    if (roomId <= 0) {
        return errorReply(kUnknownRoom, QStringLiteral("房间不存在"));
    }
    return okReply(QJsonObject{{"fans", state.anchorRecords().followers(roomId)}});
}

SimReply guildCheck(const SimPlatformState& state, const SimRequest& request) {
    const SimCaller anchor = identifyCaller(state, request);
    if (!anchor.account) {
        return anchor.refusal;
    }
    return okReply(QJsonObject{{"in", state.anchorRecords().inGuild(anchor.account->uid) ? 1 : 0}});
}

QJsonObject locationObject(const SimAnchorLocation& location) {
    return QJsonObject{{"city", q(location.city)},
                       {"longitude", q(location.longitude)},
                       {"latitude", q(location.latitude)}};
}

// "isAllowPoi" 1 shows the last reported location to viewers and answers it; 0 hides it.
SimReply locationQuery(SimPlatformState& state, const SimRequest& request) {
    const SimCaller anchor = identifyCaller(state, request);
    if (!anchor.account) {
        return anchor.refusal;
    }
    const std::string flag = request.formValue("isAllowPoi");
    if (flag != "0" && flag != "1") {
        return errorReply(kBadLocationFlag, QStringLiteral("参数错误"));
    }
    SimAnchorRecords& records = state.anchorRecords();
    const std::string& uid = anchor.account->uid;
    records.setLocationShown(uid, flag == "1");
    if (flag == "0") {
        return okReply(QJsonObject());
    }
    const auto location = records.location(uid);
    if (!location) {
        return errorReply(kNoLocation, QStringLiteral("未获取到主播位置"));
    }
    return okReply(locationObject(*location));
}

bool isCoordinate(const std::string& text, double limit) {
    bool isNumber = false;
    const double value = q(text).toDouble(&isNumber);
    return isNumber && std::fabs(value) <= limit;
}

SimReply locationReport(SimPlatformState& state, const SimRequest& request) {
    const SimCaller anchor = identifyCaller(state, request);
    if (!anchor.account) {
        return anchor.refusal;
    }
    SimAnchorLocation location{request.formValue("city"), request.formValue("longitude"),
                               request.formValue("latitude")};
    if (location.city.empty() || !isCoordinate(location.longitude, 180) ||
        !isCoordinate(location.latitude, 90)) {
        return errorReply(kUnusableLocation, QStringLiteral("位置信息无效"));
    }
    state.anchorRecords().setLocation(anchor.account->uid, std::move(location));
    return okReply(QJsonObject());
}

SimReply identityLink(const SimPlatformState& state, const SimRequest& request) {
    const SimCaller anchor = identifyCaller(state, request);
    if (!anchor.account) {
        return anchor.refusal;
    }
    return okReply(QJsonObject{{"url", q(state.anchorRecords().identityUrl(anchor.account->uid))}});
}

// The card a test did not write is the account's own profile and room, with level figures
// that put the anchor part of the way to the next level.
QJsonObject accountCard(const SimPlatformState& state, const SimAccount& account) {
    const QJsonObject& room = account.room;
    const int roomId = room.value(QStringLiteral("room_id")).toInt();
    const auto location = state.anchorRecords().location(account.uid);
    const QJsonObject userInfo{
        {"nickname", account.profile.value(QStringLiteral("nickname"))},
        {"avatar", account.profile.value(QStringLiteral("avatar"))
                       .toObject()
                       .value(QStringLiteral("middle"))},
        {"weight", room.value(QStringLiteral("owner_weight")).toString()},
        {"vipId", room.value(QStringLiteral("vipId")).toInt()},
        {"roomId", roomId},
        {"city", location ? q(location->city) : QString()},
        {"follow", QString::number(state.anchorRecords().followers(roomId))},
        {"isOfficial", 0},
    };
    const QString level = room.value(QStringLiteral("anchor_level"))
                              .toObject()
                              .value(QStringLiteral("level"))
                              .toString(QStringLiteral("1"));
    const int nextLevel = level.toInt() + 1;
    constexpr double kMinExp = 8000;
    constexpr double kUpgradeExp = 12000;
    constexpr double kExp = 9650.5;
    const QJsonObject levelInfo{
        {"level", level},
        {"upgrade_exp", kUpgradeExp},
        {"min_exp", kMinExp},
        {"exp", kExp},
        {"isFull", 0},
        {"levelIcon", QStringLiteral("https://img.tolvane.example/level/%1.png").arg(level)},
        {"next_level", nextLevel},
        {"nextLevelIcon",
         QStringLiteral("https://img.tolvane.example/level/%1.png").arg(nextLevel)},
        {"progress", (kExp - kMinExp) / (kUpgradeExp - kMinExp)},
    };
    return QJsonObject{{"userInfo", userInfo}, {"levelInfo", levelInfo}};
}

SimReply hoverCard(const SimPlatformState& state, const SimRequest& request) {
    const SimCaller anchor = identifyCaller(state, request);
    if (!anchor.account) {
        return anchor.refusal;
    }
    const auto written = state.anchorRecords().card(anchor.account->uid);
    return okReply(written ? *written : accountCard(state, *anchor.account));
}

SimReply blackList(const SimPlatformState& state, const SimRequest& request) {
    const SimCaller owner = identifyRoomOwner(state, request);
    if (!owner.account) {
        return owner.refusal;
    }
    if (request.formValue("biz_type") != "13") {
        return errorReply(kBadBizType, QStringLiteral("业务类型错误"));
    }
    QJsonArray list;
    for (const SimBlockedUser& user : state.anchorRecords().blackList(owner.roomId())) {
        list.append(QJsonObject{{"uid", q(user.uid)},
                                {"nickname", q(user.nickname)},
                                {"black_time", q(user.blockedAt)}});
    }
    return okReply(QJsonObject{{"total", list.size()}, {"list", list}});
}

SimReply unblock(SimPlatformState& state, const SimRequest& request) {
    const SimCaller owner = identifyRoomOwner(state, request);
    if (!owner.account) {
        return owner.refusal;
    }
    if (q(request.formValue("room_id")).toInt() != owner.roomId()) {
        return errorReply(kNotYourRoom, QStringLiteral("无权操作该房间"));
    }
    if (!state.anchorRecords().unblock(owner.roomId(), request.formValue("uid"))) {
        return errorReply(kNotBlocked, QStringLiteral("该用户不在黑名单中"));
    }
    return okReply(QJsonObject());
}

SimReply serviceEntry(const SimPlatformState& state, const SimRequest& request) {
    const auto entry = state.anchorRecords().serviceEntry(request.queryValue("appCode"));
    if (!entry) {
        return errorReply(kUnknownAppCode, QStringLiteral("应用不存在"));
    }
    return okReply(QJsonObject{{"remark", q(entry->remark)}, {"url", q(entry->url)}});
}

}  // namespace

void addAnchorQueryRoutes(SimHttpServer& server, SimPlatformState& state) {
    SimPlatformState* s = &state;
    addHostRoute(server, "POST", 0, "/api/v1/fans", "fans",
                 [s](const SimRequest& r) { return followerCount(*s, r); });
    addHostRoute(server, "GET", 0, "/api/v1/checkAnchorInGuild", "checkAnchorInGuild",
                 [s](const SimRequest& r) { return guildCheck(*s, r); });
    addHostRoute(server, "POST", 0, "/api/applivecompanion/getAnchorPoi",
                 "applivecompanion/getAnchorPoi",
                 [s](const SimRequest& r) { return locationQuery(*s, r); });
    addHostRoute(server, "POST", 0, "/api/applivecompanion/createAnchorPoi",
                 "applivecompanion/createAnchorPoi",
                 [s](const SimRequest& r) { return locationReport(*s, r); });
    addHostRoute(server, "POST", 0, "/member/panel/pc/ident/getIdentUrlForShow",
                 "member/panel/pc/ident/getIdentUrlForShow",
                 [s](const SimRequest& r) { return identityLink(*s, r); });
    addHostRoute(server, "POST", 7, "/livenc/livetool/getCardInfo", "livenc/livetool/getCardInfo",
                 [s](const SimRequest& r) { return hoverCard(*s, r); });
    addHostRoute(server, "POST", 0, "/api/v1/room_black", "room_black",
                 [s](const SimRequest& r) { return blackList(*s, r); });
    addHostRoute(server, "POST", 0, "/api/v1/del_black", "del_black",
                 [s](const SimRequest& r) { return unblock(*s, r); });
    // The customer-service host is public: no signature, no session.
    addHostRoute(server, "GET", 6, "/japi/special", "",
                 [s](const SimRequest& r) { return serviceEntry(*s, r); });
}

}  // namespace tolvane::sim

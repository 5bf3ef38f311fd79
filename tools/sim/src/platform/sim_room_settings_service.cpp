#include "platform/sim_room_settings_service.h"

#include <QJsonArray>
#include <QJsonObject>

#include "http/sim_http_server.h"
#include "http/sim_replies.h"
#include "platform/sim_caller.h"
#include "platform/sim_platform_state.h"

namespace tolvane::sim {

namespace {

using namespace room_settings_codes;

QString q(const std::string& text) {
    return QString::fromStdString(text);
}

int flag(bool value) {
    return value ? 1 : 0;
}

// The corners are public, so anyone may ask for any room's.
SimReply corners(const SimPlatformState& state, const SimRequest& request) {
    bool isNumber = false;
    const int roomId = q(request.queryValue("room_id")).toInt(&isNumber);
    if (!isNumber || roomId <= 0) {
        return errorReply(kUnknownRoom, QStringLiteral("房间不存在"));
    }
    QJsonArray list;
    for (const int corner : state.roomSettings().corners(roomId)) {
        list.append(corner);
    }
    return okReply(list);
}

// Ids as text, as the settings service writes them; the category is the room's last pick, the
// same one my_room names.
SimReply videoSettings(const SimPlatformState& state, const SimRequest& request) {
    const SimCaller owner = identifyRoomOwner(state, request);
    if (!owner.account) {
        return owner.refusal;
    }
    const int roomId = owner.roomId();
    const SimVideoSettings settings = state.roomSettings().videoSettings(roomId);
    const auto category = state.categories().category(roomId);
    const SimCategory picked = category.value_or(SimCategory());
    QJsonObject data{
        {"room_info",
         QJsonObject{{"room_id", QString::number(roomId)},
                     {"room_name", owner.account->room.value(QStringLiteral("room_name"))},
                     {"cate2_id", QString::number(picked.cid2)},
                     {"cate3_id", QString::number(picked.cid3)},
                     {"cate_time", static_cast<double>(settings.categoryTime)}}},
        {"room_verify",
         QJsonObject{{"new_title", q(settings.newTitle)}, {"title_vertify", settings.titleReview}}},
        {"notice_info", QJsonObject{{"last_notice", q(settings.lastNotice)},
                                    {"new_notice", q(settings.newNotice)},
                                    {"new_status", settings.noticeStatus},
                                    {"always", flag(settings.noticeAlways)}}},
        {"cover_info", QJsonObject{{"cover_src", q(settings.coverUrl)},
                                   {"cover_status", settings.coverStatus},
                                   {"cover_msg", q(settings.coverMessage)},
                                   {"open_close_cover", flag(settings.openCloseCover)}}},
        {"cover_button_type", flag(settings.coverButton)},
    };
    if (category) {
        data.insert(QStringLiteral("cate_info"),
                    QJsonObject{{"cate1_id", QString::number(picked.cid1)},
                                {"cate3_id", QString::number(picked.cid3)},
                                {"cate2_name", q(picked.cate2Name)},
                                {"cate3_name", q(picked.cate3Name)}});
    }
    if (settings.credit) {
        data.insert(QStringLiteral("credit_info"), QJsonObject{{"credit", *settings.credit}});
    }
    return okReply(data);
}

// The presets are the same for everyone: the request needs the time, not a session.
SimReply bitratePresets(const SimPlatformState& state, const SimRequest& request) {
    if (!timeInWindow(state, request.queryValue("time"))) {
        return timeRefusal();
    }
    QJsonArray list;
    for (const SimBitratePreset& preset : state.roomSettings().bitratePresets()) {
        list.append(QJsonObject{{"type", preset.type},
                                {"cate2_id", preset.cate2Id},
                                {"cate2_name", q(preset.cate2Name)},
                                {"min", preset.min},
                                {"max", preset.max}});
    }
    return okReply(list);
}

// An account has at most one room; the new one is what my_room and every service see next.
SimReply createRoom(SimPlatformState& state, const SimRequest& request) {
    const SimCaller caller = identifyCaller(state, request);
    if (!caller.account) {
        return caller.refusal;
    }
    if (caller.roomId() != 0) {
        return errorReply(kRoomAlreadyOwned, QStringLiteral("已开通直播间"));
    }
    const std::string& uid = caller.account->uid;
    const int roomId =
        state.roomSettings().createRoom(uid, request.formValue("tag_id"), request.formValue("id"));
    const QString nickname = caller.account->profile.value(QStringLiteral("nickname")).toString();
    state.setAccountRoom(uid, QJsonObject{{"room_id", roomId},
                                          {"room_name", nickname + QStringLiteral("'s room")},
                                          {"vipId", 0},
                                          {"anchor_level", QJsonObject{{"level", "1"}}},
                                          {"online", 0},
                                          {"owner_weight", "0"}});
    return okReply(roomId);
}

SimReply remind(SimPlatformState& state, const SimRequest& request) {
    const SimCaller owner = identifyRoomOwner(state, request);
    if (!owner.account) {
        return owner.refusal;
    }
    const std::string title = request.formValue("remind_title");
    if (title.empty()) {
        return errorReply(kEmptyReminder, QStringLiteral("提醒标题不能为空"));
    }
    state.roomSettings().recordReminder(
        {owner.account->uid, owner.roomId(), title, request.formValue("client_version")});
    return okReply(QJsonObject());
}

// Every figure is written as text.
SimReply livingStatistics(SimPlatformState& state, const SimRequest& request) {
    const SimCaller owner = identifyRoomOwner(state, request);
    if (!owner.account) {
        return owner.refusal;
    }
    if (request.formValue("rid") != std::to_string(owner.roomId())) {
        return errorReply(kNotTheCallersRoom, QStringLiteral("无权查看该房间"));
    }
    const SimLiveStatistics figures =
        state.roomSettings().advanceStatistics(owner.roomId(), state.live());
    return okReply(QJsonObject{{"mh", QString::number(figures.mh)},
                               {"nac", QString::number(figures.nac)},
                               {"nsuc", QString::number(figures.nsuc)},
                               {"nsfi", QString::number(figures.nsfi)},
                               {"nfbi", QString::number(figures.nfbi)},
                               {"ld", QString::number(figures.ld)},
                               {"bancount", QString::number(figures.bancount)}});
}

}  // namespace

void addRoomSettingsRoutes(SimHttpServer& server, SimPlatformState& state) {
    SimPlatformState* s = &state;
    addHostRoute(server, "GET", 0, "/api/v1/get_corner", "",
                 [s](const SimRequest& r) { return corners(*s, r); });
    addHostRoute(server, "POST", 0, "/api/videoPartner/getVideoSettingInfo",
                 "api/videoPartner/getVideoSettingInfo",
                 [s](const SimRequest& r) { return videoSettings(*s, r); });
    addHostRoute(server, "GET", 0, "/api/videoPartner/bitrate_config",
                 "api/videoPartner/bitrate_config",
                 [s](const SimRequest& r) { return bitratePresets(*s, r); });
    addHostRoute(server, "POST", 5, "/mgapi/livenc/anchor/createLiveRoom",
                 "mgapi/livenc/anchor/createLiveRoom",
                 [s](const SimRequest& r) { return createRoom(*s, r); });
    addHostRoute(server, "POST", 1, "/api/applivecompanion/remind", "applivecompanion/remind",
                 [s](const SimRequest& r) { return remind(*s, r); });
    addHostRoute(server, "POST", 0, "/api/videoPartner/livinginfo", "livinginfo",
                 [s](const SimRequest& r) { return livingStatistics(*s, r); });
}

}  // namespace tolvane::sim

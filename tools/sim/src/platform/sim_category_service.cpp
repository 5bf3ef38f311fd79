#include "platform/sim_category_service.h"

#include <QJsonArray>
#include <QJsonObject>

#include "http/sim_http_server.h"
#include "http/sim_replies.h"
#include "platform/sim_caller.h"
#include "platform/sim_platform_state.h"

namespace tolvane::sim {

namespace {

using namespace category_codes;

const QString kMsg = QStringLiteral("msg");

QString q(const std::string& text) {
    return QString::fromStdString(text);
}

int number(const SimRequest& request, const char* key) {
    return q(request.formValue(key)).toInt();
}

// The catalogue is public: it needs the time, not a session.
SimReply allCategories(const SimPlatformState& state, const SimRequest& request) {
    if (!timeInWindow(state, request.queryValue("time"))) {
        return timeRefusal();
    }
    return okReply(QJsonObject{{"cate_list", state.categories().tree()},
                               {"cate_suggest", state.categories().suggestions()}});
}

SimReply partnerCategories(const SimPlatformState& state, const SimRequest& request) {
    if (!timeInWindow(state, request.queryValue("time"))) {
        return timeRefusal(kMsg);
    }
    if (number(request, "rid") <= 0) {
        return errorReply(kUnknownRoom, QStringLiteral("房间不存在"), kMsg);
    }
    QJsonArray list;
    for (const SimCategory& category : state.categories().partnerCategories()) {
        list.append(QJsonObject{
            {"Cid1", category.cid1}, {"Cid2", category.cid2}, {"Cname2", q(category.cate2Name)}});
    }
    return okReply(list);
}

SimReply updateCategory(SimPlatformState& state, const SimRequest& request) {
    const SimCaller owner = identifyRoomOwner(state, request, kMsg);
    if (!owner.account) {
        return owner.refusal;
    }
    if (!state.categories().pickCategory(owner.roomId(), number(request, "cid2"),
                                         number(request, "cid3"))) {
        return errorReply(kUnknownCategory, QStringLiteral("分类不存在"), kMsg);
    }
    return okReply(QJsonObject());
}

SimReply tagList(const SimPlatformState& state, const SimRequest& request) {
    const SimCaller anchor = identifyCaller(state, request);
    if (!anchor.account) {
        return anchor.refusal;
    }
    const SimTagGroup group = state.categories().tags(number(request, "cid"));
    QJsonArray tags;
    for (const SimTag& tag : group.tags) {
        tags.append(QJsonObject{{"tid", tag.id}, {"tName", q(tag.name)}, {"tIcon", q(tag.icon)}});
    }
    return okReply(QJsonObject{{"tagName", q(group.name)}, {"tagList", tags}});
}

SimReply updateTag(SimPlatformState& state, const SimRequest& request) {
    const SimCaller owner = identifyRoomOwner(state, request);
    if (!owner.account) {
        return owner.refusal;
    }
    if (!state.categories().pickTag(owner.roomId(), number(request, "cid"),
                                    number(request, "tid"))) {
        return errorReply(kUnknownTag, QStringLiteral("标签不存在"));
    }
    return okReply(QJsonObject());
}

// The platform answers "is this a voice room" with its error code.
SimReply voiceCheck(const SimPlatformState& state, const SimRequest& request) {
    const SimCaller anchor = identifyCaller(state, request);
    if (!anchor.account) {
        return anchor.refusal;
    }
    const auto category = state.categories().category(number(request, "rid"));
    if (!category || !state.categories().isVoice(category->cid2)) {
        return errorReply(kNotVoice, QStringLiteral("当前分类不是语音分类"));
    }
    return okReply(QJsonObject());
}

SimReply submitGame(SimPlatformState& state, const SimRequest& request) {
    const SimCaller anchor = identifyCaller(state, request);
    if (!anchor.account) {
        return anchor.refusal;
    }
    state.categories().recordGame({anchor.account->uid, request.formValue("name"),
                                   request.formValue("process"), request.formValue("type")});
    return okReply(QJsonObject());
}

}  // namespace

void addCategoryRoutes(SimHttpServer& server, SimPlatformState& state) {
    auto add = [&server](int hostKind, const char* path, const char* signingPath,
                         SimHandler handler) {
        addHostRoute(server, "POST", hostKind, path, signingPath, std::move(handler));
    };
    SimPlatformState* s = &state;
    add(0, "/api/videoPartner/getAllCateInfo", "api/videoPartner/getAllCateInfo",
        [s](const SimRequest& r) { return allCategories(*s, r); });
    // This one service signs its path with the leading slash.
    add(1, "/api/videoPartner/join", "/api/videoPartner/join",
        [s](const SimRequest& r) { return partnerCategories(*s, r); });
    add(7, "/livenc/liveTool/updateCate", "livenc/liveTool/updateCate",
        [s](const SimRequest& r) { return updateCategory(*s, r); });
    add(0, "/api/videoPartner/getCidTagList", "api/videoPartner/getCidTagList",
        [s](const SimRequest& r) { return tagList(*s, r); });
    add(0, "/api/videoPartner/updateCidTagInfo", "api/videoPartner/updateCidTagInfo",
        [s](const SimRequest& r) { return updateTag(*s, r); });
    add(0, "/api/v1/livingCheck", "livingCheck",
        [s](const SimRequest& r) { return voiceCheck(*s, r); });
    add(0, "/api/v1/submitGameProcess", "submitGameProcess",
        [s](const SimRequest& r) { return submitGame(*s, r); });
}

}  // namespace tolvane::sim

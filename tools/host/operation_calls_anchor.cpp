// `tolvane-host call` entries for the anchor's queries: followers, guild, location, identity
// link, hover card, black list, customer service and feedback.
#include "call_arguments.h"

namespace host_calls {

namespace {

QJsonObject cardUserObject(const AnchorCardUser& user) {
    return {{"nickname", text(user.nickname)}, {"avatar", text(user.avatar)},
            {"weight", text(user.weight)},     {"vipId", user.vipId},
            {"roomId", user.roomId},           {"city", text(user.city)},
            {"follow", text(user.follow)},     {"isOfficial", user.isOfficial}};
}

// A float widened to double shows noise digits (0.41262501); its shortest text reads back clean.
double shortest(float value) {
    return QString::number(value).toDouble();
}

QJsonObject cardLevelObject(const AnchorCardLevel& level) {
    return {{"level", text(level.level)},
            {"upgrade_exp", shortest(level.upgrade_exp)},
            {"min_exp", shortest(level.min_exp)},
            {"exp", shortest(level.exp)},
            {"isFull", level.isFull},
            {"levelIcon", text(level.levelIcon)},
            {"next_level", level.next_level},
            {"nextLevelIcon", text(level.nextLevelIcon)},
            {"progress", shortest(level.progress)}};
}

// Operations that hand the platform's reply over as text.
QJsonObject replyOutputs(int32_t result, const std::string& reply) {
    return withOutputs(result, {{"reply", text(reply)}});
}

QJsonObject messageOutputs(int32_t result, const std::string& message) {
    return withOutputs(result, {{"message", text(message)}});
}

}  // namespace

void addAnchorCalls(const AddCall& add) {
    using S = ILiveencoderNetService;
    using A = const QStringList&;

    add("getFollowCnt", "", [](S& s, A) {
        int32_t count = 0;
        const int32_t r = s.getFollowCnt(count);
        return withOutputs(r, {{"count", count}});
    });
    add("checkInGuild", "", [](S& s, A) {
        bool inGuild = false;
        const int32_t r = s.checkInGuild(inGuild);
        return withOutputs(r, {{"inGuild", inGuild}});
    });
    add("getAnchorLocation", "IS_ALLOW_POI", [](S& s, A a) {
        std::string message;
        const int32_t r = s.getAnchorLocation(intArg(a, 0), message);
        return messageOutputs(r, message);
    });
    add("reportAnchorLocation", "CITY LONGITUDE LATITUDE", [](S& s, A a) {
        std::string message;
        const int32_t r = s.reportAnchorLocation(arg(a, 0), arg(a, 1), arg(a, 2), message);
        return messageOutputs(r, message);
    });
    add("requestLiveAuthInfo", "", [](S& s, A) {
        std::string reply;
        const int32_t r = s.requestLiveAuthInfo(reply);
        return replyOutputs(r, reply);
    });
    add("getAnchorHeadHoverInfo", "", [](S& s, A) {
        AnchorCardUser user;
        AnchorCardLevel level;
        const int32_t r = s.getAnchorHeadHoverInfo(user, level);
        return withOutputs(r, {{"user", cardUserObject(user)}, {"level", cardLevelObject(level)}});
    });
    add("get_black_user_list", "", [](S& s, A) {
        std::string reply;
        const int32_t r = s.get_black_user_list(reply);
        return replyOutputs(r, reply);
    });
    add("unblack_user", "UID", [](S& s, A a) {
        std::string reply;
        const int32_t r = s.unblack_user(arg(a, 0), reply);
        return replyOutputs(r, reply);
    });
    add("getCustomerServiceEntry", "APP_CODE", [](S& s, A a) {
        std::string remark, url;
        const int32_t r = s.getCustomerServiceEntry(arg(a, 0), remark, url);
        return withOutputs(r, {{"remark", text(remark)}, {"url", text(url)}});
    });
    add("reportFeedback", "TITLE CONTENT PARTNER TYPE UA UID VERSION [IMAGE_PATH...]",
        [](S& s, A a) {
            FeedbackRecord feedback;
            feedback.partner = arg(a, 2);
            feedback.type = arg(a, 3);
            feedback.ua = arg(a, 4);
            feedback.uid = arg(a, 5);
            feedback.version = arg(a, 6);
            std::vector<std::string> images;
            for (int i = 7; i < a.size(); ++i) {
                images.push_back(arg(a, i));
            }
            std::string reply;
            const int32_t r = s.reportFeedback(arg(a, 0), arg(a, 1), feedback, images, reply);
            return replyOutputs(r, reply);
        });
}

}  // namespace host_calls

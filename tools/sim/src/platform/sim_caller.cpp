#include "platform/sim_caller.h"

#include <QString>
#include <cstdlib>
#include <utility>

#include "http/sim_replies.h"

namespace tolvane::sim {

int SimCaller::roomId() const {
    return account ? account->room.value(QStringLiteral("room_id")).toInt() : 0;
}

bool timeInWindow(const SimPlatformState& state, const std::string& sentTime) {
    const long long sent = std::atoll(sentTime.c_str());
    return std::llabs(sent - state.nowSeconds()) <= kSignedTimeWindowSeconds;
}

SimReply timeRefusal(const QString& messageKey) {
    return errorReply(content_codes::kTimeOutOfWindow, QStringLiteral("请求时间无效"), messageKey);
}

SimCaller identifyCaller(const SimPlatformState& state, const std::string& sentTime,
                         const std::string& token, const QString& messageKey) {
    SimCaller caller;
    if (!timeInWindow(state, sentTime)) {
        caller.refusal = timeRefusal(messageKey);
        return caller;
    }
    const auto session = state.sessionByToken(token);
    caller.account = session ? state.accountByUid(session->uid) : std::nullopt;
    if (!caller.account) {
        caller.refusal = errorReply(content_codes::kSessionExpired,
                                    QStringLiteral("登录已失效，请重新登录"), messageKey);
    }
    return caller;
}

SimCaller identifyRoomOwner(const SimPlatformState& state, const std::string& sentTime,
                            const std::string& token, const QString& messageKey) {
    SimCaller caller = identifyCaller(state, sentTime, token, messageKey);
    if (caller.account && caller.roomId() == 0) {
        caller.refusal =
            errorReply(content_codes::kNoRoom, QStringLiteral("尚未开通直播间"), messageKey);
        caller.account.reset();
    }
    return caller;
}

namespace {

std::string sessionToken(const SimRequest& request) {
    return request.method == "GET" ? request.queryValue("token") : request.formValue("token");
}

}  // namespace

SimCaller identifyCaller(const SimPlatformState& state, const SimRequest& request,
                         const QString& messageKey) {
    return identifyCaller(state, request.queryValue("time"), sessionToken(request), messageKey);
}

SimCaller identifyRoomOwner(const SimPlatformState& state, const SimRequest& request,
                            const QString& messageKey) {
    return identifyRoomOwner(state, request.queryValue("time"), sessionToken(request), messageKey);
}

void addHostRoute(SimHttpServer& server, const char* method, int hostKind, const char* path,
                  const char* signingPath, SimHandler handler) {
    const SimSignRule rule = *signingPath != '\0' ? SimSignRule::CommonLists : SimSignRule::None;
    server.routes().add(
        {method, SimAddressTable::Host, hostKind, path, signingPath, rule, std::move(handler)});
}

}  // namespace tolvane::sim

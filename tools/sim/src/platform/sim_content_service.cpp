#include "platform/sim_content_service.h"

#include <QJsonObject>
#include <cstdlib>

#include "http/sim_http_server.h"
#include "http/sim_replies.h"
#include "platform/sim_platform_state.h"

namespace tolvane::sim {

namespace {

using namespace content_codes;

SimReply timestamp(SimPlatformState& state) {
    const auto failure = state.takeTimestampFailure();
    if (!failure) {
        return okReply(static_cast<qint64>(state.nowSeconds()));
    }
    switch (*failure) {
        case SimPlatformState::TimeFailure::NegativeTime:
            return okReply(-5);
        case SimPlatformState::TimeFailure::ServerError:
            return SimReply{500, "{\"error\":500,\"data\":\"clock unavailable\"}",
                            "application/json"};
        case SimPlatformState::TimeFailure::NotJson:
            break;
    }
    return SimReply{200, "<html>maintenance</html>", "text/html"};
}

// Signed requests must carry the platform's time, which is why the module keeps an offset.
bool timeInWindow(const SimPlatformState& state, const SimRequest& request) {
    const long long sent = std::atoll(request.queryValue("time").c_str());
    return std::llabs(sent - state.nowSeconds()) <= kSignedTimeWindowSeconds;
}

SimReply myInfo(SimPlatformState& state, const SimRequest& request) {
    if (!timeInWindow(state, request)) {
        return errorReply(kTimeOutOfWindow, QStringLiteral("请求时间无效"));
    }
    const auto session = state.sessionByToken(request.param("token"));
    if (!session) {
        return errorReply(kSessionExpired, QStringLiteral("登录已失效，请重新登录"));
    }
    const auto account = state.accountByUid(session->uid);
    if (!account) {
        return errorReply(kSessionExpired, QStringLiteral("登录已失效，请重新登录"));
    }
    if (account->profileError != 0) {
        return errorReply(account->profileError, QStringLiteral("用户信息获取失败"));
    }
    return okReply(account->profile);
}

}  // namespace

void addContentRoutes(SimHttpServer& server, SimPlatformState& state) {
    SimPlatformState* s = &state;
    server.routes().add({"GET", SimAddressTable::Host, 0, "/api/v1/timestamp", "",
                         SimSignRule::None, [s](const SimRequest&) { return timestamp(*s); }});
    server.routes().add({"POST", SimAddressTable::Host, 0, "/api/v1/my_info", "my_info",
                         SimSignRule::CommonLists,
                         [s](const SimRequest& r) { return myInfo(*s, r); }});
}

}  // namespace tolvane::sim

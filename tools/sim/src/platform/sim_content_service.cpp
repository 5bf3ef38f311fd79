#include "platform/sim_content_service.h"

#include <QJsonObject>

#include "http/sim_http_server.h"
#include "http/sim_replies.h"
#include "platform/sim_caller.h"
#include "platform/sim_platform_state.h"

namespace tolvane::sim {

namespace {

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

SimReply myInfo(SimPlatformState& state, const SimRequest& request) {
    const SimCaller caller =
        identifyCaller(state, request.queryValue("time"), request.param("token"));
    const auto& account = caller.account;
    if (!account) {
        return caller.refusal;
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

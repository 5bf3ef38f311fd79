// The room's black list: the host reads the platform's replies itself.
#include "service/vx_net_service_imp.h"

namespace {

using tolvane::net::HostKind;
using tolvane::net::HttpMethod;
using tolvane::net::registerOperation;

const tolvane::net::OperationRow& kBlackList =
    registerOperation(hostRow("get_black_user_list", HttpMethod::Post, HostKind::ContentApi,
                              "/api/v1/room_black", "room_black"));

const tolvane::net::OperationRow& kUnblackUser = registerOperation(hostRow(
    "unblack_user", HttpMethod::Post, HostKind::ContentApi, "/api/v1/del_black", "del_black"));

}  // namespace

// slot 10
int32_t VxNetServiceImp::get_black_user_list(std::string& reply) {
    const ParamList items{{QStringLiteral("token"), QString::fromStdString(sessionToken())},
                          {QStringLiteral("biz_type"), QString::number(getBizType())}};
    return runRawReplyOperation(kBlackList, items, reply);
}

// slot 11
int32_t VxNetServiceImp::unblack_user(const std::string& userId, std::string& reply) {
    const ParamList items{{QStringLiteral("token"), QString::fromStdString(sessionToken())},
                          {QStringLiteral("uid"), QString::fromStdString(userId)},
                          {QStringLiteral("room_id"), QString::number(getRoomId())}};
    return runRawReplyOperation(kUnblackUser, items, reply);
}

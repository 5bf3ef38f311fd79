#include "corvid/message_codes.h"

#include <iterator>

namespace {

// Views, so the lookup every message makes compares lengths before bytes, without strlen.
struct TypeEntry {
    std::string_view name;
    int32_t code;
};

constexpr TypeEntry kTypes[] = {
    {"loginres", kMessageTypeLoginReply},
    {"chatmsg", kMessageTypeChat},
    {"gift", kMessageTypeGift},
    {"liveend", kMessageTypeShowEnd},
    {"keepalive", kMessageTypeKeepAlive},
    {"memberinfores", kMessageTypeMemberInfoReply},
    {"error", kMessageTypeError},
    {"dayrk", kMessageTypeDayRank},
    {"weekrk", kMessageTypeWeekRank},
    {"monthrk", kMessageTypeMonthRank},
    {"totalrk", kMessageTypeTotalRank},
    {"fansrk", kMessageTypeFansRank},
    {"fansswrk", kMessageTypeFansWeekRank},
    {"dfansrk", kMessageTypeDayFansRank},
    {"olviplst", kMessageTypeOnlineVipList},
    {"noble_num_info", kMessageTypeNoticeValue},
};

}  // namespace

int32_t messageTypeCode(std::string_view typeName) {
    for (const TypeEntry& entry : kTypes) {
        if (typeName == entry.name) {
            return entry.code;
        }
    }
    return kMessageTypeUnknown;
}

const char* messageTypeName(int32_t code) {
    for (const TypeEntry& entry : kTypes) {
        if (entry.code == code) {
            return entry.name.data();
        }
    }
    return nullptr;
}

#pragma once

#include <cstdint>
#include <string_view>

// Type codes that MessageDecoder::classify returns, by message type name.
enum MessageTypeCode : int32_t {
    kMessageTypeInvalid = -1,          // not a barrage text, or no "type" first
    kMessageTypeUnknown = 0,           // a well-formed message of a type without a code
    kMessageTypeLoginReply = 1,        // "loginres"
    kMessageTypeChat = 2,              // "chatmsg"
    kMessageTypeGift = 3,              // "gift"
    kMessageTypeShowEnd = 4,           // "liveend"
    kMessageTypeKeepAlive = 9,         // "keepalive"
    kMessageTypeMemberInfoReply = 10,  // "memberinfores"
    kMessageTypeError = 13,            // "error"
    kMessageTypeDayRank = 20,          // "dayrk"
    kMessageTypeWeekRank = 21,         // "weekrk"
    kMessageTypeMonthRank = 22,        // "monthrk"
    kMessageTypeTotalRank = 23,        // "totalrk"
    kMessageTypeFansRank = 24,         // "fansrk", carries the fans brand
    kMessageTypeFansWeekRank = 25,     // "fansswrk"
    kMessageTypeDayFansRank = 26,      // "dfansrk"
    kMessageTypeOnlineVipList = 27,    // "olviplst"
    kMessageTypeNoticeValue = 32,      // "noble_num_info"
};

// The code of a type name; kMessageTypeUnknown for a name without one.
int32_t messageTypeCode(std::string_view typeName);
// The type name of a code, or null for a code without a name.
const char* messageTypeName(int32_t code);

// Codes the client passes to OnErrorFn, OnRepeaterServerConnectFinishedFn and
// OnRepeaterServerConnectAbortFn. They lie above every code a server sends in an "error"
// message, so the two can't be confused in a log.
enum MessageClientError : int32_t {
    kMessageClientOk = 0,
    kMessageClientConnectFailed = 10001,     // refused, unreachable, unresolvable or timed out
    kMessageClientClosedByServer = 10002,    // the server closed the connection
    kMessageClientConnectionReset = 10003,   // a read or write failed (reset, broken pipe)
    kMessageClientProtocolError = 10004,     // a frame broke the framing rules
    kMessageClientLoginTimeout = 10005,      // no login reply in time
    kMessageClientKeepAliveTimeout = 10006,  // keep-alives went unanswered
};

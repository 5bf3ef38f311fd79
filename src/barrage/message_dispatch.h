#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "corvid/message_records.h"
#include "tolvane/barrage_message.h"

// The decisions the barrage client takes on received messages, apart from any I/O, and the
// two kinds of message it builds itself.
namespace tolvane::barrage {

// Status codes the client reports to its listener.
enum RoomStatusCode : int32_t {
    kRoomStatusLoginOk = 0,
    kRoomStatusKicked = 211,
    kRoomStatusReconnecting = 212,
    kRoomStatusConnectionLost = 213,
    kRoomStatusRejected = 230,
};

// What a server "error" message makes the client do.
struct ErrorVerdict {
    bool report = false;  // pass status to the listener
    int32_t status = 0;
    bool reconnect = false;
    bool setKicked = false;
    bool clearLoggedIn = false;
    bool setStopped = false;

    bool operator==(const ErrorVerdict& other) const;
};

ErrorVerdict errorVerdict(int32_t code, bool kicked);

// The host's show-end reason for the server's one; -1 for a reason the host has no name for.
int32_t mapShowEndReason(int32_t serverReason);

// The host's view of a classified message; header values keep the order the host reads.
BarrageMessage makeBarrageMessage(int32_t typeCode, const char* rawText,
                                  const MessageHeader& header);
// The same into an existing message, whose strings keep their storage from the last one.
void fillBarrageMessage(BarrageMessage& message, int32_t typeCode, std::string_view rawText,
                        const MessageHeader& header);

// Channel names the client asks for right after a login reply ("noble_num_info" twice, as
// the platform's own client has always done) and the ones it subscribes to.
extern const char* const kLoginChannelRequests[10];
extern const char* const kLoginSubscriptions[8];

// Encoded "get" and "sub"/"unsub" texts; empty when the encoder refused the items.
std::string channelRequestText(const char* channel);
std::string subscriptionText(bool subscribe, const char* channel);

}  // namespace tolvane::barrage

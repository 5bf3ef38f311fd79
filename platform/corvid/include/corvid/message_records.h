#pragma once

#include <cstddef>
#include <cstdint>

// The records MessageDecoder fills. Their layouts are a binary interface: every field sits
// at a fixed byte offset. Texts are NUL-terminated, cut at a UTF-8 character boundary when
// the message's text is longer than the field.

// What classify() reads from any message.
struct MessageHeader {
    int32_t sequence;    // "seq": the server's running message number
    int32_t roomId;      // "rid"
    int32_t userId;      // "uid": the user the message is about or from
    int32_t timestamp;   // "ts": server time in seconds
    int32_t level;       // "lv": the user's level
    int32_t itemCount;   // number of items in the message
    char typeName[128];  // "type"
    int32_t textLength;  // length of the raw text in bytes
};

// Answer to the client's keep-alive.
struct KeepAliveRecord {
    int32_t tick;       // "tick": the number of the keep-alive answered
    int32_t online;     // "online": viewers in the room
    int32_t hot;        // "hot": the room's popularity value
    int32_t timestamp;  // "ts"
};

// Answer to a member information request.
struct MemberInfoRecord {
    int32_t roomId;     // "rid"
    int32_t ownerId;    // "ouid"
    int32_t level;      // "lv"
    int32_t fans;       // "fans"
    int32_t followers;  // "fl"
    int32_t reserved[3];
    int32_t memberCount;  // "mc"
    char roomName[128];   // "rn"
    char ownerName[64];   // "on"
    char notice[2948];    // "nt"
};

// Answer to the login.
struct LoginReplyRecord {
    int32_t result;            // "ret"
    int32_t userId;            // "uid"
    int32_t roomId;            // "rid"
    int32_t serverTime;        // "ts"
    int32_t keepAliveSeconds;  // "kas": the interval the server expects
    char session[64];          // "sid"
    char nickname[64];         // "nn"
    char serverName[64];       // "sn"
    int32_t roomStatus;        // "rs"
    int32_t level;             // "lv"
    int32_t reserved[2];
};

// The numeric notice ("noble_num_info").
struct NoticeValueRecord {
    int32_t roomId;     // "rid"
    int32_t value;      // "num"
    int32_t timestamp;  // "ts"
    int32_t reserved;
};

// The fans brand carried by a fans ranking ("fansrk").
struct FansBrandRecord {
    int32_t roomId;  // "rid"
    char brand[64];  // "bn"
};

static_assert(sizeof(MessageHeader) == 156);
static_assert(offsetof(MessageHeader, roomId) == 4 && offsetof(MessageHeader, userId) == 8 &&
              offsetof(MessageHeader, timestamp) == 12 && offsetof(MessageHeader, level) == 16 &&
              offsetof(MessageHeader, itemCount) == 20 && offsetof(MessageHeader, typeName) == 24 &&
              offsetof(MessageHeader, textLength) == 152);
static_assert(sizeof(KeepAliveRecord) == 16 && offsetof(KeepAliveRecord, online) == 4 &&
              offsetof(KeepAliveRecord, hot) == 8);
static_assert(sizeof(MemberInfoRecord) == 3176 && offsetof(MemberInfoRecord, memberCount) == 32);
static_assert(sizeof(LoginReplyRecord) == 228 && offsetof(LoginReplyRecord, roomStatus) == 212);
static_assert(sizeof(NoticeValueRecord) == 16 && offsetof(NoticeValueRecord, value) == 4);
static_assert(sizeof(FansBrandRecord) == 68 && offsetof(FansBrandRecord, brand) == 4);

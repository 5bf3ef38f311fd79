#pragma once

// Message type names and item keys of the barrage connection, shared by the message client,
// its decoder and the simulator's servers so that both ends spell them the same way.
namespace vxwire {

// Every message begins with its type.
constexpr const char* kType = "type";

// Types sent by the client.
constexpr const char* kLogin = "login";
constexpr const char* kKeepAlive = "keepalive";  // also the server's answer
constexpr const char* kChat = "chatmsg";         // also relayed by the server
constexpr const char* kRoomText = "roomtext";
constexpr const char* kGiftSend = "giftsend";
constexpr const char* kMemberInfo = "memberinfo";
constexpr const char* kChannelGet = "get";
constexpr const char* kSubscribe = "sub";
constexpr const char* kUnsubscribe = "unsub";

// Types sent by the server.
constexpr const char* kLoginReply = "loginres";
constexpr const char* kGift = "gift";
constexpr const char* kShowEnd = "liveend";
constexpr const char* kMemberInfoReply = "memberinfores";
constexpr const char* kError = "error";
constexpr const char* kNobleCount = "noble_num_info";
constexpr const char* kFansBrand = "fansrk";

// Header items any server message may carry.
constexpr const char* kSequence = "seq";
constexpr const char* kRoomId = "rid";
constexpr const char* kUserId = "uid";
constexpr const char* kTimestamp = "ts";
constexpr const char* kLevel = "lv";

// Login items, in the order of the client's login call.
constexpr const char* kLoginText1 = "ltx1";
constexpr const char* kLoginNumber = "lnum";
constexpr const char* kLoginText2 = "ltx2";
constexpr const char* kClientType = "ct";
constexpr const char* kExtra = "ext";
constexpr const char* kLoginMode = "lmode";
constexpr const char* kParamText = "ptx";     // from the client's parameter text call
constexpr const char* kParamNumber = "pnum";  // from the client's number-and-text call
constexpr const char* kParamText2 = "ptx2";

// Items of other messages.
constexpr const char* kTick = "tick";
constexpr const char* kOnline = "online";
constexpr const char* kHot = "hot";
constexpr const char* kText = "txt";
constexpr const char* kNickname = "nn";
constexpr const char* kChannel = "msgtype";  // channel requests
constexpr const char* kSubChannel = "mt";    // subscriptions
constexpr const char* kCode = "code";
constexpr const char* kReason = "reason";
constexpr const char* kBanHours = "bh";
constexpr const char* kMemberCount = "mc";
constexpr const char* kBrand = "bn";
constexpr const char* kNumber = "num";
constexpr const char* kList = "list";
constexpr const char* kGiftArgs[] = {"ga1", "ga2", "ga3", "ga4", "ga5", "ga6", "ga7"};

}  // namespace vxwire

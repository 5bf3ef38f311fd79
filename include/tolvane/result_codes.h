#pragma once

#include <cstdint>

// Names for the values the service hands to a host: the int32_t results of its operations and
// the room statuses of ServiceObserver::onRoomStatus. A code that is not named here is the
// platform's own, passed on unchanged; its message out-parameter says what it means.
namespace tolvane {

// Results the module produces itself.
constexpr int32_t kResultOk = 0;             // success
constexpr int32_t kResultUnusableReply = 1;  // "success" without the data the call needs
constexpr int32_t kResultNoAnswer = 210;     // no answer: refused, timed out, TLS or HTTP failure

// Refusals of the platform, translated from its own codes (in brackets). Those whose meaning
// is the platform's alone carry the code in their name; show the message out-parameter.
constexpr int32_t kResultLoginRefused = 214;  // (603) wrong name or password
constexpr int32_t kResultPlatform101 = 215;   // (101)
constexpr int32_t kResultPlatform102 = 216;   // (102)
// (604, 608) the room may not go live now; get_all_rtmp_addresses then hands out the reason,
// the opening time and the duration as its three lines.
constexpr int32_t kResultLiveRefused = 217;
constexpr int32_t kResultPlatform605 = 218;         // (605)
constexpr int32_t kResultPlatform612 = 219;         // (612)
constexpr int32_t kResultSessionExpired = 220;      // (606) or nobody logged in: log in again
constexpr int32_t kResultSessionEnded = 221;        // (607) the session ended: log in again
constexpr int32_t kResultPlatform10 = 222;          // (10)
constexpr int32_t kResultVerificationNeeded = 223;  // (9) the anchor must verify on a web page
constexpr int32_t kResultQrCodeInvalid = 225;       // (613) the QR code ended or never existed
constexpr int32_t kResultWrongSmsCode = 226;        // (609) the SMS code is wrong
constexpr int32_t kResultLongTokenExpired = 227;    // (120012) log in with the password again
constexpr int32_t kResultRemoteLoginNeeded = 228;   // (130014) confirm the login by SMS code
constexpr int32_t kResultPlatform618 = 232;         // (618)
constexpr int32_t kResultQrCodeWaiting = 233;       // (130018) nobody has scanned it yet
// 224, 229 and 231 come from no translation: only a platform that sends them itself, as codes
// 201 to 233 pass unchanged. 230 is a room status.

// The reply was not the platform's JSON envelope; it is written to tolvane.log.
constexpr int32_t kResultReplyNotJson = -1000;        // not JSON, or a fractional code
constexpr int32_t kResultReplyNotObject = -1001;      // JSON, but not an object
constexpr int32_t kResultReplyWithoutCode = -1002;    // an object without its code
constexpr int32_t kResultReplyCodeNotNumber = -1003;  // a code that is not a number

// Room statuses of ServiceObserver::onRoomStatus, from the barrage connection.
constexpr int32_t kRoomStatusLoggedIn = 0;          // logged in to the room's barrage server
constexpr int32_t kRoomStatusKicked = 211;          // kicked out: no reconnect until startBarrage
constexpr int32_t kRoomStatusReconnecting = 212;    // the server asked for a new connection
constexpr int32_t kRoomStatusConnectionLost = 213;  // connection lost: reconnects unless kicked
constexpr int32_t kRoomStatusRejected = 230;        // the server refused the login: no reconnect

}  // namespace tolvane

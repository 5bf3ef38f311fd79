#pragma once

namespace tolvane::sim {

class SimHttpServer;
class SimPlatformState;

// The content API's phone binding answers its code under "result", not "error".
namespace account_code_results {
constexpr int kBadPhone = 4401;             // "bindphonenum" is not a phone number
constexpr int kPhoneTaken = 4402;           // another account has the number; confirm to move it
constexpr int kBindingNotRequested = 4403;  // no code was sent to this number for binding
constexpr int kBindingExpired = 4404;       // the code sent for binding ran out
}  // namespace account_code_results

// The passport host's app authorisation answers under "error" as usual.
namespace app_auth_codes {
constexpr int kHeaderSignatureMismatch = 1012;  // aid, time or auth headers differ from the query
constexpr int kUnknownAuthType = 4501;          // "authType" other than VXTool, or "bizType" not 13
}  // namespace app_auth_codes

// /api/v1/sendPhoneCaptcha2 and /api/v1/bindphone2 (content API, host kind 0), and
// /japi/app/auth/port and /japi/app/auth/generateCode (passport host, host kind 2).
void addAccountCodeRoutes(SimHttpServer& server, SimPlatformState& state);

}  // namespace tolvane::sim

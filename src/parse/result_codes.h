#pragma once

#include <cstdint>

// Result codes the service returns on its own, beside the translated server codes.
namespace tolvane {

// The reply was well-formed but lacked what the operation needs.
constexpr int32_t kUnusableReply = 1;

// The request got no answer: no connection, a time-out, an HTTP error status.
constexpr int32_t kNoAnswer = 210;

// Nobody is logged in, so nothing was sent. The code the platform's "session expired" maps to,
// so that a host answers both with a login.
constexpr int32_t kNoSession = 220;

}  // namespace tolvane

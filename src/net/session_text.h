#pragma once

#include <QByteArray>
#include <string>

#include "tolvane/account_records.h"

namespace tolvane::net {

// "uid_bizType_shortToken_clientType_longTokenId", at most 1023 bytes; before any login
// (uid "-1", everything else empty or 0) it is -1_0__0_0.
std::string sessionToken(const ShortTokenInfo& info);

// The "User-Device" header value: Base64 of deviceId + "|" + clientVersion.
QByteArray userDeviceValue(const std::string& deviceId, const std::string& clientVersion);

}  // namespace tolvane::net

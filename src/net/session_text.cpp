#include "net/session_text.h"

#include <cstdio>

namespace tolvane::net {

std::string sessionToken(const ShortTokenInfo& info) {
    // The servers have always received at most 1023 bytes here; longer tokens are cut.
    char buffer[1024] = {};
    std::snprintf(buffer, sizeof(buffer), "%s_%d_%s_%d_%d", info.uid.c_str(), info.bizType,
                  info.shortToken.c_str(), info.clientType, info.longTokenId);
    return std::string(buffer);
}

QByteArray userDeviceValue(const std::string& deviceId, const std::string& clientVersion) {
    QByteArray text = QByteArray::fromStdString(deviceId);
    text += '|';
    text += QByteArray::fromStdString(clientVersion);
    return text.toBase64();
}

}  // namespace tolvane::net

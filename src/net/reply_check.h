#pragma once

#include <QByteArray>

#include "net/curl_session.h"

namespace tolvane::net {

// Hands back the server's body when the exchange succeeded (status 1..399); otherwise
// writes a reply of the platform's {error, msg, data} shape so that every caller parses one
// format, and returns false.
bool checkReply(QByteArray& reply, const CurlResponse& response);

}  // namespace tolvane::net

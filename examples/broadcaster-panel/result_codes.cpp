#include "result_codes.h"

namespace {

const char* knownName(int32_t code) {
    switch (code) {
        case 0:
            return "Ok";
        case 1:
            return "NoPayload";
        case kNoAnswer:
            return "NoAnswer";
        case 220:
        case 221:
            return "SessionExpired";
        case 228:
            return "RemoteLoginNeeded";
        case qr_codes::kWaiting:
            return "QrWaiting";
        case qr_codes::kUnknown:
            return "QrUnknown";
        case qr_codes::kScanned:
            return "QrScanned";
        case qr_codes::kExpired:
            return "QrExpired";
        case -1000:
            return "ReplyNotJson";
        case -1001:
            return "ReplyNotObject";
        case -1002:
            return "ReplyWithoutCode";
        case -1003:
            return "ReplyCodeNotNumber";
        default:
            return nullptr;
    }
}

}  // namespace

QString resultCodeName(int32_t code) {
    const char* name = knownName(code);
    if (name == nullptr) {
        // The module's own band of refusals, else the platform's code passed on as it came.
        name = code >= 214 && code <= 233 ? "Refused" : "PlatformCode";
    }
    return QStringLiteral("%1 (%2)").arg(QLatin1String(name)).arg(code);
}

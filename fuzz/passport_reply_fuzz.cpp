// The login library's readers of the passport service's replies: verdict, login and QR code.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "passport_reply.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    if (size > 1 << 20) {
        return 0;
    }
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<int>(size));
    // The HTTP status is taken from the input too, so the error-status branches are reached.
    const int status = size > 0 ? 200 + (data[size - 1] % 4) * 100 : 200;
    const halyard::PassportVerdict verdict = halyard::readVerdict(body, status);
    LoginInfo info;
    RemoteLoginInfo remote;
    const halyard::PassportVerdict login = halyard::readLoginReply(body, status, info, remote);
    QRcodeLoginInfo qrCode;
    const halyard::PassportVerdict qr = halyard::readQrCodeReply(body, status, qrCode);
    // One body gives one verdict, whichever reader took it.
    if (login.errorCode != verdict.errorCode || qr.errorCode != verdict.errorCode ||
        login.message != verdict.message) {
        std::abort();
    }
    return 0;
}

#pragma once

#include <QByteArray>
#include <QString>

#include "halyard/login_records.h"

namespace halyard {

// What the passport service answered, as the login calls report it.
struct PassportVerdict {
    int errorCode = 0;
    QString message;
};

// Code 130014 asks for a remote-login confirmation and carries "ext".
constexpr int kRemoteLoginRequired = 130014;
// A reply that is not the service's JSON envelope.
constexpr int kMalformedReply = -1;

// Reads {"error", "data" | "msg", "ext"}; an HTTP error status without an envelope becomes the
// status as the code.
PassportVerdict readVerdict(const QByteArray& body, int httpStatus);

// Fills the records from a login reply; the login record only on success, the remote-login
// record only when the service asks for confirmation.
PassportVerdict readLoginReply(const QByteArray& body, int httpStatus, LoginInfo& info,
                               RemoteLoginInfo& remote);

PassportVerdict readQrCodeReply(const QByteArray& body, int httpStatus, QRcodeLoginInfo& qrCode);

}  // namespace halyard

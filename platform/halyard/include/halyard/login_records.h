#pragma once

#include <QString>

// Records that the login calls of LoginRequest fill. Field order is part of the library's
// binary interface.

struct LoginInfo {
    QString longToken;
    QString uid;
    int clientType = 0;
    QString createTime;
    int expireIn = 0;
    int longTokenId = 0;
    QString shortToken;
    int bizType = 0;
};

// Filled when the passport service asks for a remote-login confirmation.
struct RemoteLoginInfo {
    int isForeignTel = 0;
    QString hidePhone;
    QString code;
};

// A QR code to show to the anchor: the code the app scans, the page it encodes, and its
// lifetime in seconds.
struct QRcodeLoginInfo {
    QString code;
    QString url;
    int expireSeconds = 0;
};

#pragma once

#include <QString>

// One barrage server as the room information and the gateway name it.
struct ServerAddress {
    QString ip;  // trimmed, a valid IPv4 or IPv6 address
    int port = 0;
};

#pragma once

#include <cstdint>
#include <string>
#include <vector>

// One candidate barrage server, as the gateway reply names it.
struct BarrageServerAddr {
    std::string host;  // IP address or host name, UTF-8
    int32_t port = 0;
};

// Everything the barrage client logs in with; the service copies a whole new set in before
// each login.
struct RoomLoginParams {
    int32_t roomId = -1;
    std::string loginText1;
    int32_t loginNumber = 0;
    std::string loginText2;
    std::vector<BarrageServerAddr> servers;  // tried round-robin, in this order
    int32_t slot21Number = 0;
    std::string slot21Text;
    int32_t clientType = 13;
    std::string slot5Text;
    int32_t loginMode = 3;
};

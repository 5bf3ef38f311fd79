#pragma once

#include <cstdint>
#include <string>

// The anchor's own room as the last successful room-information reply described it.
// A room id of -1 means that no room is known yet.
struct RoomInfo {
    int32_t roomId = -1;
    int32_t vipId = 0;
    int32_t anchorLevel = 0;
    int32_t online = 0;
    std::string roomName;  // 8-bit texts in the local code page (UTF-8 here)
    std::string gameName;
    std::string childName;
    std::string ownerWeight;  // kept as the server writes it, e.g. "12.5t"
    int32_t cateId = 0;
};

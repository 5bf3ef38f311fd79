#pragma once

#include <cstdint>
#include <string>

// One received barrage message as the host sees it. The seven header values keep the
// order the host has always read them in, which differs from the decoder's header layout.
struct BarrageMessage {
    int32_t typeCode = -1;
    std::string rawText;
    std::string typeName;
    int32_t headerAt12 = 0;
    int32_t headerAt8 = 0;
    int32_t headerAt16 = 0;
    int32_t headerAt0 = 0;
    int32_t headerAt4 = 0;
    int32_t headerAt20 = 0;
    int32_t headerAt152 = 0;
};

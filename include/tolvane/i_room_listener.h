#pragma once

#include <cstdint>

#include "tolvane/barrage_message.h"

// How the barrage client reports to the service. Every operation returns 0.
class IRoomListener {
public:
    virtual ~IRoomListener() = default;
    virtual int32_t onRoomStatus(int32_t status) = 0;
    virtual int32_t onMemberInfoValue(int32_t value) = 0;
    virtual int32_t onFansBrand(const char* brand) = 0;
    virtual int32_t onKeepAliveFirst(int32_t value) = 0;
    virtual int32_t onKeepAliveSecond(int32_t value) = 0;
    virtual int32_t onHostText(const char* text) = 0;
    virtual int32_t onShowEnd(int32_t reason, int32_t banHours) = 0;
    virtual int32_t onBarrageMessage(const BarrageMessage* message) = 0;
    virtual int32_t onNoticeValue(int32_t value) = 0;
};

#pragma once

#include <cstdint>
#include <string>

#include "tolvane/barrage_message.h"

// Implemented by the host. Called on the message library's threads, so implementations
// must be safe to call from a thread other than the one that created the service.
class ServiceObserver {
public:
    virtual void onRoomStatus(int32_t status) = 0;
    virtual void onText(const std::string& text) = 0;
    virtual void onShowEnd(int32_t reason, float banHours) = 0;
    // The message is valid only for the duration of the call.
    virtual void onBarrageMessage(const BarrageMessage* message) = 0;

protected:
    ~ServiceObserver() = default;  // the module never deletes the host's observer
};

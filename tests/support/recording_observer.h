#pragma once

#include <string>

#include "support/event_log.h"
#include "tolvane/service_observer.h"

// The host's side: keeps what reaches it as lines such as "status 0", from whichever thread.
class RecordingObserver : public ServiceObserver, public EventLog {
public:
    void onRoomStatus(int32_t status) override { add("status " + std::to_string(status)); }
    void onText(const std::string& text) override { add("text " + text); }
    void onShowEnd(int32_t reason, float hours) override {
        add("end " + std::to_string(reason) + " " + std::to_string(hours));
    }
    void onBarrageMessage(const BarrageMessage* message) override {
        add("message " + message->typeName);
    }
};

#pragma once

#include <string>

#include "support/event_log.h"
#include "tolvane/i_vx_live_room_info.h"

// The host's catalogue observer: keeps what it heard as "table 0" or "room 880001" lines.
class RecordingSubject : public IVxDataSubject, public EventLog {
public:
    void onTableChanged(VxCatalogueTable table) override {
        add("table " + std::to_string(static_cast<int>(table)));
    }
    void onRoomChanged(int32_t roomId) override { add("room " + std::to_string(roomId)); }
};

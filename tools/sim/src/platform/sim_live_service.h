#pragma once

namespace tolvane::sim {

class SimHttpServer;
class SimPlatformState;

// Codes of the live services' own refusals, beside the session, time and room refusals of
// sim_caller.h.
namespace live_codes {
constexpr int kVerificationNeeded = 9;  // the anchor must verify first ("ref_url")
constexpr int kRoomClosed = 608;        // the room may not open now
constexpr int kUnknownLine = 4002;      // "rtmp_id" names none of the room's lines
constexpr int kStaleFms = 4003;         // "fms_val" is not the room's current one
}  // namespace live_codes

// Adds the mobile API's live services: the push lines, starting and closing the show.
void addLiveRoutes(SimHttpServer& server, SimPlatformState& state);

}  // namespace tolvane::sim

#pragma once

namespace tolvane::sim {

class SimHttpServer;
class SimPlatformState;

// Codes of the room settings services' own refusals, beside those of sim_caller.h.
namespace room_settings_codes {
constexpr int kNotTheCallersRoom = 4201;  // "rid" names a room the caller does not own
constexpr int kRoomAlreadyOwned = 4202;   // createLiveRoom for an account that has a room
constexpr int kEmptyReminder = 4203;      // a reminder without a title
constexpr int kUnknownRoom = 4204;        // "room_id" is not a room id
}  // namespace room_settings_codes

// Adds the anchor's room settings services: video settings, watermark corners, bit-rate
// presets, room creation, the followers' reminder and the live statistics.
void addRoomSettingsRoutes(SimHttpServer& server, SimPlatformState& state);

}  // namespace tolvane::sim

#pragma once

namespace tolvane::sim {

class SimHttpServer;
class SimPlatformState;

// Adds the routes about the anchor's room: the room information ("my_room"), the barrage
// gateway and the emotion white list of the web configuration service.
void addRoomRoutes(SimHttpServer& server, SimPlatformState& state);

}  // namespace tolvane::sim

#pragma once

namespace tolvane::sim {

class SimHttpServer;
class SimPlatformState;

// Adds the content API's routes: the server clock and the anchor's profile.
void addContentRoutes(SimHttpServer& server, SimPlatformState& state);

}  // namespace tolvane::sim

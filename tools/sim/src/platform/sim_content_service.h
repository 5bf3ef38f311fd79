#pragma once

namespace tolvane::sim {

class SimHttpServer;
class SimPlatformState;

namespace content_codes {
constexpr int kSessionExpired = 606;    // the "token" names no live session
constexpr int kTimeOutOfWindow = 1011;  // "time" too far from the server's clock
}  // namespace content_codes

// How far a signed request's "time" may stray from the server clock, in seconds.
constexpr int kSignedTimeWindowSeconds = 300;

// Adds the content API's routes: the server clock and the anchor's profile.
void addContentRoutes(SimHttpServer& server, SimPlatformState& state);

}  // namespace tolvane::sim

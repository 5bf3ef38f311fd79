#pragma once

#include <string>
#include <vector>

namespace tolvane::sim {

class SimHttpServer;
class SimPlatformState;

// What the phone app does to a QR session, as routes a person or a test reaches from outside
// the process: POST /sim/qr/scan (form "code", "account", default "anchor"), /sim/qr/confirm
// and /sim/qr/expire (form "code"), GET /sim/qr/state?code=. Each answers
// {"error": 0, "data": {"code", "state"}}, 613 for an unknown code, 4510 for a step the
// session's state does not allow.
void addQrControlRoutes(SimHttpServer& server, SimPlatformState& state);

// `tolvane-sim qr ACTION ORIGIN CODE [ACCOUNT]`: drives a running simulator's QR session
// through those routes and prints each state it reached. "confirm" on a session nobody
// scanned scans it first and lets a poll see that before it confirms. Returns the exit code.
int runQrCommand(const std::vector<std::string>& args);

}  // namespace tolvane::sim

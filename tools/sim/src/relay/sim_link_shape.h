#pragma once

namespace tolvane::sim {

// The line a relay imitates: what every round trip costs and what each direction carries.
struct SimLinkShape {
    int latencyMs = 0;         // added to every round trip; each direction waits half of it
    int bandwidthKbps = 0;     // kilobits a second in each direction; 0 leaves the rate alone
    bool relayAlways = false;  // a relay even for a fast line, for its counts
    bool relays() const { return relayAlways || latencyMs > 0 || bandwidthKbps > 0; }
};

}  // namespace tolvane::sim

#pragma once

#include <QString>
#include <memory>

#include "platform/sim_platform_state.h"
#include "sim_environment.h"

namespace tolvane::sim {

// The whole simulated platform as tests and the demo use it: its web services on one
// loopback server, their shared state, and a default.data that points the module at them.
class SimPlatform {
public:
    explicit SimPlatform(const QString& folder,
                         SimEnvironment::Options options = SimEnvironment::Options());
    ~SimPlatform();
    SimPlatform(const SimPlatform&) = delete;
    SimPlatform& operator=(const SimPlatform&) = delete;

    bool start();
    void stop();

    SimEnvironment& environment() { return environment_; }
    SimHttpServer& http() { return environment_.http(); }
    SimPlatformState& state() { return state_; }

private:
    SimPlatformState state_;
    SimEnvironment environment_;
};

}  // namespace tolvane::sim

#pragma once

#include <QString>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/sim_feedback_service.h"
#include "platform/sim_platform_state.h"
#include "sim_environment.h"

namespace sim {
class BarrageServer;
}  // namespace sim

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
    // Feedback reports the platform received.
    SimFeedbackBox& feedback() { return feedback_; }

    // Starts `count` more barrage servers and names every running one in both the gateway
    // list and the room list, so that either reply alone leads the client to a server.
    // False when a server could not listen. A show that ends (closeLive) is announced on
    // every running server.
    bool startBarrageServers(int count);
    int barrageServerCount() const;
    ::sim::BarrageServer& barrageServer(int index);
    // The relay in front of a barrage server while the platform imitates a slow line, else null.
    const SimRelay* barrageRelay(int index) const;

private:
    void announceShowEnd();

    SimPlatformState state_;
    SimFeedbackBox feedback_;
    SimEnvironment environment_;
    // Guards the list only: the HTTP threads announce show ends while tests add servers.
    mutable std::mutex barrageMutex_;
    // Declared last so that the servers stop before the state their lists live in.
    std::vector<std::unique_ptr<::sim::BarrageServer>> barrageServers_;
    // After the servers, so that the relays in front of them close first.
    std::vector<std::unique_ptr<SimRelay>> barrageRelays_;
};

}  // namespace tolvane::sim

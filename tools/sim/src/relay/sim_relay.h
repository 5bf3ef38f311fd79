#pragma once

#include <asio.hpp>
#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <thread>

#include "relay/sim_link_shape.h"

namespace tolvane::sim {

class SimRelayConnection;

// Counts shared by a relay and its connections, which may outlive a stop by a moment.
struct SimRelayCounts {
    std::atomic<int> connections{0};
    std::atomic<int> tlsHandshakes{0};
};

// A TCP relay on 127.0.0.1 and an ephemeral port in front of one target, with an I/O thread of
// its own. Each connection it accepts gets a connection of its own to the target, and the bytes
// of each direction arrive in order, half the latency late and no faster than the bandwidth.
// The kernel completes a loopback handshake at once, so the relay charges the TCP handshake's
// round trip to the first bytes instead: nothing is delivered before a latency has passed
// since the accept. Every operation may be called from any thread.
class SimRelay {
public:
    SimRelay(std::string targetHost, uint16_t targetPort, SimLinkShape shape);
    ~SimRelay();
    SimRelay(const SimRelay&) = delete;
    SimRelay& operator=(const SimRelay&) = delete;

    // Listens and starts the thread; false when no port could be had.
    bool start();
    // Closes the listener and every relayed connection, and joins the thread; may be repeated.
    void stop();

    static constexpr const char* host() { return "127.0.0.1"; }
    uint16_t port() const { return port_; }
    const SimLinkShape& shape() const { return shape_; }

    // Connections accepted since start.
    int connections() const { return counts_->connections.load(); }
    // Accepted connections whose first bytes were a TLS ClientHello, full or resumed.
    int tlsHandshakes() const { return counts_->tlsHandshakes.load(); }

private:
    void acceptNext();

    asio::io_context io_;
    asio::ip::tcp::acceptor acceptor_;
    asio::ip::tcp::endpoint target_;
    const SimLinkShape shape_;
    uint16_t port_ = 0;
    std::shared_ptr<SimRelayCounts> counts_;
    // I/O thread only.
    std::map<int, std::shared_ptr<SimRelayConnection>> open_;
    int nextId_ = 0;
    std::thread thread_;
};

}  // namespace tolvane::sim

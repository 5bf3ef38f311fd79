// The relay that imitates a slow line in front of the simulator's servers.
#include <gtest/gtest.h>
#include <httplib.h>

#include <chrono>
#include <string>
#include <thread>

#include "relay/sim_relay.h"
#include "sim/sim_test_support.h"
#include "sim_environment.h"
#include "support/scoped_env.h"
#include "support/wait.h"

namespace {

using Clock = std::chrono::steady_clock;
using tolvane::sim::SimLinkShape;
using tolvane::sim::SimRelay;

// Answers every POST with its body, on a thread of its own.
class EchoServer {
public:
    EchoServer() {
        server_.Post("/", [](const httplib::Request& in, httplib::Response& out) {
            out.set_content(in.body, "application/octet-stream");
        });
        port_ = static_cast<uint16_t>(server_.bind_to_any_port(SimRelay::host()));
        thread_ = std::thread([this] { server_.listen_after_bind(); });
        EXPECT_TRUE(waitUntil([this] { return server_.is_running(); }))
            << "watchdog: waiting for the echo server to listen";
    }
    ~EchoServer() {
        server_.stop();
        thread_.join();
    }
    uint16_t port() const { return port_; }

private:
    httplib::Server server_;
    uint16_t port_ = 0;
    std::thread thread_;
};

// A client that keeps its connection; its time-outs fail a stuck relay in seconds.
httplib::Client clientOf(const SimRelay& relay) {
    httplib::Client client =
        clientFor("http://" + std::string(SimRelay::host()) + ":" + std::to_string(relay.port()));
    client.set_keep_alive(true);
    return client;
}

// What came back for the bytes; empty when nothing did.
std::string echo(httplib::Client& client, const std::string& bytes) {
    const httplib::Result reply = client.Post("/", bytes, "application/octet-stream");
    EXPECT_TRUE(reply) << "watchdog: no echo of " << bytes.size()
                       << " bytes: " << httplib::to_string(reply.error());
    return reply ? reply->body : "";
}

long long msSince(Clock::time_point start) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

// A pattern that shows any byte lost, doubled or moved.
std::string pattern(std::size_t size, int seed) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>((i * 131 + i / 251 + static_cast<std::size_t>(seed)) & 0xff);
    }
    return bytes;
}

}  // namespace

TEST(SimRelay, EveryRoundTripAndTheHandshakeCostTheLatency) {
    EchoServer server;
    for (const int latency : {60, 150}) {
        SimRelay relay(SimRelay::host(), server.port(), SimLinkShape{latency, 0});
        ASSERT_TRUE(relay.start());
        httplib::Client client = clientOf(relay);
        const auto start = Clock::now();
        // The handshake's round trip is charged to the first exchange.
        ASSERT_EQ(echo(client, "ping"), "ping");
        EXPECT_GE(msSince(start), 2 * latency) << latency;
        for (int i = 0; i < 2; ++i) {
            const auto again = Clock::now();
            ASSERT_EQ(echo(client, "pong"), "pong");
            EXPECT_GE(msSince(again), latency) << latency;
            EXPECT_LT(msSince(again), latency + 400) << latency;
        }
        EXPECT_EQ(relay.connections(), 1);
    }
}

TEST(SimRelay, CarriesEveryByteInOrderAndCountsItsConnections) {
    EchoServer server;
    SimRelay relay(SimRelay::host(), server.port(), SimLinkShape{10, 0});
    ASSERT_TRUE(relay.start());
    for (int i = 0; i < 3; ++i) {
        httplib::Client client = clientOf(relay);
        const std::string bytes = pattern(std::size_t{1} << 20, i);
        EXPECT_TRUE(echo(client, bytes) == bytes) << "connection " << i;
    }
    EXPECT_EQ(relay.connections(), 3);
    EXPECT_EQ(relay.tlsHandshakes(), 0);
}

TEST(SimRelay, HoldsEachDirectionToItsBandwidth) {
    EchoServer server;
    // 2000 kbit/s carries 250 kB a second: the reply follows the whole request, 0.2 s each.
    SimRelay relay(SimRelay::host(), server.port(), SimLinkShape{0, 2000});
    ASSERT_TRUE(relay.start());
    httplib::Client client = clientOf(relay);
    const std::string bytes = pattern(50 * 1000, 7);
    const auto start = Clock::now();
    EXPECT_TRUE(echo(client, bytes) == bytes);
    EXPECT_GE(msSince(start), 380);
    EXPECT_LT(msSince(start), 1500);
}

TEST(SimRelay, StandsBeforeTheSimulatorsHttpsServerAndCountsItsHandshakes) {
    IsolatedWorkspace workspace;
    tolvane::sim::SimEnvironment::Options options;
    options.https = true;
    options.link.latencyMs = 20;
    tolvane::sim::SimEnvironment sim(workspace.path(), options);
    ASSERT_TRUE(sim.start());
    ASSERT_NE(sim.relay(), nullptr);
    EXPECT_EQ(sim.origin(), "https://127.0.0.1:" + std::to_string(sim.relay()->port()));

    httplib::Client client = clientFor(sim.origin());
    client.set_ca_cert_path(sim.caFile().c_str());
    client.set_keep_alive(true);
    for (int i = 0; i < 2; ++i) {
        const auto reply = client.Get("/sim/echo/none");
        ASSERT_TRUE(reply) << "request " << i;
        EXPECT_EQ(reply->status, 200);
    }
    // Both requests went over one kept connection and its one handshake.
    EXPECT_EQ(sim.relay()->connections(), 1);
    EXPECT_EQ(sim.relay()->tlsHandshakes(), 1);
    EXPECT_EQ(sim.http().requestLog().size(), 2u);
}

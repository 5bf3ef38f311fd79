// The relay that imitates a slow line in front of the simulator's servers.
#include <gtest/gtest.h>
#include <httplib.h>

#include <QTemporaryDir>
#include <array>
#include <asio.hpp>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "relay/sim_relay.h"
#include "sim_environment.h"
#include "support/scoped_env.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using tolvane::sim::SimLinkShape;
using tolvane::sim::SimRelay;

// Sends back whatever it receives, on a thread of its own.
class EchoServer {
public:
    EchoServer() : acceptor_(io_, {asio::ip::make_address("127.0.0.1"), 0}) {
        port_ = acceptor_.local_endpoint().port();
        accept();
        thread_ = std::thread([this] { io_.run(); });
    }
    ~EchoServer() {
        asio::post(io_, [this] {
            std::error_code ignored;
            acceptor_.close(ignored);
            for (const auto& socket : sockets_) {
                socket->close(ignored);
            }
        });
        thread_.join();
    }
    uint16_t port() const { return port_; }

private:
    using Buffer = std::array<char, 8192>;
    void accept() {
        acceptor_.async_accept([this](const std::error_code& error, asio::ip::tcp::socket socket) {
            if (error) {
                return;
            }
            sockets_.push_back(std::make_shared<asio::ip::tcp::socket>(std::move(socket)));
            echo(sockets_.back(), std::make_shared<Buffer>());
            accept();
        });
    }
    void echo(std::shared_ptr<asio::ip::tcp::socket> socket, std::shared_ptr<Buffer> buffer) {
        socket->async_read_some(
            asio::buffer(*buffer), [socket, buffer, this](const std::error_code& error, size_t n) {
                if (error) {
                    return;
                }
                asio::async_write(*socket, asio::buffer(buffer->data(), n),
                                  [socket, buffer, this](const std::error_code& e, size_t) {
                                      if (!e) {
                                          echo(socket, buffer);
                                      }
                                  });
            });
    }

    asio::io_context io_;
    asio::ip::tcp::acceptor acceptor_;
    uint16_t port_ = 0;
    std::vector<std::shared_ptr<asio::ip::tcp::socket>> sockets_;
    std::thread thread_;
};

// A client of the relay whose every step gives up after a few seconds instead of hanging.
class RelayClient {
public:
    explicit RelayClient(uint16_t port) : socket_(io_) {
        socket_.async_connect({asio::ip::make_address("127.0.0.1"), port},
                              [this](const std::error_code& error) { failed_ = bool(error); });
        run("the connection");
    }
    // Sends the bytes and waits until as many came back; what came back, empty on a failure.
    std::string echo(const std::string& bytes) {
        std::string back(bytes.size(), '\0');
        asio::async_write(socket_, asio::buffer(bytes),
                          [this](const std::error_code& error, size_t) { failed_ |= bool(error); });
        asio::async_read(socket_, asio::buffer(back),
                         [this](const std::error_code& error, size_t) { failed_ |= bool(error); });
        return run("the echo of " + std::to_string(bytes.size()) + " bytes") ? back : "";
    }

private:
    bool run(const std::string& what) {
        io_.restart();
        io_.run_for(std::chrono::seconds(10));
        EXPECT_TRUE(io_.stopped()) << "watchdog: still waiting for " << what;
        EXPECT_FALSE(failed_) << what << " failed";
        return io_.stopped() && !failed_;
    }

    asio::io_context io_;
    asio::ip::tcp::socket socket_;
    bool failed_ = false;
};

long long msSince(Clock::time_point start) {
    return std::chrono::duration_cast<milliseconds>(Clock::now() - start).count();
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
    EchoServer echo;
    for (const int latency : {60, 150}) {
        SimRelay relay(SimRelay::host(), echo.port(), SimLinkShape{latency, 0});
        ASSERT_TRUE(relay.start());
        const auto start = Clock::now();
        RelayClient client(relay.port());
        // The handshake's round trip is charged to the first exchange.
        ASSERT_EQ(client.echo("ping"), "ping");
        EXPECT_GE(msSince(start), 2 * latency) << latency;
        for (int i = 0; i < 2; ++i) {
            const auto again = Clock::now();
            ASSERT_EQ(client.echo("pong"), "pong");
            EXPECT_GE(msSince(again), latency) << latency;
            EXPECT_LT(msSince(again), latency + 400) << latency;
        }
    }
}

TEST(SimRelay, CarriesEveryByteInOrderAndCountsItsConnections) {
    EchoServer echo;
    SimRelay relay(SimRelay::host(), echo.port(), SimLinkShape{10, 0});
    ASSERT_TRUE(relay.start());
    std::vector<std::unique_ptr<RelayClient>> clients;
    for (int i = 0; i < 3; ++i) {
        clients.push_back(std::make_unique<RelayClient>(relay.port()));
        const std::string bytes = pattern(std::size_t{1} << 20, i);
        EXPECT_TRUE(clients.back()->echo(bytes) == bytes) << "connection " << i;
    }
    EXPECT_EQ(relay.connections(), 3);
    EXPECT_EQ(relay.tlsHandshakes(), 0);
}

TEST(SimRelay, HoldsEachDirectionToItsBandwidth) {
    EchoServer echo;
    // 2000 kbit/s carries 250 kB a second: 100 kB take 0.4 s each way, the two overlapping.
    SimRelay relay(SimRelay::host(), echo.port(), SimLinkShape{0, 2000});
    ASSERT_TRUE(relay.start());
    RelayClient client(relay.port());
    const std::string bytes = pattern(100 * 1000, 7);
    const auto start = Clock::now();
    EXPECT_TRUE(client.echo(bytes) == bytes);
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

    httplib::Client client(sim.origin());
    client.set_ca_cert_path(sim.caFile().c_str());
    client.set_keep_alive(true);
    client.set_read_timeout(std::chrono::seconds(5));
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

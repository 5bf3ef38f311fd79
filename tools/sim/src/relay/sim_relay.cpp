#include "relay/sim_relay.h"

#include <utility>

#include "listening_acceptor.h"
#include "relay/sim_relay_connection.h"

namespace tolvane::sim {

SimRelay::SimRelay(std::string targetHost, uint16_t targetPort, SimLinkShape shape)
    : acceptor_(io_), shape_(shape), counts_(std::make_shared<SimRelayCounts>()) {
    std::error_code ignored;
    target_ = asio::ip::tcp::endpoint(asio::ip::make_address(targetHost, ignored), targetPort);
}

SimRelay::~SimRelay() {
    stop();
}

bool SimRelay::start() {
    if (thread_.joinable()) {
        return false;
    }
    if (!listenOn(acceptor_, {asio::ip::make_address(host()), 0})) {
        return false;
    }
    port_ = acceptor_.local_endpoint().port();
    acceptNext();
    io_.restart();
    thread_ = std::thread([this] { io_.run(); });
    return true;
}

void SimRelay::stop() {
    if (!thread_.joinable()) {
        return;
    }
    // With the listener and every connection closed the thread runs out of work and ends.
    asio::post(io_, [this] {
        std::error_code ignored;
        acceptor_.close(ignored);
        const auto open = std::exchange(open_, {});
        for (const auto& entry : open) {
            entry.second->close();
        }
    });
    thread_.join();
}

void SimRelay::acceptNext() {
    acceptor_.async_accept([this](const std::error_code& error, asio::ip::tcp::socket socket) {
        if (error) {
            return;  // the listener was closed
        }
        ++counts_->connections;
        const int id = nextId_++;
        auto connection = std::make_shared<SimRelayConnection>(std::move(socket), shape_, counts_,
                                                               [this, id] { open_.erase(id); });
        open_[id] = connection;
        connection->start(target_);
        acceptNext();
    });
}

}  // namespace tolvane::sim

#pragma once

#include <array>
#include <asio.hpp>
#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "relay/sim_relay.h"

namespace tolvane::sim {

// One relayed connection: the accepted socket, its own connection to the target, and a pipe
// per direction that holds each chunk until the imitated line would have delivered it. Lives
// on its relay's I/O thread; every handler keeps it alive through shared_from_this.
class SimRelayConnection : public std::enable_shared_from_this<SimRelayConnection> {
public:
    using Closed = std::function<void()>;

    SimRelayConnection(asio::ip::tcp::socket client, SimLinkShape shape,
                       std::shared_ptr<SimRelayCounts> counts, Closed closed);

    void start(const asio::ip::tcp::endpoint& target);
    void close();

private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::size_t kReadBytes = 16 * 1024;

    struct Chunk {
        Clock::time_point due;
        std::string bytes;  // empty: the sender finished, pass the end on
    };
    struct Pipe {
        Pipe(const asio::any_io_executor& executor, asio::ip::tcp::socket& from,
             asio::ip::tcp::socket& to, bool sniffTls)
            : from(from), to(to), timer(executor), sniffTls(sniffTls) {}
        asio::ip::tcp::socket& from;
        asio::ip::tcp::socket& to;
        asio::steady_timer timer;
        std::array<char, kReadBytes> buffer{};
        std::deque<Chunk> queue;
        std::size_t queuedBytes = 0;
        Clock::time_point linkFree;  // when the capped line has sent what it holds
        bool writing = false;
        bool paused = false;  // reading waits until the queue drains
        bool finished = false;
        bool sniffTls;
        std::string head;  // the first bytes, until they tell whether TLS begins here
    };

    void read(Pipe& pipe);
    void enqueue(Pipe& pipe, std::string bytes);
    void deliver(Pipe& pipe);
    void sniff(Pipe& pipe, const char* data, std::size_t size);
    std::size_t readSize() const;

    asio::ip::tcp::socket client_;
    asio::ip::tcp::socket target_;
    const SimLinkShape shape_;
    std::shared_ptr<SimRelayCounts> counts_;
    Closed closed_;
    Clock::time_point openAt_;
    Pipe up_;    // client to target
    Pipe down_;  // target to client
    bool isClosed_ = false;
};

}  // namespace tolvane::sim

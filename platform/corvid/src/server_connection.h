#pragma once

#include <array>
#include <asio.hpp>
#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "vxencoder/vx_frame.h"

namespace corvid {

// One TCP connection to a barrage server: resolving, connecting within a time limit, cutting
// the byte stream into frames and writing queued frames in order. It knows nothing of the
// messages; it reports to its Events on the I/O thread until it is closed, and never after.
class ServerConnection : public std::enable_shared_from_this<ServerConnection> {
public:
    class Events {
    public:
        virtual void connected(ServerConnection& connection) = 0;
        virtual void connectFailed(ServerConnection& connection, const std::error_code& error) = 0;
        // payload is NUL-terminated and valid only during the call.
        virtual void received(ServerConnection& connection, const char* payload,
                              std::size_t size) = 0;
        // code is a MessageClientError; the connection is already closed.
        virtual void broken(ServerConnection& connection, int32_t code,
                            const std::string& detail) = 0;

    protected:
        ~Events() = default;
    };

    ServerConnection(asio::io_context& io, Events& events, std::string host, uint16_t port,
                     std::chrono::milliseconds connectTimeout, std::size_t maxPayload);

    void start();
    // Frames and queues payload; false when it can't be framed or the connection isn't open.
    bool send(const std::string& payload);
    // Closes without any further event.
    void close();

    bool isOpen() const { return open_ && !closed_; }
    const std::string& host() const { return host_; }
    uint16_t port() const { return port_; }
    int32_t elapsedMs() const;

private:
    void connectTo(const std::vector<asio::ip::tcp::endpoint>& endpoints);
    void failConnect(std::error_code error);
    void readNext();
    void writeNext();
    void fail(int32_t code, const std::string& detail);

    Events& events_;
    std::string host_;
    uint16_t port_;
    std::chrono::milliseconds connectTimeout_;
    std::chrono::steady_clock::time_point started_;
    asio::ip::tcp::socket socket_;
    asio::ip::tcp::resolver resolver_;
    asio::steady_timer deadline_;
    vxFrameReader reader_;
    static constexpr std::size_t kReadSize = 64 * 1024;
    // One byte more than a read fills: the frame reader NUL-terminates payloads in place.
    std::array<char, kReadSize + 1> readBuffer_{};
    std::deque<std::string> outbox_;
    bool writing_ = false;
    bool open_ = false;
    bool closed_ = false;
    bool timedOut_ = false;
};

}  // namespace corvid

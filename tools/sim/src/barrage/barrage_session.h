#pragma once

#include <array>
#include <asio.hpp>
#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "vxencoder/vx_frame.h"

namespace sim {

// One client connection of a barrage server, on the server's I/O thread: reads frames,
// writes queued bytes in order. What the payloads mean is the server's business.
class BarrageSession : public std::enable_shared_from_this<BarrageSession> {
public:
    using PayloadHandler = std::function<void(BarrageSession&, const std::string&)>;
    using CloseHandler = std::function<void(BarrageSession&, const std::string& reason)>;

    BarrageSession(asio::ip::tcp::socket socket, int id, PayloadHandler onPayload,
                   CloseHandler onClose);

    void start();
    // Frames and queues one barrage text; false when it can't be framed.
    bool sendText(const std::string& payload);
    // Queues bytes as they are, for deliberately broken frames.
    void sendBytes(std::string bytes);
    // Closes once the queued bytes are written, so a last message still arrives.
    void closeAfterWrites(const std::string& reason);
    // Closes now; the close handler runs once.
    void close(const std::string& reason);

    int id() const { return id_; }
    bool isOpen() const { return !closed_; }
    bool loggedIn = false;
    int32_t roomId = 0;

private:
    void readNext();
    void writeNext();

    asio::ip::tcp::socket socket_;
    int id_;
    PayloadHandler onPayload_;
    CloseHandler onClose_;
    vxFrameReader reader_;
    std::array<char, 16 * 1024> buffer_{};
    std::deque<std::string> outbox_;
    bool writing_ = false;
    bool closed_ = false;
    bool closeWhenWritten_ = false;
    std::string pendingCloseReason_;
};

}  // namespace sim

#include "relay/sim_relay_connection.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace tolvane::sim {

namespace {

// A pipe stops reading while it holds this much, so a capped line can't fill the memory.
constexpr std::size_t kMaxQueuedBytes = 4 * 1024 * 1024;
// Record type, two version bytes, two length bytes, then the handshake message's type.
constexpr std::size_t kTlsHeaderBytes = 6;
constexpr char kTlsHandshakeRecord = 0x16;
constexpr char kTlsClientHello = 0x01;

}  // namespace

SimRelayConnection::SimRelayConnection(asio::ip::tcp::socket client, SimLinkShape shape,
                                       std::shared_ptr<SimRelayCounts> counts, Closed closed)
    : client_(std::move(client)),
      target_(client_.get_executor()),
      shape_(shape),
      counts_(std::move(counts)),
      closed_(std::move(closed)),
      up_(client_.get_executor(), client_, target_, true),
      down_(client_.get_executor(), target_, client_, false) {}

void SimRelayConnection::start(const asio::ip::tcp::endpoint& target) {
    openAt_ = Clock::now();
    std::error_code ignored;
    client_.set_option(asio::ip::tcp::no_delay(true), ignored);
    target_.async_connect(target, [self = shared_from_this()](const std::error_code& error) {
        if (self->isClosed_) {
            return;
        }
        if (error) {
            self->close();
            return;
        }
        // The relay must not add Nagle's wait to the delay it imitates.
        std::error_code ignoredToo;
        self->target_.set_option(asio::ip::tcp::no_delay(true), ignoredToo);
        self->read(self->up_);
        self->read(self->down_);
    });
}

void SimRelayConnection::close() {
    if (isClosed_) {
        return;
    }
    isClosed_ = true;
    std::error_code ignored;
    up_.timer.cancel();
    down_.timer.cancel();
    client_.close(ignored);
    target_.close(ignored);
    if (closed_) {
        const Closed closed = std::move(closed_);
        closed_ = nullptr;
        closed();
    }
}

std::size_t SimRelayConnection::readSize() const {
    if (shape_.bandwidthKbps <= 0) {
        return kReadBytes;
    }
    // About ten milliseconds of the line per chunk, so a capped stream trickles instead of
    // arriving in lumps.
    const auto tenMs = static_cast<std::size_t>(shape_.bandwidthKbps) * 1000 / 8 / 100;
    return std::clamp<std::size_t>(tenMs, 512, kReadBytes);
}

void SimRelayConnection::read(Pipe& pipe) {
    if (isClosed_) {
        return;
    }
    if (pipe.queuedBytes >= kMaxQueuedBytes) {
        pipe.paused = true;
        return;
    }
    pipe.from.async_read_some(
        asio::buffer(pipe.buffer.data(), readSize()),
        [self = shared_from_this(), &pipe](const std::error_code& error, std::size_t size) {
            if (self->isClosed_) {
                return;
            }
            if (error == asio::error::eof) {
                self->sniff(pipe, nullptr, 0);
                self->enqueue(pipe, std::string());
                return;
            }
            if (error) {
                self->close();
                return;
            }
            self->sniff(pipe, pipe.buffer.data(), size);
            self->enqueue(pipe, std::string(pipe.buffer.data(), size));
            self->read(pipe);
        });
}

void SimRelayConnection::sniff(Pipe& pipe, const char* data, std::size_t size) {
    if (!pipe.sniffTls) {
        return;
    }
    if (size > 0) {
        pipe.head.append(data, std::min(size, kTlsHeaderBytes - pipe.head.size()));
        if (pipe.head.size() < kTlsHeaderBytes) {
            return;
        }
    }
    pipe.sniffTls = false;
    if (pipe.head.size() == kTlsHeaderBytes && pipe.head[0] == kTlsHandshakeRecord &&
        pipe.head[5] == kTlsClientHello) {
        ++counts_->tlsHandshakes;
    }
}

void SimRelayConnection::enqueue(Pipe& pipe, std::string bytes) {
    using std::chrono::microseconds;
    // The handshake's round trip: nothing crosses before a latency has passed since the accept.
    Clock::time_point due = std::max(Clock::now(), openAt_ + microseconds(shape_.latencyMs * 1000));
    if (shape_.bandwidthKbps > 0 && !bytes.empty()) {
        const auto sending =
            microseconds(static_cast<int64_t>(bytes.size()) * 8000 / shape_.bandwidthKbps);
        pipe.linkFree = std::max(pipe.linkFree, due) + sending;
        due = pipe.linkFree;
    }
    due += microseconds(shape_.latencyMs * 500);
    pipe.queuedBytes += bytes.size();
    pipe.queue.push_back(Chunk{due, std::move(bytes)});
    if (!pipe.writing) {
        deliver(pipe);
    }
}

void SimRelayConnection::deliver(Pipe& pipe) {
    if (isClosed_ || pipe.queue.empty()) {
        pipe.writing = false;
        return;
    }
    pipe.writing = true;
    pipe.timer.expires_at(pipe.queue.front().due);
    pipe.timer.async_wait([self = shared_from_this(), &pipe](const std::error_code& error) {
        if (error || self->isClosed_) {
            return;
        }
        const Chunk& chunk = pipe.queue.front();
        if (chunk.bytes.empty()) {
            // The sender finished: so does this direction, the other may still talk.
            std::error_code ignored;
            pipe.to.shutdown(asio::ip::tcp::socket::shutdown_send, ignored);
            pipe.queue.pop_front();
            pipe.writing = false;
            pipe.finished = true;
            if (self->up_.finished && self->down_.finished) {
                self->close();
            }
            return;
        }
        asio::async_write(pipe.to, asio::buffer(chunk.bytes),
                          [self, &pipe](const std::error_code& writeError, std::size_t) {
                              if (writeError || self->isClosed_) {
                                  self->close();
                                  return;
                              }
                              pipe.queuedBytes -= pipe.queue.front().bytes.size();
                              pipe.queue.pop_front();
                              if (pipe.paused && pipe.queuedBytes < kMaxQueuedBytes / 2) {
                                  pipe.paused = false;
                                  self->read(pipe);
                              }
                              self->deliver(pipe);
                          });
    });
}

}  // namespace tolvane::sim

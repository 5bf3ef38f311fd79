#include "server_connection.h"

#include <utility>
#include <vector>

#include "corvid/message_codes.h"

namespace corvid {

ServerConnection::ServerConnection(asio::io_context& io, Events& events, std::string host,
                                   uint16_t port, std::chrono::milliseconds connectTimeout,
                                   std::size_t maxPayload)
    : events_(events),
      host_(std::move(host)),
      port_(port),
      connectTimeout_(connectTimeout),
      started_(std::chrono::steady_clock::now()),
      socket_(io),
      resolver_(io),
      deadline_(io),
      reader_(maxPayload) {}

int32_t ServerConnection::elapsedMs() const {
    const auto elapsed = std::chrono::steady_clock::now() - started_;
    return static_cast<int32_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count());
}

void ServerConnection::start() {
    started_ = std::chrono::steady_clock::now();
    auto self = shared_from_this();
    deadline_.expires_after(connectTimeout_);
    deadline_.async_wait([self](const std::error_code& error) {
        if (!error && !self->closed_ && !self->open_) {
            // Closing the socket and the resolver makes the pending step finish with an error.
            self->timedOut_ = true;
            std::error_code ignored;
            self->socket_.close(ignored);
            self->resolver_.cancel();
        }
    });

    std::error_code parseError;
    const asio::ip::address address = asio::ip::make_address(host_, parseError);
    if (!parseError) {
        connectTo({asio::ip::tcp::endpoint(address, port_)});
        return;
    }
    resolver_.async_resolve(
        host_, std::to_string(port_),
        [self](const std::error_code& error, const asio::ip::tcp::resolver::results_type& found) {
            if (self->closed_) {
                return;
            }
            if (error) {
                self->failConnect(error);
                return;
            }
            self->connectTo(std::vector<asio::ip::tcp::endpoint>(found.begin(), found.end()));
        });
}

void ServerConnection::connectTo(const std::vector<asio::ip::tcp::endpoint>& endpoints) {
    auto self = shared_from_this();
    asio::async_connect(socket_, endpoints,
                        [self](const std::error_code& error, const asio::ip::tcp::endpoint&) {
                            if (self->closed_) {
                                return;
                            }
                            if (error) {
                                self->failConnect(error);
                                return;
                            }
                            self->deadline_.cancel();
                            self->open_ = true;
                            std::error_code ignored;
                            self->socket_.set_option(asio::ip::tcp::no_delay(true), ignored);
                            self->events_.connected(*self);
                            if (!self->closed_) {
                                self->readNext();
                                self->writeNext();
                            }
                        });
}

void ServerConnection::failConnect(std::error_code error) {
    if (timedOut_) {
        error = asio::error::timed_out;
    }
    close();
    events_.connectFailed(*this, error);
}

void ServerConnection::readNext() {
    auto self = shared_from_this();
    socket_.async_read_some(
        asio::buffer(readBuffer_.data(), kReadSize),
        [self](const std::error_code& error, std::size_t size) {
            if (self->closed_) {
                return;
            }
            if (error) {
                if (error == asio::error::eof) {
                    self->fail(kMessageClientClosedByServer, "connection closed by the server");
                } else {
                    self->fail(kMessageClientConnectionReset, "read failed: " + error.message());
                }
                return;
            }
            // Frames that arrived whole before a broken one are still delivered.
            const vxFrameReader::Status status = self->reader_.FeedInPlace(
                self->readBuffer_.data(), size, [&self](const char* payload, std::size_t length) {
                    self->events_.received(*self, payload, length);
                    return !self->closed_;
                });
            if (self->closed_) {
                return;
            }
            if (status != vxFrameReader::Status::Ok) {
                std::string detail = "protocol error: ";
                detail += vxFrameReader::Describe(status);
                if (status == vxFrameReader::Status::Oversized) {
                    detail += " (" + std::to_string(self->reader_.claimedLength()) + " bytes)";
                }
                self->fail(kMessageClientProtocolError, detail);
                return;
            }
            self->readNext();
        });
}

bool ServerConnection::send(const std::string& payload) {
    if (!isOpen()) {
        return false;
    }
    std::string frame;
    if (!vxAppendFrame(payload, frame)) {
        return false;
    }
    outbox_.push_back(std::move(frame));
    writeNext();
    return true;
}

void ServerConnection::writeNext() {
    if (writing_ || outbox_.empty() || !isOpen()) {
        return;
    }
    writing_ = true;
    auto self = shared_from_this();
    asio::async_write(
        socket_, asio::buffer(outbox_.front()), [self](const std::error_code& error, std::size_t) {
            if (self->closed_) {
                return;
            }
            self->writing_ = false;
            if (error) {
                self->fail(kMessageClientConnectionReset, "write failed: " + error.message());
                return;
            }
            self->outbox_.pop_front();
            self->writeNext();
        });
}

void ServerConnection::fail(int32_t code, const std::string& detail) {
    close();
    events_.broken(*this, code, detail);
}

void ServerConnection::close() {
    if (closed_) {
        return;
    }
    closed_ = true;
    std::error_code ignored;
    socket_.shutdown(asio::ip::tcp::socket::shutdown_both, ignored);
    socket_.close(ignored);
    resolver_.cancel();
    deadline_.cancel();
    // The outbox stays: a write still in flight refers to its front until it completes.
}

}  // namespace corvid

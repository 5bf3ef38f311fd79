#include "barrage/barrage_session.h"

#include <utility>
#include <vector>

namespace sim {

BarrageSession::BarrageSession(asio::ip::tcp::socket socket, int id, PayloadHandler onPayload,
                               CloseHandler onClose)
    : socket_(std::move(socket)),
      id_(id),
      onPayload_(std::move(onPayload)),
      onClose_(std::move(onClose)) {}

void BarrageSession::start() {
    readNext();
}

void BarrageSession::readNext() {
    auto self = shared_from_this();
    socket_.async_read_some(
        asio::buffer(buffer_), [self](const std::error_code& error, std::size_t size) {
            if (self->closed_) {
                return;
            }
            if (error) {
                self->close(error == asio::error::eof ? "closed by the client" : error.message());
                return;
            }
            std::vector<std::string> payloads;
            const auto status = self->reader_.Feed(self->buffer_.data(), size, payloads);
            for (const std::string& payload : payloads) {
                self->onPayload_(*self, payload);
                if (self->closed_) {
                    return;
                }
            }
            if (status != vxFrameReader::Status::Ok) {
                self->close(std::string("protocol error: ") + vxFrameReader::Describe(status));
                return;
            }
            self->readNext();
        });
}

bool BarrageSession::sendText(const std::string& payload) {
    std::string frame;
    if (!vxAppendFrame(payload, frame)) {
        return false;
    }
    sendBytes(std::move(frame));
    return true;
}

void BarrageSession::sendBytes(std::string bytes) {
    if (closed_ || closeWhenWritten_) {
        return;
    }
    outbox_.push_back(std::move(bytes));
    writeNext();
}

void BarrageSession::writeNext() {
    if (writing_ || closed_) {
        return;
    }
    if (outbox_.empty()) {
        if (closeWhenWritten_) {
            close(pendingCloseReason_);
        }
        return;
    }
    writing_ = true;
    auto self = shared_from_this();
    asio::async_write(socket_, asio::buffer(outbox_.front()),
                      [self](const std::error_code& error, std::size_t) {
                          if (self->closed_) {
                              return;
                          }
                          self->writing_ = false;
                          if (error) {
                              self->close(error.message());
                              return;
                          }
                          self->outbox_.pop_front();
                          self->writeNext();
                      });
}

void BarrageSession::closeAfterWrites(const std::string& reason) {
    if (closed_) {
        return;
    }
    closeWhenWritten_ = true;
    pendingCloseReason_ = reason;
    writeNext();
}

void BarrageSession::close(const std::string& reason) {
    if (closed_) {
        return;
    }
    closed_ = true;
    std::error_code ignored;
    socket_.shutdown(asio::ip::tcp::socket::shutdown_both, ignored);
    socket_.close(ignored);
    onClose_(*this, reason);
}

}  // namespace sim

#pragma once

#include <asio.hpp>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "barrage/barrage_connection_record.h"
#include "barrage/barrage_session.h"
#include "vxencoder/vx_decoder.h"

namespace sim {

// A barrage server of the simulator on 127.0.0.1 and an ephemeral port, with its own I/O
// thread. It answers logins and keep-alives, answers channel requests with the channel's
// message, records everything each connection sends, generates traffic at a settable rate,
// and plays scripted faults. Every public operation may be called from any thread; those
// that act on connections are carried out on the server's thread in call order.
class BarrageServer {
public:
    // Decides a login: 0 accepts it, any other value is sent back as an "error" code.
    using LoginCheck = std::function<int32_t(const BarrageConnectionRecord&)>;

    BarrageServer();
    ~BarrageServer();
    BarrageServer(const BarrageServer&) = delete;
    BarrageServer& operator=(const BarrageServer&) = delete;

    static constexpr const char* host() { return "127.0.0.1"; }
    uint16_t port() const { return port_; }

    // Refuses new connections by closing the listening socket (done when this returns);
    // open connections stay.
    void stopListening();
    // Listens again on the same port; false when the port can't be had back. Neither this
    // nor stopListening may be called on the server's own thread.
    bool resumeListening();

    // Behaviour of later exchanges.
    void setAnswerLogin(bool answer);
    void setLoginCheck(LoginCheck check);
    void setAnswerKeepAlive(bool answer);
    void setKeepAliveValues(int32_t online, int32_t hot);
    void setMemberCount(int32_t count);
    void setFansBrand(const std::string& brand);
    void setNoticeValue(int32_t value);

    // Scripted events, sent to every open connection.
    void sendError(int32_t code);
    void sendShowEnd(int32_t reason, double banHours);
    void sendText(const std::string& payload);
    // Bytes as they are (no framing), for broken frames of any shape.
    void sendBytes(const std::string& bytes);
    // One framed text written in pieces of pieceSize bytes, gap apart, each its own write.
    // Frames sent meanwhile go out between the pieces, so callers wait for quiet first.
    void sendTextInPieces(const std::string& payload, std::size_t pieceSize,
                          std::chrono::milliseconds gap);
    void sendMalformedFrame();
    // A header that claims claimedLength payload bytes, followed by a few of them.
    void sendOversizedFrame(uint32_t claimedLength = 1u << 30);
    // Closes every open connection from the server's side.
    void disconnectAll();

    // Sends messages in rotation (chat, gift, rankings, fans brand, member information,
    // numeric notice) to every logged-in connection; 0 stops.
    void setGeneratorRate(int messagesPerSecond);
    // The "seq" the next server message will carry.
    int32_t nextSequence() const { return sequence_.load(); }

    // What each connection sent, in order of arrival.
    std::vector<BarrageConnectionRecord> connections() const;
    // Waits until condition holds for the records, at most timeout; false when it never did.
    bool waitUntil(
        const std::function<bool(const std::vector<BarrageConnectionRecord>&)>& condition,
        std::chrono::milliseconds timeout) const;

private:
    bool listen();
    void acceptNext();
    void onPayload(BarrageSession& session, const std::string& payload);
    void onClosed(BarrageSession& session, const std::string& reason);
    void answer(BarrageSession& session, const std::string& type, const vxDecoder& items);
    std::string channelMessage(const std::string& channel, int32_t roomId);
    std::string generatedMessage(int32_t roomId);
    void forEachOpen(const std::function<void(BarrageSession&)>& action);
    void armGenerator();
    void sendPiece(std::shared_ptr<asio::steady_timer> timer, std::shared_ptr<std::string> frame,
                   std::size_t at, std::size_t pieceSize, std::chrono::milliseconds gap);
    template <typename Update>
    void updateRecord(int id, Update update);
    int32_t takeSequence() { return sequence_++; }

    asio::io_context io_;
    asio::executor_work_guard<asio::io_context::executor_type> work_;
    asio::ip::tcp::acceptor acceptor_;
    asio::steady_timer generator_;
    uint16_t port_ = 0;

    // Server thread only.
    std::map<int, std::shared_ptr<BarrageSession>> sessions_;
    bool answerLogin_ = true;
    bool answerKeepAlive_ = true;
    LoginCheck loginCheck_;
    int32_t online_ = 1200;
    int32_t hot_ = 5600;
    int32_t memberCount_ = 88;
    std::string fansBrand_ = "sim brand";
    int32_t noticeValue_ = 3;
    int generatorRate_ = 0;
    int generatorStep_ = 0;
    int generatorGeneration_ = 0;
    std::chrono::steady_clock::time_point generatorStart_;
    int64_t generatorSent_ = 0;  // messages the generator has sent since its rate was set

    std::atomic<int32_t> sequence_{1};
    mutable std::mutex recordsMutex_;
    mutable std::condition_variable recordsChanged_;
    std::vector<BarrageConnectionRecord> records_;
    std::thread thread_;
};

}  // namespace sim

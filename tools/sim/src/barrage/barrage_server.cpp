#include "barrage/barrage_server.h"

#include <algorithm>
#include <future>
#include <utility>

#include "barrage/barrage_texts.h"
#include "listening_acceptor.h"
#include "vxencoder/vx_decoder.h"
#include "vxencoder/vx_frame.h"
#include "vxencoder/vx_wire_names.h"

namespace sim {

namespace {

const char* const kRankings[] = {"dayrk",    "weekrk",  "totalrk", "monthrk",
                                 "fansswrk", "dfansrk", "olviplst"};

std::vector<BarrageTexts::RankEntry> sampleEntries(int32_t seq) {
    return {{1001, "first", 900 + seq % 100}, {1002, "second", 500}, {1003, "第三", 100}};
}

}  // namespace

BarrageServer::BarrageServer()
    : work_(asio::make_work_guard(io_)), acceptor_(io_), generator_(io_) {
    listen();
    thread_ = std::thread([this] { io_.run(); });
}

BarrageServer::~BarrageServer() {
    asio::post(io_, [this] {
        std::error_code ignored;
        acceptor_.close(ignored);
        generator_.cancel();
        forEachOpen([](BarrageSession& session) { session.close("server stopped"); });
        sessions_.clear();
        io_.stop();
    });
    thread_.join();
}

bool BarrageServer::listen() {
    if (!tolvane::sim::listenOn(acceptor_, {asio::ip::make_address(host()), port_})) {
        return false;
    }
    if (port_ == 0) {
        // Only the first listen, before the server's thread starts, learns the port.
        port_ = acceptor_.local_endpoint().port();
    }
    acceptNext();
    return true;
}

void BarrageServer::acceptNext() {
    acceptor_.async_accept([this](const std::error_code& error, asio::ip::tcp::socket socket) {
        if (error) {
            return;  // the acceptor was closed
        }
        // Small writes go out at once, as a real server's pushes do, instead of waiting for
        // the previous segment's acknowledgement.
        std::error_code ignored;
        socket.set_option(asio::ip::tcp::no_delay(true), ignored);
        int id = 0;
        {
            std::lock_guard<std::mutex> lock(recordsMutex_);
            id = static_cast<int>(records_.size());
            records_.push_back(BarrageConnectionRecord{});
            records_.back().id = id;
        }
        recordsChanged_.notify_all();
        auto session = std::make_shared<BarrageSession>(
            std::move(socket), id,
            [this](BarrageSession& s, const std::string& payload) { onPayload(s, payload); },
            [this](BarrageSession& s, const std::string& reason) { onClosed(s, reason); });
        sessions_[id] = session;
        session->start();
        acceptNext();
    });
}

void BarrageServer::stopListening() {
    std::promise<void> done;
    auto closed = done.get_future();
    asio::post(io_, [this, &done] {
        std::error_code ignored;
        acceptor_.close(ignored);
        done.set_value();
    });
    closed.wait();
}

bool BarrageServer::resumeListening() {
    std::promise<bool> done;
    auto result = done.get_future();
    asio::post(io_, [this, &done] { done.set_value(acceptor_.is_open() || listen()); });
    return result.get();
}

template <typename Update>
void BarrageServer::updateRecord(int id, Update update) {
    {
        std::lock_guard<std::mutex> lock(recordsMutex_);
        update(records_.at(static_cast<std::size_t>(id)));
    }
    recordsChanged_.notify_all();
}

void BarrageServer::onClosed(BarrageSession& session, const std::string& reason) {
    updateRecord(session.id(), [&](BarrageConnectionRecord& record) {
        record.open = false;
        record.closeReason = reason;
    });
    // Erasing later keeps the session alive until its own handler has returned.
    asio::post(io_, [this, id = session.id()] { sessions_.erase(id); });
}

void BarrageServer::onPayload(BarrageSession& session, const std::string& payload) {
    vxDecoder decoder;
    const bool parsed = decoder.Parse(payload);
    std::string type;
    if (parsed && !decoder.Items().empty() && decoder.Items().front().key == vxwire::kType) {
        type = decoder.Items().front().value;
    }
    updateRecord(session.id(), [&](BarrageConnectionRecord& record) {
        record.received.push_back(payload);
        if (type == vxwire::kLogin) {
            record.login.clear();
            for (const vxItem& item : decoder.Items()) {
                record.login.emplace_back(item.key, item.value);
            }
            ++record.loginCount;
        } else if (type == vxwire::kKeepAlive) {
            ++record.keepAlives;
        } else if (type == vxwire::kChannelGet) {
            record.channelRequests.push_back(decoder.GetText(vxwire::kChannel));
        } else if (type == vxwire::kSubscribe || type == vxwire::kUnsubscribe) {
            record.subscriptions.emplace_back(type == vxwire::kSubscribe,
                                              decoder.GetText(vxwire::kSubChannel));
        } else if (type == vxwire::kChat) {
            record.chats.push_back(decoder.GetText(vxwire::kText));
        } else if (type == vxwire::kRoomText) {
            record.roomTexts.push_back(decoder.GetText(vxwire::kText));
        } else if (type == vxwire::kGiftSend) {
            record.gifts.push_back(payload);
        } else if (type == vxwire::kMemberInfo) {
            int32_t roomId = 0;
            decoder.GetInt32(vxwire::kRoomId, roomId);
            record.memberInfoRequests.push_back(roomId);
        }
    });
    answer(session, type, decoder);
}

void BarrageServer::answer(BarrageSession& session, const std::string& type,
                           const vxDecoder& items) {
    auto number = [&items](const char* key) {
        int32_t value = 0;
        items.GetInt32(key, value);
        return value;
    };

    if (type == vxwire::kLogin) {
        if (!answerLogin_) {
            return;
        }
        int32_t verdict = 0;
        if (loginCheck_) {
            BarrageConnectionRecord record;
            {
                std::lock_guard<std::mutex> lock(recordsMutex_);
                record = records_.at(static_cast<std::size_t>(session.id()));
            }
            verdict = loginCheck_(record);
        }
        if (verdict != 0) {
            session.sendText(BarrageTexts::error(takeSequence(), verdict));
            return;
        }
        session.roomId = number(vxwire::kRoomId);
        session.loggedIn = true;
        updateRecord(session.id(), [](BarrageConnectionRecord& record) { record.loggedIn = true; });
        session.sendText(
            BarrageTexts::loginReply(takeSequence(), 1000 + session.id(), session.roomId,
                                     "sim-session-" + std::to_string(session.id()), 45));
    } else if (type == vxwire::kKeepAlive) {
        if (answerKeepAlive_) {
            session.sendText(
                BarrageTexts::keepAliveReply(takeSequence(), number(vxwire::kTick), online_, hot_));
        }
    } else if (type == vxwire::kChannelGet) {
        const std::string reply = channelMessage(items.GetText(vxwire::kChannel), session.roomId);
        if (!reply.empty()) {
            session.sendText(reply);
        }
    } else if (type == vxwire::kMemberInfo) {
        session.sendText(
            BarrageTexts::memberInfo(takeSequence(), number(vxwire::kRoomId), memberCount_));
    } else if (type == vxwire::kChat) {
        // A chat line goes back to everyone in the room, its sender included.
        const std::string relayed =
            BarrageTexts::chat(takeSequence(), session.roomId, 1000 + session.id(), "anchor",
                               items.GetText(vxwire::kText));
        forEachOpen([&](BarrageSession& other) {
            if (other.loggedIn && other.roomId == session.roomId) {
                other.sendText(relayed);
            }
        });
    }
}

std::string BarrageServer::channelMessage(const std::string& channel, int32_t roomId) {
    if (channel == vxwire::kNobleCount) {
        return BarrageTexts::noticeValue(takeSequence(), roomId, noticeValue_);
    }
    if (channel == vxwire::kFansBrand) {
        const int32_t seq = takeSequence();
        return BarrageTexts::ranking(channel, seq, roomId, sampleEntries(seq), fansBrand_);
    }
    for (const char* ranking : kRankings) {
        if (channel == ranking) {
            const int32_t seq = takeSequence();
            return BarrageTexts::ranking(channel, seq, roomId, sampleEntries(seq));
        }
    }
    return {};
}

std::string BarrageServer::generatedMessage(int32_t roomId) {
    const int step = generatorStep_++;
    const int32_t seq = takeSequence();
    switch (step % 6) {
        case 0:
            return BarrageTexts::chat(seq, roomId, 2000 + step % 50,
                                      "viewer" + std::to_string(step % 50),
                                      "message " + std::to_string(seq));
        case 1:
            // Gift 106 is missing from the room's gift template, so hosts meet it mid-stream.
            return BarrageTexts::gift(seq, roomId, 2000 + step % 50,
                                      "viewer" + std::to_string(step % 50), 100 + step % 7,
                                      1 + (step / 6) % 3);
        case 2:
            return BarrageTexts::ranking(kRankings[(step / 6) % std::size(kRankings)], seq, roomId,
                                         sampleEntries(seq));
        case 3:
            return BarrageTexts::ranking(vxwire::kFansBrand, seq, roomId, sampleEntries(seq),
                                         fansBrand_);
        case 4:
            return BarrageTexts::memberInfo(seq, roomId, memberCount_);
        default:
            return BarrageTexts::noticeValue(seq, roomId, noticeValue_);
    }
}

void BarrageServer::forEachOpen(const std::function<void(BarrageSession&)>& action) {
    // Copied first: an action may close a session, which changes the map.
    std::vector<std::shared_ptr<BarrageSession>> open;
    for (const auto& entry : sessions_) {
        if (entry.second->isOpen()) {
            open.push_back(entry.second);
        }
    }
    for (const auto& session : open) {
        action(*session);
    }
}

void BarrageServer::setAnswerLogin(bool answer) {
    asio::post(io_, [this, answer] { answerLogin_ = answer; });
}

void BarrageServer::setLoginCheck(LoginCheck check) {
    asio::post(io_, [this, check = std::move(check)] { loginCheck_ = check; });
}

void BarrageServer::setAnswerKeepAlive(bool answer) {
    asio::post(io_, [this, answer] { answerKeepAlive_ = answer; });
}

void BarrageServer::setKeepAliveValues(int32_t online, int32_t hot) {
    asio::post(io_, [this, online, hot] {
        online_ = online;
        hot_ = hot;
    });
}

void BarrageServer::setMemberCount(int32_t count) {
    asio::post(io_, [this, count] { memberCount_ = count; });
}

void BarrageServer::setFansBrand(const std::string& brand) {
    asio::post(io_, [this, brand] { fansBrand_ = brand; });
}

void BarrageServer::setNoticeValue(int32_t value) {
    asio::post(io_, [this, value] { noticeValue_ = value; });
}

void BarrageServer::sendError(int32_t code) {
    asio::post(io_, [this, code] {
        const std::string text = BarrageTexts::error(takeSequence(), code);
        forEachOpen([&](BarrageSession& session) { session.sendText(text); });
    });
}

void BarrageServer::sendShowEnd(int32_t reason, double banHours) {
    asio::post(io_, [this, reason, banHours] {
        forEachOpen([&](BarrageSession& session) {
            session.sendText(
                BarrageTexts::showEnd(takeSequence(), session.roomId, reason, banHours));
        });
    });
}

void BarrageServer::sendText(const std::string& payload) {
    asio::post(io_, [this, payload] {
        forEachOpen([&](BarrageSession& session) { session.sendText(payload); });
    });
}

void BarrageServer::sendBytes(const std::string& bytes) {
    asio::post(io_, [this, bytes] {
        forEachOpen([&](BarrageSession& session) { session.sendBytes(bytes); });
    });
}

void BarrageServer::sendTextInPieces(const std::string& payload, std::size_t pieceSize,
                                     std::chrono::milliseconds gap) {
    auto frame = std::make_shared<std::string>();
    vxAppendFrame(payload, *frame);
    asio::post(io_, [this, frame, pieceSize, gap] {
        sendPiece(std::make_shared<asio::steady_timer>(io_), frame, 0,
                  std::max<std::size_t>(pieceSize, 1), gap);
    });
}

void BarrageServer::sendPiece(std::shared_ptr<asio::steady_timer> timer,
                              std::shared_ptr<std::string> frame, std::size_t at,
                              std::size_t pieceSize, std::chrono::milliseconds gap) {
    const std::string piece = frame->substr(at, pieceSize);
    forEachOpen([&](BarrageSession& session) { session.sendBytes(piece); });
    at += piece.size();
    if (at >= frame->size()) {
        return;
    }
    timer->expires_after(gap);
    timer->async_wait([this, timer, frame, at, pieceSize, gap](const std::error_code& error) {
        if (!error) {
            sendPiece(timer, frame, at, pieceSize, gap);
        }
    });
}

void BarrageServer::sendMalformedFrame() {
    sendBytes(vxFrameHeader('x', 'v', 4) + "k=v;");
}

void BarrageServer::sendOversizedFrame(uint32_t claimedLength) {
    sendBytes(vxFrameHeader(vxframe::kMagic0, vxframe::kMagic1, claimedLength) + "type=chatmsg;");
}

void BarrageServer::disconnectAll() {
    asio::post(io_, [this] {
        forEachOpen([](BarrageSession& session) { session.close("closed by the server"); });
    });
}

void BarrageServer::setGeneratorRate(int messagesPerSecond) {
    asio::post(io_, [this, messagesPerSecond] {
        generatorRate_ = messagesPerSecond > 0 ? messagesPerSecond : 0;
        ++generatorGeneration_;
        generator_.cancel();
        if (generatorRate_ > 0) {
            generatorStart_ = std::chrono::steady_clock::now();
            generatorSent_ = 0;
            armGenerator();
        }
    });
}

void BarrageServer::armGenerator() {
    // Ticks of at least a millisecond, each sending what is due by then: a timer per message
    // would fall behind at thousands a second, and the rate is what a load test relies on.
    const auto interval = std::max<std::chrono::microseconds>(
        std::chrono::milliseconds(1), std::chrono::microseconds(1000000 / generatorRate_));
    generator_.expires_after(interval);
    // A wait that had already expired when the rate changed must not start a second chain.
    generator_.async_wait([this, generation = generatorGeneration_](const std::error_code& error) {
        if (error || generation != generatorGeneration_) {
            return;
        }
        const auto elapsed = std::chrono::duration_cast<std::chrono::microseconds>(
            std::chrono::steady_clock::now() - generatorStart_);
        const int64_t due = elapsed.count() * generatorRate_ / 1000000;
        // After a stall (a debugger, a loaded machine) at most a second's worth goes out at once.
        int64_t count = std::min<int64_t>(due - generatorSent_, generatorRate_);
        generatorSent_ = std::max(generatorSent_ + count, due - generatorRate_);
        for (; count > 0; --count) {
            forEachOpen([&](BarrageSession& session) {
                if (session.loggedIn) {
                    session.sendText(generatedMessage(session.roomId));
                }
            });
        }
        armGenerator();
    });
}

std::vector<BarrageConnectionRecord> BarrageServer::connections() const {
    std::lock_guard<std::mutex> lock(recordsMutex_);
    return records_;
}

bool BarrageServer::waitUntil(
    const std::function<bool(const std::vector<BarrageConnectionRecord>&)>& condition,
    std::chrono::milliseconds timeout) const {
    std::unique_lock<std::mutex> lock(recordsMutex_);
    return recordsChanged_.wait_for(lock, timeout, [&] { return condition(records_); });
}

}  // namespace sim

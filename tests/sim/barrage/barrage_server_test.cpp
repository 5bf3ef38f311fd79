#include <gtest/gtest.h>

#include <array>
#include <asio.hpp>
#include <chrono>
#include <set>
#include <string>
#include <vector>

#include "barrage/barrage_server.h"
#include "vxencoder/vx_decoder.h"
#include "vxencoder/vx_frame.h"

namespace {

using namespace std::chrono_literals;

// A bare client that speaks frames, to test the server without the message client.
class RawClient {
public:
    explicit RawClient(uint16_t port) : socket_(io_) {
        socket_.connect({asio::ip::make_address("127.0.0.1"), port});
    }

    void send(const std::string& payload) {
        std::string frame;
        ASSERT_TRUE(vxAppendFrame(payload, frame));
        sendBytes(frame);
    }

    void sendBytes(const std::string& bytes) { asio::write(socket_, asio::buffer(bytes)); }

    // Payloads until count have arrived, the server closed, or the time is up.
    std::vector<std::string> read(std::size_t count, std::chrono::milliseconds timeout = 5s) {
        std::vector<std::string> payloads;
        const auto deadline = std::chrono::steady_clock::now() + timeout;
        while (payloads.size() < count && !closed_ && std::chrono::steady_clock::now() < deadline) {
            std::error_code error;
            std::size_t size = 0;
            bool done = false;
            socket_.async_read_some(asio::buffer(buffer_), [&](std::error_code e, std::size_t n) {
                error = e;
                size = n;
                done = true;
            });
            io_.restart();
            io_.run_until(deadline);
            if (!done) {
                socket_.cancel();
                io_.restart();
                io_.run();
                break;
            }
            if (error) {
                closed_ = true;
                break;
            }
            EXPECT_EQ(reader_.Feed(buffer_.data(), size, payloads), vxFrameReader::Status::Ok);
        }
        return payloads;
    }

    bool closed() const { return closed_; }

private:
    asio::io_context io_;
    asio::ip::tcp::socket socket_;
    std::array<char, 4096> buffer_{};
    vxFrameReader reader_;
    bool closed_ = false;
};

vxDecoder decode(const std::string& text) {
    vxDecoder decoder;
    EXPECT_TRUE(decoder.Parse(text)) << text;
    return decoder;
}

TEST(BarrageServer, GeneratesEveryKindWithRisingSequenceNumbers) {
    sim::BarrageServer server;
    RawClient client(server.port());
    client.send("type=login;rid=9;");
    ASSERT_EQ(client.read(1).size(), 1u);
    server.setGeneratorRate(500);
    const auto messages = client.read(12);
    server.setGeneratorRate(0);
    ASSERT_EQ(messages.size(), 12u);
    std::set<std::string> types;
    int32_t previous = 0;
    for (const std::string& text : messages) {
        const vxDecoder message = decode(text);
        int32_t seq = 0;
        ASSERT_TRUE(message.GetInt32("seq", seq)) << text;
        EXPECT_GT(seq, previous);
        previous = seq;
        EXPECT_EQ(message.GetText("rid"), "9");
        types.insert(message.GetText("type"));
    }
    for (const char* type : {"chatmsg", "gift", "fansrk", "memberinfores", "noble_num_info"}) {
        EXPECT_EQ(types.count(type), 1u) << type;
    }
}

TEST(BarrageServer, AnswersByTypeAndRecordsWhatItGot) {
    sim::BarrageServer server;
    server.setFansBrand("brand");
    server.setNoticeValue(41);
    RawClient client(server.port());
    client.send("type=login;ltx1=a;rid=3;");
    client.send("type=get;msgtype=fansrk;");
    client.send("type=get;msgtype=noble_num_info;");
    client.send("type=get;msgtype=nothing-known;");
    client.send("type=sub;mt=dayrk;");
    client.send("type=keepalive;tick=4;");
    client.send("not a barrage text");
    const auto replies = client.read(4);
    ASSERT_EQ(replies.size(), 4u);
    EXPECT_EQ(decode(replies[0]).GetText("type"), "loginres");
    EXPECT_EQ(decode(replies[1]).GetText("bn"), "brand");
    EXPECT_EQ(decode(replies[2]).GetText("num"), "41");
    EXPECT_EQ(decode(replies[3]).GetText("tick"), "4");  // the unknown channel has no answer

    ASSERT_TRUE(server.waitUntil([](const auto& r) { return r[0].received.size() == 7; }, 5s));
    const auto record = server.connections()[0];
    EXPECT_TRUE(record.loggedIn);
    EXPECT_EQ(record.loginItem("ltx1"), "a");
    EXPECT_EQ(record.channelRequests,
              (std::vector<std::string>{"fansrk", "noble_num_info", "nothing-known"}));
    EXPECT_EQ(record.subscriptions, (std::vector<std::pair<bool, std::string>>{{true, "dayrk"}}));
    EXPECT_EQ(record.keepAlives, 1);
    EXPECT_EQ(record.received.back(), "not a barrage text");
}

TEST(BarrageServer, PlaysScriptedEvents) {
    sim::BarrageServer server;
    server.setLoginCheck([](const sim::BarrageConnectionRecord& r) {
        return r.loginItem("ltx1") == "bad" ? 365 : 0;
    });
    RawClient refused(server.port());
    refused.send("type=login;ltx1=bad;");
    const auto verdict = refused.read(1);
    ASSERT_EQ(verdict.size(), 1u);
    EXPECT_EQ(decode(verdict[0]).GetText("code"), "365");

    RawClient client(server.port());
    client.send("type=login;ltx1=good;rid=5;");
    ASSERT_EQ(client.read(1).size(), 1u);
    server.sendError(59);
    server.sendShowEnd(3, 0.1);
    const auto events = client.read(2);
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(decode(events[0]).GetText("code"), "59");
    double hours = 0;
    ASSERT_TRUE(decode(events[1]).GetDouble("bh", hours));
    EXPECT_EQ(hours, 0.1);  // written exactly, whatever the locale
    EXPECT_EQ(decode(events[1]).GetText("reason"), "3");

    server.disconnectAll();
    client.read(1);
    EXPECT_TRUE(client.closed());
}

TEST(BarrageServer, ClosesAConnectionThatBreaksTheFraming) {
    sim::BarrageServer server;
    RawClient client(server.port());
    client.sendBytes(vxFrameHeader('v', 'x', 0xffffffffu));
    client.read(1);
    EXPECT_TRUE(client.closed());
    ASSERT_TRUE(server.waitUntil([](const auto& r) { return !r.empty() && !r[0].open; }, 5s));
    EXPECT_NE(server.connections()[0].closeReason.find("protocol error"), std::string::npos);
}

}  // namespace

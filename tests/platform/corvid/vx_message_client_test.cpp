#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string>
#include <thread>

#include "barrage/barrage_server.h"
#include "corvid/message_client_system.h"
#include "corvid/message_codes.h"
#include "platform/corvid/callback_recorder.h"

namespace {

using Kind = CallbackRecorder::Kind;
using Events = CallbackRecorder::Events;

MessageClientOptions fastOptions() {
    MessageClientOptions options;
    // Short enough for quick tests, with room for a loaded machine under a sanitizer.
    options.keepAliveIntervalMs = 40;
    options.keepAliveMissLimit = 5;
    options.connectTimeoutMs = 3000;
    options.loginTimeoutMs = 1000;
    return options;
}

bool hasMessageOfType(const Events& events, const std::string& type) {
    return std::any_of(events.begin(), events.end(), [&](const auto& e) {
        return e.kind == Kind::Message && e.text.rfind("type=" + type + ";", 0) == 0;
    });
}

// A client of its own, logged in to the server, reporting to the recorder.
MessageClient* startClient(CallbackRecorder& recorder, const sim::BarrageServer& server) {
    MessageClient* client = CreateVxMessageClientWithOptions(fastOptions());
    const MessageCallbacks table = recorder.table();
    client->registerCallbacks(&table, &recorder);
    client->setServerAddress(sim::BarrageServer::host(), server.port());
    client->login("a", 1, "b", 13, 5, "", 3);
    return client;
}

class MessageClientTest : public ::testing::Test {
protected:
    void SetUp() override { StartupMessageClientSystem(); }

    void TearDown() override {
        if (client_ != nullptr) {
            client_->release();
        }
        ShutdownMessageClientSystem();
    }

    MessageClient* makeClient(const MessageClientOptions& options = fastOptions()) {
        client_ = CreateVxMessageClientWithOptions(options);
        const MessageCallbacks table = recorder_.table();
        EXPECT_TRUE(client_->registerCallbacks(&table, &recorder_));
        return client_;
    }

    bool login(const sim::BarrageServer& server, int32_t roomId = 1001) {
        return client_->setServerAddress(sim::BarrageServer::host(), server.port()) &&
               client_->login("text-one", 11, "text-two", 13, roomId, "", 3);
    }

    // Logs in and waits for the reply to have come through.
    void loginAndWait(const sim::BarrageServer& server) {
        ASSERT_TRUE(login(server));
        ASSERT_TRUE(
            recorder_.waitFor([](const Events& e) { return hasMessageOfType(e, "loginres"); }));
    }

    sim::BarrageServer server_;
    CallbackRecorder recorder_;
    MessageClient* client_ = nullptr;
};

TEST_F(MessageClientTest, LoginRunsTheGateAndRepeaterStepsAndCarriesEveryValue) {
    makeClient();
    client_->setParameterText("param-five");
    client_->setParameterNumberAndText(21, "param-twenty-one");
    loginAndWait(server_);

    const Events events = recorder_.events();
    const std::vector<Kind> expected = {Kind::Gate, Kind::RepeaterFinished, Kind::LoginReply};
    EXPECT_EQ(CallbackRecorder::kinds(events), expected);
    EXPECT_EQ(events[0].code, 0);
    EXPECT_FALSE(events[0].failed);
    EXPECT_EQ(events[0].port, server_.port());
    EXPECT_EQ(events[1].code, kMessageClientOk);
    EXPECT_EQ(events[1].host, "127.0.0.1");
    EXPECT_EQ(events[1].port, server_.port());
    // The login reply goes out twice: to its own callback, then as a message.
    EXPECT_EQ(events[2].text, events[3].text);
    EXPECT_EQ(events[3].kind, Kind::Message);
    EXPECT_EQ(client_->loginState(), 1);

    const auto records = server_.connections();
    ASSERT_EQ(records.size(), 1u);
    // clang-format off
    const std::vector<std::pair<std::string, std::string>> items = {
        {"type", "login"}, {"ltx1", "text-one"}, {"lnum", "11"}, {"ltx2", "text-two"}, {"ct", "13"},
        {"rid", "1001"}, {"ext", ""}, {"lmode", "3"}, {"ptx", "param-five"}, {"pnum", "21"},
        {"ptx2", "param-twenty-one"}};
    // clang-format on
    EXPECT_EQ(records[0].login, items);
}

TEST_F(MessageClientTest, KeepAliveAnswersAreReportedAndOptionallyConsumed) {
    for (const bool consume : {false, true}) {
        SCOPED_TRACE(consume);
        sim::BarrageServer server;
        CallbackRecorder recorder;
        recorder.consumeKeepAlive = consume;
        MessageClient* client = startClient(recorder, server);
        EXPECT_TRUE(recorder.waitForCount(Kind::KeepAlive, 2));
        EXPECT_TRUE(
            server.waitUntil([](const auto& r) { return !r.empty() && r[0].keepAlives >= 2; },
                             std::chrono::seconds(5)));
        client->release();
        EXPECT_EQ(hasMessageOfType(recorder.events(), "keepalive"), !consume);
    }
}

TEST_F(MessageClientTest, SendsReachTheServerInOrder) {
    MessageClientOptions options = fastOptions();
    options.keepAliveIntervalMs = 60000;  // so the one keep-alive seen is the one asked for
    makeClient(options);
    EXPECT_FALSE(client_->sendChatMessage("too early"));  // no connection yet
    EXPECT_EQ(client_->requestMemberInfo(1001), -1);
    loginAndWait(server_);

    EXPECT_TRUE(client_->sendChatMessage("hello; world"));
    EXPECT_TRUE(client_->sendRawMessage(u"type=get;msgtype=dayrk;"));
    EXPECT_TRUE(client_->sendSubscription(u"type=sub;mt=fansrk;"));
    EXPECT_TRUE(client_->sendSubscription(u"type=unsub;mt=\u7c89;"));
    EXPECT_TRUE(client_->sendGift(1, 1001, 2, 500, 7, 3, ""));
    EXPECT_EQ(client_->requestMemberInfo(1001), 0);
    EXPECT_TRUE(client_->sendRoomText("room text"));
    EXPECT_TRUE(client_->sendKeepAliveNow());
    EXPECT_FALSE(client_->sendChatMessage(nullptr));
    EXPECT_FALSE(client_->sendRawMessage(nullptr));

    ASSERT_TRUE(server_.waitUntil([](const auto& r) { return !r.empty() && r[0].keepAlives == 1; },
                                  std::chrono::seconds(5)));
    const auto record = server_.connections()[0];
    EXPECT_EQ(record.chats, std::vector<std::string>{"hello; world"});
    EXPECT_EQ(record.channelRequests, std::vector<std::string>{"dayrk"});
    const std::vector<std::pair<bool, std::string>> subscriptions = {{true, "fansrk"},
                                                                     {false, "粉"}};
    EXPECT_EQ(record.subscriptions, subscriptions);
    ASSERT_EQ(record.gifts.size(), 1u);
    EXPECT_EQ(record.gifts[0], "type=giftsend;ga1=1;ga2=1001;ga3=2;ga4=500;ga5=7;ga6=3;ga7=;");
    EXPECT_EQ(record.memberInfoRequests, std::vector<int32_t>{1001});
    EXPECT_EQ(record.roomTexts, std::vector<std::string>{"room text"});
    EXPECT_EQ(record.keepAlives, 1);
}

TEST_F(MessageClientTest, RefusedConnectionFailsTheGateStep) {
    server_.stopListening();
    makeClient();
    ASSERT_TRUE(login(server_));
    ASSERT_TRUE(recorder_.waitForCount(Kind::Error, 1));
    const Events events = recorder_.events();
    ASSERT_EQ(CallbackRecorder::kinds(events), (std::vector<Kind>{Kind::Gate, Kind::Error}));
    EXPECT_EQ(events[0].code, ECONNREFUSED);
    EXPECT_TRUE(events[0].failed);
    EXPECT_EQ(events[1].code, kMessageClientConnectFailed);
    EXPECT_NE(events[1].text.find(std::to_string(server_.port())), std::string::npos);
    EXPECT_EQ(client_->loginState(), 0);

    // Listening again, the next login goes through.
    ASSERT_TRUE(server_.resumeListening());
    ASSERT_TRUE(login(server_));
    EXPECT_TRUE(recorder_.waitForCount(Kind::LoginReply, 1));
}

// How a connection ends decides which step reports it; the error callback always follows. Every
// kind of broken frame is a table in the frame reader's tests.
TEST_F(MessageClientTest, EveryBreakEndsWithItsStepAndTheErrorCallback) {
    struct Case {
        const char* name;
        std::function<void(sim::BarrageServer&)> before;  // before the login
        std::function<void(sim::BarrageServer&)> after;   // once logged in
        Kind step;
        int32_t code;
    };
    const Case cases[] = {
        {"server disconnects", nullptr, [](auto& s) { s.disconnectAll(); }, Kind::Abort,
         kMessageClientClosedByServer},
        {"bad frame mark", nullptr, [](auto& s) { s.sendMalformedFrame(); }, Kind::Abort,
         kMessageClientProtocolError},
        {"oversized claim", nullptr, [](auto& s) { s.sendOversizedFrame(); }, Kind::Abort,
         kMessageClientProtocolError},
        {"keep-alives unanswered", [](auto& s) { s.setAnswerKeepAlive(false); }, nullptr,
         Kind::Abort, kMessageClientKeepAliveTimeout},
        {"no login reply", [](auto& s) { s.setAnswerLogin(false); }, nullptr,
         Kind::RepeaterFinished, kMessageClientLoginTimeout},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        sim::BarrageServer server;
        CallbackRecorder recorder;
        if (c.before) {
            c.before(server);
        }
        MessageClient* client = startClient(recorder, server);
        if (c.after) {
            ASSERT_TRUE(recorder.waitForCount(Kind::LoginReply, 1));
            c.after(server);
        }
        ASSERT_TRUE(recorder.waitForCount(Kind::Error, 1));
        const Events events = recorder.events();
        const std::vector<Kind> kinds = CallbackRecorder::kinds(events);
        ASSERT_GE(kinds.size(), 2u);
        EXPECT_EQ(kinds[kinds.size() - 2], c.step);
        EXPECT_EQ(kinds.back(), Kind::Error);
        // The step and the error carry the same code; a reset may stand for a close.
        std::vector<int32_t> codes;
        for (const auto& e : events) {
            if (e.kind == c.step || e.kind == Kind::Error) {
                codes.push_back(e.code);
            }
        }
        const int32_t code = codes.back();
        EXPECT_TRUE(code == c.code || (c.code == kMessageClientClosedByServer &&
                                       code == kMessageClientConnectionReset))
            << code;
        EXPECT_EQ(codes[codes.size() - 2], code);
        EXPECT_EQ(client->loginState(), 0);
        client->release();
    }
}

// That reset closes silently shows in the room client's round-robin test, which reconnects by it.
TEST_F(MessageClientTest, NoCallbackRunsAfterUnregisteringOrReleaseReturns) {
    for (const bool release : {false, true}) {
        SCOPED_TRACE(release ? "release" : "unregister");
        sim::BarrageServer server;
        CallbackRecorder recorder;
        MessageClient* client = startClient(recorder, server);
        ASSERT_TRUE(recorder.waitForCount(Kind::LoginReply, 1));
        recorder.callbackDelayMs = 1;  // callbacks in flight while the caller unregisters
        server.setGeneratorRate(2000);
        ASSERT_TRUE(recorder.waitFor([](const Events& e) { return e.size() > 30; }));
        MessageCallbacks empty;
        if (release) {
            client->release();
        } else {
            ASSERT_TRUE(client->registerCallbacks(&empty, nullptr));
        }
        recorder.closed = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        if (release) {
            EXPECT_TRUE(server.waitUntil([](const auto& r) { return !r[0].open; },
                                         std::chrono::seconds(5)));
        }
        server.disconnectAll();  // would fire abort and error if still registered
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_EQ(recorder.lateCalls.load(), 0);
        if (!release) {
            client->release();
        }
    }
}

TEST_F(MessageClientTest, RefusesWhatItCannotUse) {
    makeClient();
    EXPECT_FALSE(client_->login("a", 1, "b", 13, 5, "", 3));  // no server yet
    EXPECT_FALSE(client_->setServerAddress(nullptr, 80));
    EXPECT_FALSE(client_->setServerAddress("127.0.0.1", 0));
    EXPECT_FALSE(client_->setServerAddress("127.0.0.1", 65536));
    MessageCallbacks wrongSize = recorder_.table();
    wrongSize.size = 88;
    EXPECT_FALSE(client_->registerCallbacks(&wrongSize, &recorder_));
    EXPECT_TRUE(client_->registerCallbacks(nullptr, nullptr));

    ShutdownMessageClientSystem();
    EXPECT_EQ(CreateVxMessageClient(), nullptr);  // the library is not started
    EXPECT_EQ(CreateVxMessageDecoder(), nullptr);
    StartupMessageClientSystem();
}

TEST_F(MessageClientTest, MayBeReleasedFromItsOwnCallback) {
    struct Context {
        MessageClient* client = nullptr;
        std::atomic<bool> released{false};
    } context;
    context.client = CreateVxMessageClientWithOptions(fastOptions());
    MessageCallbacks table;
    table.onRepeaterServerLoginReply = [](const char*, void* user) {
        auto* c = static_cast<Context*>(user);
        c->client->release();
        c->released = true;
    };
    context.client->registerCallbacks(&table, &context);
    context.client->setServerAddress(sim::BarrageServer::host(), server_.port());
    context.client->login("a", 1, "b", 13, 5, "", 3);
    ASSERT_TRUE(server_.waitUntil([](const auto& r) { return !r.empty() && !r[0].open; },
                                  std::chrono::seconds(5)));
    EXPECT_TRUE(context.released);
}

}  // namespace

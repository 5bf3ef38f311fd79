#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QRegularExpression>
#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "barrage/barrage_server.h"
#include "barrage/barrage_texts.h"
#include "barrage/message_dispatch.h"
#include "barrage/recording_listener.h"
#include "barrage/vx_room_client.h"
#include "halyard/danmu_mock_platform.h"
#include "support/log_reader.h"
#include "support/scoped_env.h"
#include "support/wait.h"

namespace {

using State = RecordingListener::State;
using Records = std::vector<sim::BarrageConnectionRecord>;

size_t connectionCount(const sim::BarrageServer& server) {
    return server.connections().size();
}

class RoomClientTest : public ::testing::Test {
protected:
    void SetUp() override {
        DanmuMockPlatform::reload();
        makeClient();
    }
    void TearDown() override {
        client_.reset();
        workspace_.writeDefaultData(kNowhereDefaultData);
        DanmuMockPlatform::reload();
    }

    void makeClient() {
        client_.reset();
        listener_ = std::make_unique<RecordingListener>();
        client_ = std::make_unique<VxRoomClient>(nullptr, listener_.get());
        QObject::connect(client_.get(), &VxRoomClient::errorReceived,
                         [this] { ++reconnectRequests_; });
        // Direct: the time an error is raised on the library's thread, not when it is handled.
        QObject::connect(
            client_.get(), &VxRoomClient::errorReceived, client_.get(),
            [this] {
                if (firstErrorMs_ < 0) {
                    firstErrorMs_ = sinceLogin_.elapsed();
                }
            },
            Qt::DirectConnection);
        reconnectRequests_ = 0;
        firstErrorMs_ = -1;
    }

    RoomLoginParams paramsFor(const std::vector<const sim::BarrageServer*>& servers) const {
        // The other login items are checked through the service, end to end.
        RoomLoginParams params;
        params.roomId = 4242;
        params.loginText1 = "90001";
        for (const sim::BarrageServer* server : servers) {
            params.servers.push_back({sim::BarrageServer::host(), server->port()});
        }
        return params;
    }

    void login(const std::vector<const sim::BarrageServer*>& servers) {
        client_->setLoginParams(paramsFor(servers));
        sinceLogin_.start();
        client_->login();
    }
    // Logs in to the given servers and waits for the login reply's report.
    void loginAndWait(const std::vector<const sim::BarrageServer*>& servers) {
        login(servers);
        ASSERT_TRUE(waitUntil([&] { return countOf(0) >= 1; }, 5000));
    }

    int countOf(int32_t status) const {
        const std::vector<int32_t> statuses = listener_->state().statuses;
        return static_cast<int>(std::count(statuses.begin(), statuses.end(), status));
    }

    bool waitForType(const std::string& typeName, int count = 1, int timeoutMs = 5000) {
        return waitUntil([&] { return listener_->state().countOfType(typeName) >= count; },
                         timeoutMs);
    }

    IsolatedWorkspace workspace_;
    std::unique_ptr<RecordingListener> listener_;
    std::unique_ptr<VxRoomClient> client_;
    std::atomic<int> reconnectRequests_{0};
    QElapsedTimer sinceLogin_;
    std::atomic<qint64> firstErrorMs_{-1};
};

TEST_F(RoomClientTest, LoginCarriesTheParametersAndTheReplyStartsChannelsAndSubscriptions) {
    sim::BarrageServer server;
    loginAndWait({&server});
    ASSERT_TRUE(server.waitUntil(
        [](const Records& r) {
            return r.size() == 1 && r[0].channelRequests.size() == 10 &&
                   r[0].subscriptions.size() == 9;
        },
        std::chrono::seconds(5)));

    const sim::BarrageConnectionRecord record = server.connections().front();
    EXPECT_EQ(record.channelRequests,
              std::vector<std::string>(std::begin(tolvane::barrage::kLoginChannelRequests),
                                       std::end(tolvane::barrage::kLoginChannelRequests)));
    // The repeater's login-reply callback subscribes to "olviplst" before the reply itself is
    // dispatched; the reply then adds its eight.
    std::vector<std::pair<bool, std::string>> expectedSubs = {{true, "olviplst"}};
    for (const char* channel : tolvane::barrage::kLoginSubscriptions) {
        expectedSubs.emplace_back(true, channel);
    }
    EXPECT_EQ(record.subscriptions, expectedSubs);
    EXPECT_EQ(listener_->state().statuses, std::vector<int32_t>{0});
    EXPECT_TRUE(client_->loggedIn());

    // The server answers the requests: the notice value and the fans brand come back.
    ASSERT_TRUE(waitUntil([&] {
        const State s = listener_->state();
        return s.notices.size() == 2 && s.fansBrands.size() == 1;
    }));
    EXPECT_EQ(listener_->state().fansBrands.front(), "sim brand");
    EXPECT_EQ(listener_->state().notices, (std::vector<int32_t>{3, 3}));
}

struct MatrixCase {
    int32_t code;
    bool kickedFirst;
    std::vector<int32_t> statuses;  // after the login's 0 (and the kick's 211)
    bool reconnect;
    bool loggedInAfter;
    bool stoppedAfter;
};

TEST_F(RoomClientTest, ServerErrorsReportAndReconnectAsTheMatrixSays) {
    // Every code is mapped in the verdict table; here one row per distinct outcome.
    const MatrixCase cases[] = {
        {51, false, {213}, true, true, false},    {252, true, {213}, false, false, false},
        {365, false, {230}, false, false, false}, {59, false, {211}, false, false, false},
        {206, false, {212}, true, true, false},   {267, false, {}, false, true, true},
        {60206, false, {}, false, true, false},   {1000, false, {}, true, true, false},
    };
    for (const MatrixCase& c : cases) {
        SCOPED_TRACE(testing::Message() << "code " << c.code << " kicked " << c.kickedFirst);
        makeClient();
        sim::BarrageServer server;
        loginAndWait({&server});
        int errorsSeen = 0;
        std::vector<int32_t> expected = {0};
        if (c.kickedFirst) {
            server.sendError(59);
            ASSERT_TRUE(waitForType("error", ++errorsSeen));
            expected.push_back(211);
            EXPECT_TRUE(client_->kicked());
        }
        spinEvents(20);
        reconnectRequests_ = 0;

        server.sendError(c.code);
        ASSERT_TRUE(waitForType("error", ++errorsSeen));
        spinEvents(30);  // lets the queued reconnect request through

        expected.insert(expected.end(), c.statuses.begin(), c.statuses.end());
        EXPECT_EQ(listener_->state().statuses, expected);
        EXPECT_EQ(reconnectRequests_.load(), c.reconnect ? 1 : 0);
        EXPECT_EQ(client_->reconnectPending(), c.reconnect);
        EXPECT_EQ(client_->loggedIn(), c.loggedInAfter);
        EXPECT_EQ(client_->stopped(), c.stoppedAfter);
        EXPECT_TRUE(mainLogHas(QStringLiteral("[msg] error:%1.").arg(c.code)));
        if (c.kickedFirst) {  // a new login reply clears the kicked flag
            client_->login();
            ASSERT_TRUE(waitUntil([&] { return countOf(0) == 2; }));
            EXPECT_FALSE(client_->kicked());
        }
    }
}

TEST_F(RoomClientTest, ServersAreTriedRoundRobinOneSecondApartAndTheIndexSurvivesLogout) {
    sim::BarrageServer servers[3];
    loginAndWait({&servers[0], &servers[1], &servers[2]});

    // Each server in turn says something that only calls for a new connection.
    const int order[] = {0, 1, 2, 0};
    for (int step = 0; step + 1 < 4; ++step) {
        sim::BarrageServer& current = servers[order[step]];
        sim::BarrageServer& next = servers[order[step + 1]];
        const size_t before = connectionCount(next);
        QElapsedTimer clock;
        clock.start();
        current.sendError(1000);
        ASSERT_TRUE(waitUntil([&] { return connectionCount(next) > before; }, 5000))
            << "step " << step;
        // Never early: a coarse timer once let this fire after 950 ms.
        EXPECT_TRUE(clock.elapsed() >= 1000 && clock.elapsed() <= 2500) << clock.elapsed();
        ASSERT_TRUE(waitUntil([&] { return countOf(0) == step + 2; }, 5000));
    }
    EXPECT_EQ(connectionCount(servers[0]), 2u);
    EXPECT_EQ(connectionCount(servers[1]), 1u);
    EXPECT_EQ(connectionCount(servers[2]), 1u);

    client_->logout();
    EXPECT_FALSE(client_->hasMessageClient());
    client_->login();
    ASSERT_TRUE(waitUntil([&] { return connectionCount(servers[1]) == 2; }));
    EXPECT_EQ(connectionCount(servers[0]), 2u);
}

TEST_F(RoomClientTest, LogoutCancelsAPendingReconnectAndLaterErrorsArmNothing) {
    sim::BarrageServer server;
    loginAndWait({&server});
    server.sendError(1000);
    ASSERT_TRUE(waitUntil([&] { return client_->reconnectPending(); }));
    // The error's log line follows the reconnect request on the I/O thread.
    ASSERT_TRUE(waitUntil([] { return mainLogHas(QStringLiteral("[msg] error:1000.")); }));

    client_->logout();
    EXPECT_FALSE(client_->reconnectPending());
    EXPECT_TRUE(client_->stopped());
    Q_EMIT client_->errorReceived();
    spinEvents(1300);
    EXPECT_FALSE(client_->reconnectPending());
    EXPECT_EQ(connectionCount(server), 1u);

    const QStringList log = readLogMessages(tolvane::log::kMainLog);
    const QStringList expected = {"[msg] logout begin.", "[msg] unRegist MessageCallback.",
                                  "[msg] release Client.", "[msg] logout end."};
    const int begin = log.indexOf(expected.front());
    ASSERT_GE(begin, 0);
    EXPECT_EQ(log.mid(begin, expected.size()), expected);
}

// The kick or suspension lands while the retry armed by a lost connection is counting down.
TEST_F(RoomClientTest, AKickOrASuspensionVoidsAnArmedReconnect) {
    const std::pair<int32_t, int32_t> cases[] = {{59, 211}, {56, 230}};
    for (const auto& [code, status] : cases) {
        SCOPED_TRACE(testing::Message() << "code " << code);
        makeClient();
        sim::BarrageServer server;
        loginAndWait({&server});
        server.sendError(51);
        ASSERT_TRUE(waitUntil([&] { return client_->reconnectPending(); }));
        server.sendError(code);
        ASSERT_TRUE(waitUntil([&] { return countOf(status) == 1; }));
        spinEvents(1300);
        EXPECT_EQ(connectionCount(server), 1u);
        EXPECT_EQ(countOf(0), 1);
        EXPECT_FALSE(client_->loggedIn());
    }
}

// Refused by the message client on the spot, an address is one more failed attempt.
TEST_F(RoomClientTest, AnUnusableFirstServerHandsTheRoomToTheNextASecondLater) {
    const BarrageServerAddr unusable[] = {{"127.0.0.1", 0}, {"127.0.0.1", 70000}, {"", 4242}};
    for (const BarrageServerAddr& first : unusable) {
        SCOPED_TRACE(testing::Message() << '"' << first.host << "\" " << first.port);
        makeClient();
        sim::BarrageServer server;
        RoomLoginParams params = paramsFor({&server});
        params.servers.insert(params.servers.begin(), first);
        client_->setLoginParams(params);
        QElapsedTimer clock;
        clock.start();
        client_->login();
        ASSERT_TRUE(waitUntil([&] { return countOf(0) == 1; }, 5000));
        EXPECT_GE(clock.elapsed(), 1000);
        EXPECT_TRUE(mainLogHas(QStringLiteral("[msg] connect refused ip:%1 poort:%2.")
                                   .arg(QString::fromStdString(first.host))
                                   .arg(first.port)));
    }
}

// What the support desk reads of one connection's life: in, a message each way, a break, back.
TEST_F(RoomClientTest, ConnectionLifeWritesEveryLogLine) {
    sim::BarrageServer server;
    loginAndWait({&server});
    ASSERT_TRUE(waitForType("monthrk"));
    EXPECT_EQ(client_->sendRawMessage("type=get;msgtype=weekrk;"), 0);
    client_->sendKeepAliveNow();
    ASSERT_TRUE(waitForType("weekrk", 2) && waitForType("keepalive"));
    server.disconnectAll();
    ASSERT_TRUE(waitUntil([&] { return countOf(0) == 2; }, 5000));
    client_.reset();  // flushes msg.log

    const QString port = QString::number(server.port());
    const QString address = QStringLiteral("ip: 127\\.0\\.0\\.1, port: ") + port + '$';
    const std::pair<QString, QString> lines[] = {
        {tolvane::log::kMainLog, QStringLiteral("^\\[msg\\] CreateVxMessageClient\\.$")},
        {tolvane::log::kMainLog, QStringLiteral("^\\[msg\\] login start threadId: \\d+\\.$")},
        {tolvane::log::kMainLog, QStringLiteral("^\\[msg\\] connect threadId:\\d+$")},
        {tolvane::log::kMainLog,
         QStringLiteral("^\\[msg\\] connect ip:127\\.0\\.0\\.1 poort:") + port + '$'},
        {tolvane::log::kMainLog, QStringLiteral("^\\[msg\\] login ok\\.$")},
        {tolvane::log::kMainLog, QStringLiteral("^\\[msg\\] error:\\d+$")},
        {tolvane::log::kMessageLog, QStringLiteral("^\\[msg\\] GateServerConnectFinished: 0$")},
        {tolvane::log::kMessageLog,
         QStringLiteral("^\\[msg\\] RepeatServerConnectFinished\\{code: 0, ") + address},
        {tolvane::log::kMessageLog,
         QStringLiteral("^\\[msg\\] onRepeaterServerLoginres\\{ type=loginres;.* \\}$")},
        {tolvane::log::kMessageLog,
         QStringLiteral("^\\[sendRawMessage\\]: type=get;msgtype=noble_num_info;$")},
        {tolvane::log::kMessageLog,
         QStringLiteral("^\\[sendRawMessage\\]: type=get;msgtype=weekrk;$")},
        {tolvane::log::kMessageLog, QStringLiteral("^type=loginres;.*")},
        {tolvane::log::kMessageLog, QStringLiteral("^type=weekrk;.*")},
        {tolvane::log::kMessageLog, QStringLiteral("^\\[msg\\] onMsgKeepLive$")},
        {tolvane::log::kMessageLog,
         QStringLiteral("^\\[msg\\] RepeatServerConnectAbort\\{code: \\d+, details: .+, ") +
             address},
        {tolvane::log::kMessageLog, QStringLiteral("^onMsgError: \\d+$")},
    };
    for (const auto& [log, pattern] : lines) {
        EXPECT_GE(readLogMessages(log).indexOf(QRegularExpression(pattern)), 0)
            << log.toStdString() << ": " << pattern.toStdString();
    }
}

TEST_F(RoomClientTest, MockSwitchTakesEveryAttemptWhileTheIndexStillMoves) {
    sim::BarrageServer mock;
    sim::BarrageServer listed[3];
    workspace_.writeDefaultData(QStringLiteral(R"({"danmu.mock": {"enabled": true, )"
                                               R"("ip": "127.0.0.1", "port": %1}})")
                                    .arg(mock.port())
                                    .toUtf8());
    DanmuMockPlatform::reload();
    loginAndWait({&listed[0], &listed[1], &listed[2]});
    mock.sendError(1000);
    ASSERT_TRUE(waitUntil([&] { return connectionCount(mock) == 2; }, 5000));
    ASSERT_TRUE(waitUntil([&] { return countOf(0) == 2; }));

    // Two attempts went to the mock; the third listed server is next in line.
    workspace_.writeDefaultData(kNowhereDefaultData);
    DanmuMockPlatform::reload();
    mock.sendError(1000);
    ASSERT_TRUE(waitUntil([&] { return connectionCount(listed[2]) == 1; }, 5000));
    EXPECT_EQ(connectionCount(listed[0]), 0u);
    EXPECT_EQ(connectionCount(listed[1]), 0u);
    EXPECT_EQ(connectionCount(mock), 2u);
}

TEST_F(RoomClientTest, EmptyServerListLogsAndStillCountsAsLoggedIn) {
    client_->setLoginParams(paramsFor({}));
    client_->login();
    EXPECT_TRUE(client_->loggedIn());
    EXPECT_TRUE(mainLogHas(QStringLiteral("[msg] select server addr failed.")));
}

// Order and replacement are shown on the store itself; here its feed and its reset.
TEST_F(RoomClientTest, LatestWatchedMessagesHoldTheAnswersUntilLogout) {
    sim::BarrageServer server;
    loginAndWait({&server});
    ASSERT_TRUE(waitForType("monthrk"));
    // A member information reply is reported but not kept, although its type is watched.
    EXPECT_EQ(client_->requestMemberInfo(), 0);
    ASSERT_TRUE(
        waitUntil([&] { return listener_->state().memberInfo == std::vector<int32_t>{88}; }));
    std::vector<std::string> latest;
    client_->latestWatchedMessages(latest);
    std::vector<std::string> types;
    for (const std::string& text : latest) {
        types.push_back(text.substr(0, text.find(';')));
    }
    // The answers to the login's channel requests; "noble_num_info" and "dfansrk" are not kept.
    EXPECT_EQ(types, (std::vector<std::string>{"type=loginres", "type=fansrk", "type=fansswrk",
                                               "type=olviplst", "type=dayrk", "type=weekrk",
                                               "type=totalrk", "type=monthrk"}));
    client_->logout();
    client_->latestWatchedMessages(latest);
    EXPECT_TRUE(latest.empty());
}

TEST_F(RoomClientTest, ShowEndReasonsAreMappedAndUnknownOnesDropped) {
    sim::BarrageServer server;
    loginAndWait({&server});
    // The reason mapping itself is a table in the dispatch tests.
    server.sendShowEnd(3, 2.5);
    server.sendShowEnd(5, 8);
    ASSERT_TRUE(waitForType("liveend", 2));
    const std::vector<std::pair<int32_t, int32_t>> expected = {{1, 2}};
    EXPECT_EQ(listener_->state().showEnds, expected);
    const QStringList log = readLogMessages(tolvane::log::kMainLog);
    EXPECT_TRUE(log.contains(QStringLiteral("[msg] Show End reason:3 banour:2.5.")));
    EXPECT_TRUE(log.filter(QStringLiteral("Show End reason:5")).isEmpty());
}

TEST_F(RoomClientTest, BrokenFramesAreDroppedWithALogLineAndTheClientComesBack) {
    sim::BarrageServer server;
    loginAndWait({&server});
    server.sendText("this is not a barrage text");
    ASSERT_TRUE(waitUntil([&] {
        const State s = listener_->state();
        return std::any_of(s.messages.begin(), s.messages.end(),
                           [](const BarrageMessage& m) { return m.typeCode == -1; });
    }));

    // Each kind of broken frame is shown at the message client; here one must reconnect.
    server.sendOversizedFrame();
    ASSERT_TRUE(waitUntil([&] { return countOf(0) == 2; }, 5000));
    EXPECT_GE(readLogMessages(tolvane::log::kMainLog)
                  .indexOf(QRegularExpression(QStringLiteral("^\\[msg\\] error:1000[34]$"))),
              0);
    EXPECT_EQ(connectionCount(server), 2u);
}

// What the forwarded operations put on the wire is shown at the message client and the service.
TEST_F(RoomClientTest, ForwardedOperationsNeedAClient) {
    EXPECT_EQ(client_->sendChat("hi"), -1);
    EXPECT_EQ(client_->sendRawMessage("type=x;"), -1);
    EXPECT_EQ(client_->sendRoomText("x"), -1);
    EXPECT_EQ(client_->loginState(), UINT32_MAX);
    EXPECT_EQ(client_->requestMemberInfo(), -1);
    EXPECT_EQ(client_->requestChannel("dayrk"), -1);

    sim::BarrageServer server;
    loginAndWait({&server});
    EXPECT_EQ(client_->sendChat("hello room"), 0);
    EXPECT_EQ(client_->loginState(), 1u);
    EXPECT_TRUE(mainLogHas(QStringLiteral("[msg] chartMsg:hello room")));
}

// A misbehaving server: a frame written a byte at a time, a login never answered.
TEST_F(RoomClientTest, AFrameWrittenOneByteAtATimeArrivesWhole) {
    sim::BarrageServer server;
    // The pieces must not interleave with the replies to the login's channel requests.
    loginAndWait({&server});
    ASSERT_TRUE(waitForType("monthrk"));
    const std::string text = sim::BarrageTexts::chat(900, 4242, 77, "slow", "one by one 中");
    // Each byte its own write and, with the gap, its own segment: every read sees one byte.
    server.sendTextInPieces(text, 1, std::chrono::milliseconds(1));
    std::vector<std::string> copies;
    // A hundred timed writes are slow under the thread sanitizer.
    ASSERT_TRUE(waitUntil(
        [&] {
            copies.clear();
            for (const BarrageMessage& m : listener_->state().messages) {
                if (m.headerAt0 == 900) {
                    copies.push_back(m.rawText);
                }
            }
            return !copies.empty();
        },
        30000));
    EXPECT_EQ(copies, std::vector<std::string>{text});
    EXPECT_EQ(firstErrorMs_.load(), -1);
}

TEST_F(RoomClientTest, AServerThatNeverAnswersTimesOutTheLogin) {
    constexpr int kLoginTimeoutMs = 1000;
    MessageClientOptions options;
    options.loginTimeoutMs = kLoginTimeoutMs;
    client_->setClientOptions(options);
    sim::BarrageServer server;
    server.setAnswerLogin(false);
    login({&server});
    ASSERT_TRUE(waitUntil([&] { return firstErrorMs_.load() >= 0; }, 3 * kLoginTimeoutMs));
    // The login time-out, honoured within 10 %.
    EXPECT_GE(firstErrorMs_.load(), kLoginTimeoutMs);
    EXPECT_LE(firstErrorMs_.load(), kLoginTimeoutMs * 11 / 10);
    EXPECT_TRUE(logContains(tolvane::log::kMainLog, "[msg] error:10005"));
    EXPECT_TRUE(listener_->state().statuses.empty());
    // The client goes on to the next attempt a second later.
    EXPECT_TRUE(waitUntil([&] { return connectionCount(server) >= 2; }, 3000));
}

}  // namespace

// A streamer's barrage log, read back and played through the simulator's barrage server.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "barrage/barrage_server.h"
#include "log/log_writer.h"
#include "platform/sim_platform.h"
#include "relay/sim_relay.h"
#include "replay/barrage_replay.h"
#include "replay/msg_log_lines.h"
#include "service/vx_net_service_imp.h"
#include "support/recording_observer.h"
#include "support/scoped_env.h"
#include "support/wait.h"

using tolvane::sim::LoggedMessage;
using tolvane::sim::parseMessageLogLine;

TEST(MsgLogReplay, ReadsReceivedMessagesAndSkipsEveryOtherLine) {
    const std::string chat = "type=chatmsg;rid=880001;txt=hi\\sthere;";
    const struct {
        std::string line;
        std::optional<int> msOfDay;  // none: not a received message
    } cases[] = {
        {"[12:34:56.789] " + chat, 45296789},
        {"[00:00:00.000] " + chat + "\r\n", 0},
        {"[23:59:59.999] type=loginres;seq=1;", 86399999},
        {"[12:34:56.789] [msg] onMsgKeepLive", std::nullopt},
        {"[12:34:56.789] onMsgError: 51", std::nullopt},
        {"[12:34:56.789] [sendRawMessage]: type=get;msgtype=dayrk;", std::nullopt},
        {"[12:34:56.789] ", std::nullopt},
        {"[12:34:56.789] type=chatmsg;txt=cut sh", std::nullopt},
        {"[12:34:56.789] txt=x;type=chatmsg;", std::nullopt},
        {"[24:00:00.000] " + chat, std::nullopt},
        {"[12:60:00.000] " + chat, std::nullopt},
        {"12:34:56.789 " + chat, std::nullopt},
    };
    for (const auto& c : cases) {
        const auto message = parseMessageLogLine(c.line);
        ASSERT_EQ(message.has_value(), c.msOfDay.has_value()) << c.line;
        if (message) {
            EXPECT_EQ(message->msOfDay, *c.msOfDay) << c.line;
            EXPECT_EQ(message->text.rfind("type=", 0), 0u) << c.line;
            EXPECT_EQ(message->text.back(), ';') << c.line;
        }
    }
    EXPECT_TRUE(tolvane::sim::isConnectionAnswer("type=loginres;seq=1;"));
    EXPECT_TRUE(tolvane::sim::isConnectionAnswer("type=keepalive;tick=3;"));
    EXPECT_FALSE(tolvane::sim::isConnectionAnswer(chat));
}

TEST(MsgLogReplay, KeepsLogOrderAcrossMidnightAndClockSteps) {
    auto at = [](int h, int m, int s, int ms) {
        return LoggedMessage{((h * 60 + m) * 60 + s) * 1000 + ms, "type=chatmsg;"};
    };
    const struct {
        const char* what;
        std::vector<LoggedMessage> messages;
        std::vector<long long> offsets;
    } cases[] = {
        {"midnight",
         {at(23, 59, 59, 500), at(23, 59, 59, 900), at(0, 0, 0, 100), at(0, 0, 1, 0)},
         {0, 400, 600, 1500}},
        {"lines written out of order",
         {at(10, 0, 0, 500), at(10, 0, 0, 400), at(10, 0, 1, 0)},
         {0, 0, 600}},
        {"clock set back an hour", {at(3, 0, 0, 0), at(2, 0, 0, 0), at(2, 0, 0, 250)}, {0, 0, 250}},
        {"one message", {at(8, 0, 0, 0)}, {0}},
    };
    for (const auto& c : cases) {
        const auto steps = tolvane::sim::replayTimeline(c.messages);
        std::vector<long long> offsets;
        for (const auto& step : steps) {
            offsets.push_back(step.at.count());
        }
        EXPECT_EQ(offsets, c.offsets) << c.what;
    }
}

namespace {

// Keeps the text of every chat and gift the host hears, the streamer's barrage proper.
class BarrageTextRecorder : public RecordingObserver {
public:
    void onBarrageMessage(const BarrageMessage* message) override {
        RecordingObserver::onBarrageMessage(message);
        if (message->typeName == "chatmsg" || message->typeName == "gift") {
            add("text " + message->rawText);
        }
    }
    std::vector<std::string> texts() const { return events("text "); }
};

}  // namespace

TEST(MsgLogReplay, AnObserverHearsTheRecordedBarrageAgainInOrder) {
    IsolatedWorkspace workspace;
    BarrageTextRecorder recorded;
    {
        // Recorded behind a slow line, as a streamer's host would be.
        tolvane::sim::SimEnvironment::Options slow;
        slow.link.latencyMs = 20;
        tolvane::sim::SimPlatform sim(workspace.path(), slow);
        ASSERT_TRUE(sim.start());
        ASSERT_TRUE(sim.startBarrageServers(1));
        sim.barrageServer(0).setGeneratorRate(300);
        VxNetServiceImp service(&recorded, nullptr);
        std::string error, token;
        ASSERT_EQ(service.login("anchor", "secret123", error, token), 0) << error;
        ASSERT_EQ(service.startBarrage(), 0);
        ASSERT_TRUE(waitUntil([&] { return recorded.texts().size() >= 30; }, 10000))
            << "watchdog: waiting for 30 chats and gifts, heard " << recorded.texts().size();
        EXPECT_EQ(sim.barrageRelay(0)->connections(), 1);
        EXPECT_GE(sim.environment().relay()->connections(), 1);
    }
    // The service is gone, its msg.log closed; everything the host heard is in it.
    const auto steps = tolvane::sim::readReplay(
        tolvane::log::logFilePath(tolvane::log::kMessageLog).toStdString());
    ASSERT_TRUE(steps.has_value());
    const std::vector<std::string> expected = recorded.texts();

    tolvane::sim::SimPlatform sim(workspace.path());
    ASSERT_TRUE(sim.start());
    ASSERT_TRUE(sim.startBarrageServers(1));
    tolvane::sim::BarrageReplay replay(*steps, 4.0);
    replay.attach({&sim.barrageServer(0)});
    BarrageTextRecorder replayed;
    VxNetServiceImp service(&replayed, nullptr);
    std::string error, token;
    ASSERT_EQ(service.login("anchor", "secret123", error, token), 0) << error;
    ASSERT_EQ(service.startBarrage(), 0);
    ASSERT_TRUE(waitUntil([&] { return replay.sent() == replay.size(); }, 10000))
        << "watchdog: waiting for the replay to finish, " << replay.sent() << " of "
        << replay.size() << " sent";
    ASSERT_TRUE(waitUntil([&] { return replayed.texts().size() >= expected.size(); }, 5000))
        << "watchdog: waiting for " << expected.size() << " chats and gifts, heard "
        << replayed.texts().size();
    EXPECT_EQ(replayed.texts(), expected);
}

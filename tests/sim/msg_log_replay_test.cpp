// A streamer's barrage log, read back into the steps the simulator replays.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "replay/msg_log_lines.h"

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

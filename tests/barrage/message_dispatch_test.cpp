#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "barrage/latest_messages.h"
#include "barrage/message_dispatch.h"

using tolvane::barrage::ErrorVerdict;

namespace {

struct VerdictCase {
    int32_t code;
    bool kicked;
    ErrorVerdict expected;
};

ErrorVerdict verdict(bool report, int32_t status, bool reconnect, bool setKicked = false,
                     bool clearLoggedIn = false, bool setStopped = false) {
    ErrorVerdict v;
    v.report = report;
    v.status = status;
    v.reconnect = reconnect;
    v.setKicked = setKicked;
    v.clearLoggedIn = clearLoggedIn;
    v.setStopped = setStopped;
    return v;
}

TEST(ErrorVerdictTest, EachServerCodeMapsToItsStatusAndReconnectDecision) {
    const VerdictCase cases[] = {
        {51, false, verdict(true, 213, true)},
        {252, false, verdict(true, 213, true)},
        {51, true, verdict(true, 213, false)},
        {252, true, verdict(true, 213, false)},
        {56, false, verdict(true, 230, false, false, true)},
        {365, true, verdict(true, 230, false, false, true)},
        {59, false, verdict(true, 211, false, true, true)},
        {206, false, verdict(true, 212, true)},
        {251, true, verdict(true, 212, true)},
        {267, false, verdict(false, 0, false, false, false, true)},
        {60206, false, verdict(false, 0, false)},
        {300060206, false, verdict(false, 0, false)},
        {1000, false, verdict(false, 0, true)},
        {0, true, verdict(false, 0, true)},
        {-1, false, verdict(false, 0, true)},
    };
    for (const VerdictCase& c : cases) {
        SCOPED_TRACE(testing::Message() << "code " << c.code << " kicked " << c.kicked);
        EXPECT_EQ(tolvane::barrage::errorVerdict(c.code, c.kicked), c.expected);
    }
}

TEST(ShowEndReasonTest, KnownReasonsMapAndOthersAreDropped) {
    const std::pair<int32_t, int32_t> cases[] = {{1, 0},  {2, 2},  {3, 1},   {4, 2},
                                                 {0, -1}, {5, -1}, {-3, -1}, {INT32_MAX, -1}};
    for (const auto& [reason, mapped] : cases) {
        EXPECT_EQ(tolvane::barrage::mapShowEndReason(reason), mapped) << "reason " << reason;
    }
}

TEST(BarrageMessageTest, HeaderValuesGoOutInTheHostsOrder) {
    MessageHeader header{};
    header.sequence = 1;
    header.roomId = 2;
    header.userId = 3;
    header.timestamp = 4;
    header.level = 5;
    header.itemCount = 6;
    header.textLength = 7;
    std::memset(header.typeName, 'x', sizeof header.typeName);  // no NUL: must stay inside

    const BarrageMessage m = tolvane::barrage::makeBarrageMessage(20, "raw", header);
    EXPECT_EQ(m.typeCode, 20);
    EXPECT_EQ(m.rawText, "raw");
    EXPECT_EQ(m.typeName, std::string(sizeof header.typeName, 'x'));
    const std::vector<int32_t> values = {m.headerAt12, m.headerAt8,  m.headerAt16, m.headerAt0,
                                         m.headerAt4,  m.headerAt20, m.headerAt152};
    EXPECT_EQ(values, (std::vector<int32_t>{4, 3, 5, 1, 2, 6, 7}));
}

// What requests and subscriptions carry is shown by the room client's login test.
TEST(OutgoingMessageTest, AChannelTooLongForTheBufferYieldsNothingToSend) {
    EXPECT_EQ(tolvane::barrage::channelRequestText(std::string(9000, 'c').c_str()), "");
}

TEST(LatestMessagesTest, KeepsWatchedTypesInFirstSeenOrderAndReplacesTexts) {
    tolvane::barrage::LatestMessages latest;
    latest.record("dayrk", "day 1");
    latest.record("chatmsg", "not watched");
    latest.record("loginres", "login");
    latest.record("dayrk", "day 2");
    latest.record("dfansrk", "not watched either");
    latest.record("wiru", "wiru");

    std::vector<std::string> out = {"stale"};
    latest.latest(out);
    EXPECT_EQ(out, (std::vector<std::string>{"day 2", "login", "wiru"}));

    latest.clear();
    latest.latest(out);
    EXPECT_TRUE(out.empty());
}

}  // namespace

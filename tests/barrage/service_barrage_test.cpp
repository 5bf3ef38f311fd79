#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "barrage/barrage_texts.h"
#include "support/blocking_host.h"
#include "support/log_reader.h"
#include "support/sim_service_fixture.h"
#include "support/watchdog.h"

namespace {

using Records = std::vector<sim::BarrageConnectionRecord>;

class ServiceBarrage : public BarrageSimServiceTest {
protected:
    Records records() { return server().connections(); }
};

TEST_F(ServiceBarrage, StartLogsInWithTheSessionAndReportsToTheHost) {
    service_->setClientVersion("DE_AD_BE_EF_00_01", "v2.3.4.5");
    service_->setBarrageProtocolNumber(777);
    login();
    startAndWait();
    EXPECT_EQ(observer_.events("status "), std::vector<std::string>{"status 0"});

    ASSERT_TRUE(server().waitUntil(
        [](const Records& r) { return r.size() == 1 && r[0].channelRequests.size() == 10; },
        std::chrono::seconds(5)));
    const sim::BarrageConnectionRecord record = records().front();
    std::string token;
    service_->getToken(token);
    ShortTokenInfo session;
    service_->getLoginInfo(session);
    // clang-format off
    const std::vector<std::pair<std::string, std::string>> expected = {
        {"ltx1", session.uid}, {"lnum", "777"}, {"ltx2", token}, {"ct", "13"},
        {"rid", std::to_string(service_->getRoomId())}, {"lmode", "3"},
        {"ptx", "DE_AD_BE_EF_00_01"}, {"pnum", "13"}, {"ptx2", "v2.3.4.5"}};
    // clang-format on
    for (const auto& [key, value] : expected) {
        EXPECT_EQ(record.loginItem(key), value) << key;
    }

    // The answers to the channel requests and a keep-alive land in the service's values.
    service_->barrageCall();
    ASSERT_TRUE(waitUntil(
        [&] { return service_->getSessionValueC() == 3 && service_->getOnlineCount() == 1200; }));
    EXPECT_EQ(service_->getSessionValueA(), 5600);
    ASSERT_TRUE(waitUntil([&] { return observer_.events("message monthrk").size() == 1; }));
    std::vector<std::string> latest;
    EXPECT_EQ(service_->barrageListCall(latest), 0);
    EXPECT_EQ(latest.size(), 8u);
}

TEST_F(ServiceBarrage, ForwardedSlotsReachTheServerAndStopWorkingAfterLogout) {
    login();
    startAndWait();
    EXPECT_EQ(service_->barrageCallConnected(), 0);
    EXPECT_EQ(service_->sendChatMessage("hello"), 0);
    EXPECT_FALSE(service_->sendBarrageText("room line"));
    EXPECT_EQ(service_->sendRawMessage("type=get;msgtype=weekrk;"), 0);
    service_->barrageLoginCall(501, 2, 3);
    ASSERT_TRUE(server().waitUntil(
        [](const Records& r) {
            return !r.empty() && r[0].chats.size() == 1 && r[0].roomTexts.size() == 1 &&
                   r[0].gifts.size() == 1 && r[0].channelRequests.size() == 11;
        },
        std::chrono::seconds(5)));
    EXPECT_NE(records()[0].gifts[0].find("ga4=0;"), std::string::npos);

    // Error 267 stops reconnecting but leaves the connection's object for the slots.
    server().sendError(267);
    ASSERT_TRUE(waitUntil([&] { return observer_.events("message error").size() == 1; }));
    EXPECT_EQ(service_->sendChatMessage("still here"), 0);

    service_->logout();
    EXPECT_EQ(service_->barrageCallConnected(), -1);
    EXPECT_EQ(service_->sendChatMessage("gone"), -1);
    EXPECT_EQ(service_->sendRawMessage("type=x;"), -1);
    EXPECT_EQ(service_->getOnlineCount(), 0);
    EXPECT_EQ(service_->getSessionValueA(), 0);
    EXPECT_EQ(service_->getSessionValueC(), 0);
    std::vector<std::string> latest = {"stale"};
    EXPECT_EQ(service_->barrageListCall(latest), 0);
    EXPECT_TRUE(latest.empty());
    EXPECT_TRUE(mainLogHas("[msg] logout end."));
}

TEST_F(ServiceBarrage, WithoutARoomNothingConnects) {
    // No session: the room information fails and its code comes back unchanged.
    const int32_t result = service_->startBarrage();
    EXPECT_NE(result, 0);
    spinEvents(100);
    EXPECT_TRUE(records().empty());
    EXPECT_EQ(service_->barrageCallConnected(), -1);
    EXPECT_EQ(service_->sendChatMessage("x"), -1);
}

TEST_F(ServiceBarrage, StopSilencesTheHostAndEndsTheConnection) {
    login();
    startAndWait();
    server().sendShowEnd(3, 2.5);
    ASSERT_TRUE(waitUntil([&] { return !observer_.events("end ").empty(); }));
    EXPECT_EQ(observer_.events("end "), std::vector<std::string>{"end 1 2.000000"});

    service_->stop();
    EXPECT_EQ(service_->sendChatMessage("after stop"), -1);
    server().sendShowEnd(1, 0);
    // A message that still found its way in names a gift nobody knows: without a host to
    // show it to, the catalogue must not fetch it either.
    BarrageMessage gift;
    gift.typeName = "gift";
    gift.rawText = sim::BarrageTexts::gift(1, service_->getRoomId(), 2012, "late", 999999, 1, 0);
    static_cast<IRoomListener&>(*service_).onBarrageMessage(&gift);
    spinEvents(1300);
    EXPECT_EQ(observer_.events("end ").size(), 1u);
    EXPECT_EQ(records().size(), 1u);  // no reconnect either
    EXPECT_TRUE(sim().http().requestLog().to("/api/gift/v2/web/single").empty());
}

// A Qt host that hands each barrage message to its own thread, the service's, and waits.
class BlockingHost : public RecordingObserver {
public:
    void onBarrageMessage(const BarrageMessage* message) override {
        if (!blocking) {
            RecordingObserver::onBarrageMessage(message);
            return;
        }
        lateCalls += finished ? 1 : 0;
        hostSide.handOver();
    }

    BlockingHandOver hostSide;
    std::atomic<bool> blocking{false};
    std::atomic<bool> finished{false};  // set once the host's operation has returned
    std::atomic<int> lateCalls{0};
};

struct HostOperation {
    const char* name;
    std::function<void(std::unique_ptr<VxNetServiceImp>&)> run;
};
void PrintTo(const HostOperation& operation, std::ostream* os) {
    *os << operation.name;
}

class BlockingHostBarrage : public BarrageSimServiceTest,
                            public ::testing::WithParamInterface<HostOperation> {
protected:
    ServiceObserver* observer() override { return &host_; }
    BlockingHost host_;
};

// The host's thread ends the barrage while a callback waits for that very thread: the call
// returns, the callback under way has returned by then, and none starts afterwards.
TEST_P(BlockingHostBarrage, EndsWhileACallbackWaitsOnTheServiceThread) {
    login();
    ASSERT_EQ(service_->startBarrage(), 0);
    ASSERT_TRUE(waitUntil([&] { return !host_.events("status ").empty(); }, 5000));
    host_.blocking = true;
    server().setGeneratorRate(500);
    ASSERT_TRUE(host_.hostSide.waitUntilWaiting());
    {
        const Watchdog watchdog(
            std::string(GetParam().name) + " with a barrage callback blocked on the service thread",
            std::chrono::seconds(5));
        GetParam().run(service_);
    }
    EXPECT_EQ(host_.hostSide.waiting(), 0);
    host_.finished = true;
    spinEvents(300);
    EXPECT_EQ(host_.lateCalls.load(), 0);
    server().setGeneratorRate(0);
}

INSTANTIATE_TEST_SUITE_P(
    HostOperations, BlockingHostBarrage,
    ::testing::Values(
        HostOperation{"stop", [](std::unique_ptr<VxNetServiceImp>& s) { s->stop(); }},
        HostOperation{"logout", [](std::unique_ptr<VxNetServiceImp>& s) { s->logout(); }},
        HostOperation{"release",
                      [](std::unique_ptr<VxNetServiceImp>& s) { s.release()->release(); }}),
    [](const ::testing::TestParamInfo<HostOperation>& info) {
        return std::string(info.param.name);
    });

}  // namespace

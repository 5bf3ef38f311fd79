#include <gtest/gtest.h>

#include <memory>

#include "log/log_writer.h"
#include "net/server_time.h"
#include "parse/data_parser.h"
#include "platform/sim_platform.h"
#include "service/vx_net_service_imp.h"
#include "support/log_reader.h"
#include "support/scoped_env.h"
#include "support/wait.h"

namespace {

using tolvane::sim::SimPlatformState;

TEST(ServerTimeParse, Replies) {
    struct Case {
        const char* reply;
        int result;
        int serverTime;
        const char* logLine;  // nullptr: none expected
    };
    const Case cases[] = {
        {R"({"error":0,"data":1000})", 0, 1000, nullptr},
        {R"({"error":0,"data":"1700000000"})", 0, 1700000000, nullptr},
        {R"({"error":0,"data":-5})", 0, -5, "server time return error"},
        {R"({"error":0})", 0, -1, "server time return error"},
        {R"({"error":603,"data":"no"})", 214, -1, R"(ServerTime error:{"error":603,"data":"no"})"},
        {"<html></html>", -1000, -1, "unknown error:-1000"},
    };
    DataParser parser;
    for (const Case& c : cases) {
        int serverTime = -1;
        EXPECT_EQ(parser.parseServerTimeResult(c.reply, serverTime), c.result) << c.reply;
        EXPECT_EQ(serverTime, c.serverTime) << c.reply;
        if (c.logLine != nullptr) {
            EXPECT_EQ(readLogMessages(tolvane::log::kMainLog).last().toStdString(), c.logLine);
        }
    }
}

class ServerTimeSync : public ::testing::Test {
protected:
    void SetUp() override {
        sim_ = std::make_unique<tolvane::sim::SimPlatform>(workspace_.path());
        ASSERT_TRUE(sim_->start());
        tolvane::net::serverTimeFailureCount() = 0;
    }
    size_t timestampRequests() { return sim_->http().requestLog().to("/api/v1/timestamp").size(); }

    IsolatedWorkspace workspace_;
    std::unique_ptr<tolvane::sim::SimPlatform> sim_;
};

// Every failed answer takes the same retry; the parser's table shows which answers fail.
TEST_F(ServerTimeSync, OffsetFollowsTheServersClockUntilStopped) {
    sim_->state().setClockSkewSeconds(3600);
    sim_->state().failTimestamps(3, SimPlatformState::TimeFailure::ServerError);
    VxNetServiceImp service(nullptr, nullptr);
    ASSERT_TRUE(waitUntil([&] { return service.serverTimeOffset() != -65535; }));
    EXPECT_NEAR(static_cast<double>(service.serverTimeOffset()), 3600.0, 1.0);
    EXPECT_NEAR(static_cast<double>(service.getServerTime() - QDateTime::currentSecsSinceEpoch()),
                3600.0, 1.0);
    EXPECT_EQ(timestampRequests(), 4u);  // three failures, then the answer

    sim_->state().setClockSkewSeconds(-120);
    service.startServerTimeSync();
    ASSERT_TRUE(waitUntil([&] { return service.serverTimeOffset() < 0; }));
    EXPECT_NEAR(static_cast<double>(service.serverTimeOffset()), -120.0, 1.0);

    service.stop();
    const size_t before = timestampRequests();
    service.startServerTimeSync();
    spinEvents(200);
    EXPECT_EQ(timestampRequests(), before);
}

TEST_F(ServerTimeSync, LocalClockStandsInFromThe102ndFailureAndRetriesGoOn) {
    // Two failures in this process so far are enough to reach the 101st and 102nd here.
    tolvane::net::serverTimeFailureCount() = 99;
    sim_->state().failTimestamps(1000);
    auto service = std::make_unique<VxNetServiceImp>(nullptr, nullptr);
    ASSERT_TRUE(waitUntil([&] { return timestampRequests() >= 2; }));
    spinEvents(20);
    EXPECT_EQ(service->serverTimeOffset(), -65535);  // the 101st failure changes nothing
    ASSERT_TRUE(waitUntil([&] { return service->serverTimeOffset() == 0; }));
    EXPECT_EQ(timestampRequests(), 3u);
    EXPECT_TRUE(mainLogHas("Multiple requests for server time failed."));

    // The stand-in stops no retry, but no retry reaches a destroyed service.
    ASSERT_TRUE(waitUntil([&] { return timestampRequests() >= 4; }));
    service.reset();
    const size_t requestsAtDestruction = timestampRequests();
    spinEvents(400);
    EXPECT_LE(timestampRequests(), requestsAtDestruction + 1);  // at most the one in flight
}

}  // namespace

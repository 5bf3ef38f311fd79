#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonParseError>
#include <chrono>

#include "sim/sim_test_support.h"

using tolvane::sim::SimFault;
using tolvane::sim::SimHttpServer;
using Clock = std::chrono::steady_clock;

namespace {

bool isJson(const std::string& body) {
    QJsonParseError error{};
    QJsonDocument::fromJson(QByteArray::fromStdString(body), &error);
    return error.error == QJsonParseError::NoError;
}

struct FaultCase {
    const char* name;
    SimFault fault;
    int status;            // expected HTTP status; 0: the transfer must fail
    std::size_t bodySize;  // expected body size; 0: not checked
    bool jsonBody;
    long long minMillis;
};

const FaultCase kFaults[] = {
    {"Delay", SimFault::delay(300), 200, 0, true, 300},
    {"StatusWithBody", SimFault::httpStatus(503, "<h1>busy</h1>"), 503, 13, false, 0},
    {"StatusWithDefaultBody", SimFault::httpStatus(500), 500, 0, true, 0},
    {"Malformed", SimFault::malformed(), 200, 0, false, 0},
    {"LargeBody", SimFault::largeBody(3 * 1024 * 1024 + 7), 200, 3 * 1024 * 1024 + 7, true, 0},
    {"DropConnection", SimFault::dropConnection(), 0, 0, false, 0},
    {"CloseBeforeReply", SimFault::closeBeforeReply(), 0, 0, false, 0},
    {"DelayThenStatus", SimFault::httpStatus(502).withDelay(200), 502, 0, true, 200},
};

class SimFaultTest : public ::testing::TestWithParam<FaultCase> {};

// Module tests rely on each fault kind looking exactly like this, and on one-shot faults ending.
TEST_P(SimFaultTest, ShowsTheFaultThenRecoversWhenOneShot) {
    const FaultCase& c = GetParam();
    SimHttpServer server;
    ASSERT_TRUE(server.start());
    server.setFault("/sim/echo/none", SimFault(c.fault).oneShot());
    httplib::Client client = clientFor(server.origin());

    const Clock::time_point start = Clock::now();
    const httplib::Result faulted = client.Get("/sim/echo/none?x=1");
    EXPECT_GE(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count(),
              c.minMillis);
    if (c.status == 0) {
        EXPECT_FALSE(faulted) << "a closed connection must fail the transfer";
    } else {
        ASSERT_TRUE(faulted) << httplib::to_string(faulted.error());
        EXPECT_EQ(faulted->status, c.status);
        EXPECT_EQ(isJson(faulted->body), c.jsonBody) << faulted->body.substr(0, 200);
        if (c.bodySize != 0) {
            EXPECT_EQ(faulted->body.size(), c.bodySize);
        }
    }
    EXPECT_EQ(server.requestLog().to("/sim/echo/none").size(), 1u);

    const httplib::Result normal = client.Get("/sim/echo/none?x=2");
    ASSERT_TRUE(normal);
    EXPECT_EQ(normal->status, 200);
    EXPECT_EQ(jsonBody(normal).value("error").toInt(-1), 0);
}

INSTANTIATE_TEST_SUITE_P(Kinds, SimFaultTest, ::testing::ValuesIn(kFaults),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace

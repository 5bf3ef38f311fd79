#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonParseError>
#include <atomic>
#include <chrono>
#include <future>
#include <thread>
#include <vector>

#include "sim/sim_test_support.h"

using tolvane::sim::SimFault;
using tolvane::sim::SimHttpServer;
using tolvane::sim::SimReply;
using tolvane::sim::SimRequest;
using tolvane::sim::SimRoute;
using Clock = std::chrono::steady_clock;

namespace {

long long millisSince(Clock::time_point start) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

bool isJson(const std::string& body) {
    QJsonParseError error{};
    QJsonDocument::fromJson(QByteArray::fromStdString(body), &error);
    return error.error == QJsonParseError::NoError;
}

class SimHttpServerTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(server_.start()); }

    httplib::Result get(const std::string& target) {
        httplib::Client client = clientFor(server_.origin());
        return client.Get(target.c_str());
    }

    SimHttpServer server_;
};

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
    {"TinyLargeBodyStaysJson", SimFault::largeBody(1), 200, 0, true, 0},
    {"DropConnection", SimFault::dropConnection(), 0, 0, false, 0},
    {"DelayThenStatus", SimFault::httpStatus(502).withDelay(200), 502, 0, true, 200},
};

class SimFaultTest : public SimHttpServerTest, public ::testing::WithParamInterface<FaultCase> {};

TEST_P(SimFaultTest, ShowsTheFaultThenRecoversWhenOneShot) {
    const FaultCase& c = GetParam();
    server_.setFault("/sim/echo/none", SimFault(c.fault).oneShot());

    const Clock::time_point start = Clock::now();
    const httplib::Result faulted = get("/sim/echo/none?x=1");
    EXPECT_GE(millisSince(start), c.minMillis);
    if (c.status == 0) {
        EXPECT_FALSE(faulted) << "a dropped connection must fail the transfer";
    } else {
        ASSERT_TRUE(faulted) << httplib::to_string(faulted.error());
        EXPECT_EQ(faulted->status, c.status);
        EXPECT_EQ(isJson(faulted->body), c.jsonBody) << faulted->body.substr(0, 200);
        if (c.bodySize != 0) {
            EXPECT_EQ(faulted->body.size(), c.bodySize);
        }
    }
    // The faulted request was still seen.
    EXPECT_EQ(server_.requestLog().to("/sim/echo/none").size(), 1u);

    const httplib::Result normal = get("/sim/echo/none?x=2");
    ASSERT_TRUE(normal);
    EXPECT_EQ(normal->status, 200);
    EXPECT_EQ(jsonBody(normal).value("error").toInt(-1), 0);
}

INSTANTIATE_TEST_SUITE_P(Kinds, SimFaultTest, ::testing::ValuesIn(kFaults),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(SimHttpServerTest, PersistentFaultStaysUntilClearedAndWildcardHitsOtherPaths) {
    server_.setFault("/sim/echo/none", SimFault::httpStatus(500));
    server_.setFault("*", SimFault::httpStatus(418));
    for (int i = 0; i < 3; ++i) {
        const httplib::Result result = get("/sim/echo/none");
        ASSERT_TRUE(result);
        EXPECT_EQ(result->status, 500);
    }
    const httplib::Result other = get("/sim/status/200");
    ASSERT_TRUE(other);
    EXPECT_EQ(other->status, 418);

    server_.clearFaults();
    const httplib::Result cleared = get("/sim/echo/none");
    ASSERT_TRUE(cleared);
    EXPECT_EQ(cleared->status, 200);
}

TEST_F(SimHttpServerTest, FaultedRequestDoesNotReachTheService) {
    std::atomic<int> calls{0};
    SimRoute route;
    route.path = "/counted";
    route.handler = [&calls](const SimRequest&) {
        ++calls;
        return SimReply{200, "{}", "application/json"};
    };
    server_.routes().add(route);
    server_.setFault("/counted", SimFault::httpStatus(500).oneShot());
    get("/counted");
    EXPECT_EQ(calls.load(), 0);
    get("/counted");
    EXPECT_EQ(calls.load(), 1);
}

TEST_F(SimHttpServerTest, StatusRouteAndUnknownPaths) {
    const struct {
        std::string target;
        int status;
        int error;
    } cases[] = {
        {"/sim/status/404", 404, 404},
        {"/sim/status/503", 503, 503},
        {"/sim/status/abc", 400, 400},
        {"/no/such/service", 404, 404},
    };
    for (const auto& c : cases) {
        const httplib::Result result = get(c.target);
        ASSERT_TRUE(result) << c.target;
        EXPECT_EQ(result->status, c.status) << c.target;
        EXPECT_EQ(jsonBody(result).value("error").toInt(), c.error) << c.target;
    }
}

TEST_F(SimHttpServerTest, LogKeepsDecodedQueryHeadersAndFormInOrder) {
    httplib::Client client = clientFor(server_.origin());
    const httplib::Result result = client.Post("/api/sim/echo/none?b=%E4%BD%A0&a=x%20y&b=2",
                                               {{"User-Device", "dev"}, {"token", "T"}},
                                               "z=1&c=%2B%26", "application/x-www-form-urlencoded");
    ASSERT_TRUE(result);

    const auto log = server_.requestLog().all();
    ASSERT_EQ(log.size(), 1u);
    const SimRequest& seen = log[0];
    EXPECT_EQ(seen.method, "POST");
    EXPECT_EQ(seen.scheme, "http");
    EXPECT_EQ(seen.path, "/api/sim/echo/none");
    EXPECT_EQ(seen.query, (Pairs{{"b", "你"}, {"a", "x y"}, {"b", "2"}}));
    EXPECT_EQ(seen.rawQuery, "b=%E4%BD%A0&a=x%20y&b=2");
    EXPECT_EQ(seen.form, (Pairs{{"z", "1"}, {"c", "+&"}}));
    EXPECT_EQ(seen.header("user-device"), "dev");
    EXPECT_EQ(seen.header("token"), "T");
    EXPECT_EQ(seen.header("REMOTE_ADDR"), "");
    EXPECT_TRUE(seen.routed);
    EXPECT_FALSE(seen.authChecked);
    EXPECT_TRUE(seen.authOk);
}

TEST_F(SimHttpServerTest, ConcurrentClientsEachGetTheirOwnAnswer) {
    constexpr int kThreads = 12;
    constexpr int kRequestsEach = 8;
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            httplib::Client client = clientFor(server_.origin());
            for (int i = 0; i < kRequestsEach; ++i) {
                const std::string value = std::to_string(t * 1000 + i);
                const httplib::Result result = client.Get(("/sim/echo/none?v=" + value).c_str());
                const QJsonObject query =
                    jsonBody(result).value("data").toObject().value("query").toObject();
                if (query.value("v").toString().toStdString() != value) {
                    ++wrong;
                }
            }
        });
    }
    // Faults change under the running requests; the table must stay consistent.
    for (int i = 0; i < 50; ++i) {
        server_.setFault("/sim/status/200", SimFault::delay(1));
        server_.clearFaults();
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong.load(), 0);
    EXPECT_EQ(server_.requestLog().size(), static_cast<std::size_t>(kThreads * kRequestsEach));
}

TEST_F(SimHttpServerTest, StopEndsDelaysAndIdleConnectionsQuickly) {
    server_.setFault("/sim/echo/none", SimFault::delay(30000));
    // An idle keep-alive connection and a request stuck in its delay.
    httplib::Client idle = clientFor(server_.origin());
    idle.set_keep_alive(true);
    ASSERT_TRUE(idle.Get("/sim/status/200"));
    auto stuck = std::async(std::launch::async, [origin = server_.origin()] {
        httplib::Client client = clientFor(origin);
        return client.Get("/sim/echo/none");
    });
    ASSERT_TRUE(server_.requestLog().waitForCount(2, std::chrono::seconds(5)));

    const Clock::time_point start = Clock::now();
    server_.stop();
    EXPECT_LT(millisSince(start), 3000);
    EXPECT_FALSE(server_.isRunning());
    EXPECT_EQ(server_.origin(), "");
    const httplib::Result ended = stuck.get();
    EXPECT_TRUE(!ended || ended->status == 503);
}

TEST_F(SimHttpServerTest, RestartsOnTheSamePortAndRefusesWhenStopped) {
    const int port = server_.httpPort();
    const std::string origin = server_.origin();
    server_.stop();
    server_.stop();
    EXPECT_FALSE(get("/sim/status/200"));

    ASSERT_TRUE(server_.start(port));
    EXPECT_EQ(server_.origin(), origin);
    EXPECT_FALSE(server_.start()) << "one HTTP listener at a time";
    const httplib::Result result = get("/sim/status/204");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 204);
}

}  // namespace

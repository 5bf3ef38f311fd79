#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonParseError>
#include <chrono>

#include "http/sim_replies.h"
#include "sim/sim_test_support.h"

namespace {

using tolvane::sim::SimFault;
using tolvane::sim::SimHttpServer;
using Clock = std::chrono::steady_clock;

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

enum AuthIn { Query, Header, Nowhere };

// The module's request tests show every rule accepting what the client signs; these rows show
// the server refusing what a faulty client would send. A non-empty form means POST.
struct SignCase {
    const char* name;
    int environment;
    const char* path;
    Pairs query, headers, form;
    const char* signText;  // what the client signed
    bool live;
    AuthIn authIn;
    bool accepted;
};

// clang-format off
const SignCase kCases[] = {
    {"QueryGet", 0, "/sim/echo/query", {{"b", "2"}, {"a", "1"}, {"time", "100"}}, {}, {}, "sim/echo/query?a=1&b=2&time=100%s", false, Query, true},
    {"QueryRefusesTestSecret", 1, "/sim/echo/query", {{"a", "1"}}, {}, {}, "sim/echo/query?a=1%s", true, Query, false},
    {"QueryRefusesChangedValue", 0, "/sim/echo/query", {{"a", "2"}}, {}, {}, "sim/echo/query?a=1%s", false, Query, false},
    {"QueryRefusesMissingAuth", 0, "/sim/echo/query", {{"a", "1"}}, {}, {}, "", false, Nowhere, false},
    {"QueryRefusesUnsignedForm", 0, "/sim/echo/query", {{"a", "1"}}, {}, {{"c", "3"}}, "sim/echo/query?a=1%s", false, Query, false},
    {"Mobile3TestEnvironmentRefusesProductionSecret", 2, "/sim/echo/mobile3", {}, {{"time", "100"}}, {}, "sim/echo/mobile3?aid=vxtool&time=100%s", false, Header, false},
    {"Mobile3ProductionRefusesLiveSecret", 0, "/sim/echo/mobile3", {}, {{"time", "100"}}, {}, "sim/echo/mobile3?aid=vxtool&time=100%s", true, Header, false},
    {"Mobile2RefusesFixedAid", 0, "/sim/echo/mobile2", {}, {{"aid", "pcapp"}, {"time", "100"}}, {}, "sim/echo/mobile2?aid=vxtool&time=100%s", false, Header, false},
    {"CommonListsRefusesOtherSigningPath", 0, "/sim/echo/common", {{"aid", "vxtool"}, {"time", "100"}}, {}, {}, "other/path?aid=vxtool&time=100%s", false, Query, false},
};
// clang-format on

TEST(SimSignature, AcceptsOnlyWhatTheClientSigned) {
    SimHttpServer server;
    ASSERT_TRUE(server.start());
    for (const SignCase& c : kCases) {
        SCOPED_TRACE(c.name);
        server.setEnvironment(c.environment);
        server.requestLog().clear();
        Pairs query = c.query;
        Pairs headers = c.headers;
        if (c.authIn != Nowhere) {
            (c.authIn == Query ? query : headers).emplace_back("auth", sign(c.signText, c.live));
        }
        httplib::Client client = clientFor(server.origin());
        const std::string target = std::string(c.path) + "?" + encodePairs(query);
        const httplib::Result result =
            c.form.empty() ? client.Get(target.c_str(), toHeaders(headers))
                           : client.Post(target.c_str(), toHeaders(headers), encodePairs(c.form),
                                         "application/x-www-form-urlencoded");
        ASSERT_TRUE(result) << httplib::to_string(result.error());
        EXPECT_EQ(jsonBody(result).value("error").toInt(-1),
                  c.accepted ? 0 : tolvane::sim::kAuthFailedCode)
            << result->body;
        EXPECT_EQ(server.requestLog().authFailures(), c.accepted ? 0u : 1u);
    }
}

}  // namespace

#include <gtest/gtest.h>

#include "http/sim_replies.h"
#include "sim/sim_test_support.h"

namespace {

using tolvane::sim::SimHttpServer;

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
            (c.authIn == Query ? query : headers)
                .emplace_back("auth", authCode(c.signText, c.live));
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

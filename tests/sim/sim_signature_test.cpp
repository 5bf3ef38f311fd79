#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "http/sim_replies.h"
#include "sim/sim_test_support.h"

using tolvane::sim::SimHttpServer;

namespace {

enum AuthIn { Query, Header, Nowhere };

// The module's request tests show every rule accepting what the client signs; these rows show
// the server refusing what a faulty client would send. Pairs are written "k=v|k2=v2"; a
// non-empty form means POST.
struct SignCase {
    const char* name;
    int environment;
    const char* path;
    const char* query;
    const char* headers;
    const char* form;
    const char* signText;  // what the client signed
    bool live;
    AuthIn authIn;
    bool accepted;
};

Pairs pairsOf(const std::string& text) {
    Pairs pairs;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('|', at), text.size());
        const std::string item = text.substr(at, end - at);
        const std::size_t eq = item.find('=');
        pairs.emplace_back(item.substr(0, eq), item.substr(eq + 1));
        at = end + 1;
    }
    return pairs;
}

// clang-format off
const SignCase kCases[] = {
    {"QueryGet", 0, "/sim/echo/query", "b=2|a=1|time=100", "", "", "sim/echo/query?a=1&b=2&time=100%s", false, Query, true},
    {"QueryRefusesTestSecret", 1, "/sim/echo/query", "a=1", "", "", "sim/echo/query?a=1%s", true, Query, false},
    {"QueryRefusesChangedValue", 0, "/sim/echo/query", "a=2", "", "", "sim/echo/query?a=1%s", false, Query, false},
    {"QueryRefusesMissingAuth", 0, "/sim/echo/query", "a=1", "", "", "", false, Nowhere, false},
    {"QueryRefusesUnsignedForm", 0, "/sim/echo/query", "a=1", "", "c=3", "sim/echo/query?a=1%s", false, Query, false},
    {"Mobile3TestEnvironmentRefusesProductionSecret", 2, "/sim/echo/mobile3", "", "time=100", "", "sim/echo/mobile3?aid=vxtool&time=100%s", false, Header, false},
    {"Mobile3ProductionRefusesLiveSecret", 0, "/sim/echo/mobile3", "", "time=100", "", "sim/echo/mobile3?aid=vxtool&time=100%s", true, Header, false},
    {"Mobile2RefusesFixedAid", 0, "/sim/echo/mobile2", "", "aid=pcapp|time=100", "", "sim/echo/mobile2?aid=vxtool&time=100%s", false, Header, false},
    {"CommonListsRefusesOtherSigningPath", 0, "/sim/echo/common", "aid=vxtool|time=100", "", "", "other/path?aid=vxtool&time=100%s", false, Query, false},
};
// clang-format on

class SimSignatureTest : public ::testing::TestWithParam<SignCase> {
protected:
    static void SetUpTestSuite() {
        server_ = std::make_unique<SimHttpServer>();
        ASSERT_TRUE(server_->start());
    }
    static void TearDownTestSuite() { server_.reset(); }

    static std::unique_ptr<SimHttpServer> server_;
};

std::unique_ptr<SimHttpServer> SimSignatureTest::server_;

TEST_P(SimSignatureTest, AcceptsOnlyWhatTheClientSigned) {
    const SignCase& c = GetParam();
    server_->setEnvironment(c.environment);
    server_->requestLog().clear();

    Pairs query = pairsOf(c.query);
    Pairs headers = pairsOf(c.headers);
    const Pairs form = pairsOf(c.form);
    const std::string signText = c.signText;
    const std::string auth = signText.empty() ? "" : sign(signText, c.live);
    if (c.authIn != Nowhere) {
        (c.authIn == Query ? query : headers).emplace_back("auth", auth);
    }
    httplib::Client client = clientFor(server_->origin());
    const std::string target = withQuery(c.path, query);
    const httplib::Result result =
        !form.empty() ? client.Post(target.c_str(), toHeaders(headers), encodePairs(form),
                                    "application/x-www-form-urlencoded")
                      : client.Get(target.c_str(), toHeaders(headers));
    ASSERT_TRUE(result) << httplib::to_string(result.error());
    EXPECT_EQ(result->status, 200);

    const QJsonObject body = jsonBody(result);
    const auto log = server_->requestLog().all();
    ASSERT_EQ(log.size(), 1u);
    EXPECT_EQ(log[0].authOk, c.accepted);
    EXPECT_EQ(body.value("error").toInt(-1), c.accepted ? 0 : tolvane::sim::kAuthFailedCode)
        << result->body;
    EXPECT_EQ(server_->requestLog().authFailures(), c.accepted ? 0u : 1u);
}

INSTANTIATE_TEST_SUITE_P(Rules, SimSignatureTest, ::testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace

#include <gtest/gtest.h>

#include <httplib.h>
#include <QJsonArray>
#include <QRegularExpression>
#include <string>
#include <vector>

#include "log/log_writer.h"
#include "support/log_reader.h"
#include "support/sim_service_fixture.h"

namespace {

using tolvane::sim::SimFault;
using tolvane::sim::SimRequest;

using AppAuthPorts = SimServiceTest;

// Only -1 and non-numbers leave the list, and the signature travels in the query and headers.
TEST_F(AppAuthPorts, ListedPortsAndTheirSignature) {
    platform().passport().setAuthPorts(QJsonArray{8000, -1, "x", "8001", 8002, -7});
    std::vector<int32_t> ports;
    ASSERT_EQ(service().getLoginAuthPorts(ports), 0);
    EXPECT_EQ(ports, (std::vector<int32_t>{8000, 8002, -7}));
    const auto requests = sim().http().requestLog().to("/japi/app/auth/port");
    ASSERT_EQ(requests.size(), 1u);
    const SimRequest& sent = requests.front();
    EXPECT_TRUE(sent.authOk);
    EXPECT_EQ(sent.queryValue("authType"), "VXTool");
    EXPECT_EQ(sent.queryValue("bizType"), "13");
    for (const char* key : {"aid", "time", "auth"}) {
        EXPECT_FALSE(sent.header(key).empty()) << key;
        EXPECT_EQ(sent.header(key), sent.queryValue(key)) << key;
    }
    // The same request without the headers is refused by the passport host.
    httplib::Client client(sim().environment().origin());
    const auto plain = client.Get("/japi/app/auth/port?" + sent.rawQuery);
    ASSERT_TRUE(plain);
    EXPECT_NE(plain->body.find("\"error\":1012"), std::string::npos) << plain->body;
}

// A refusal keeps the host's list and logs the reply and the URL.
TEST_F(AppAuthPorts, RefusalsKeepTheListAndLogTheReply) {
    const struct {
        const char* body;
        int32_t expected;
    } cases[] = {
        {R"({"error":0})", 1},
        {R"({"error":603,"data":"no"})", 214},
        {R"({"error":0,"data":{"port":[1]},)", -1000},
    };
    for (const auto& c : cases) {
        sim().http().setFault("/japi/app/auth/port", SimFault::httpStatus(200, c.body));
        std::vector<int32_t> ports{42};
        EXPECT_EQ(service().getLoginAuthPorts(ports), c.expected) << c.body;
        EXPECT_EQ(ports, std::vector<int32_t>{42}) << c.body;
        EXPECT_TRUE(mainLogHas(QStringLiteral("result data : %1").arg(c.body))) << c.body;
    }
    EXPECT_TRUE(readLogMessages(tolvane::log::kMainLog)
                    .filter(QRegularExpression("^error Url: http://127\\.0\\.0\\.1:\\d+/japi/app/"
                                               "auth/port\\?authType=VXTool&bizType=13&aid="))
                    .size() >= 3);
}

using AppAuthCode = LoggedInSimServiceTest;

TEST_F(AppAuthCode, CodeStandsForTheLongTokenUntilItExpires) {
    std::string longToken;
    service().getSessionText(longToken);
    std::string refererInCodeOut = "https://studio.tolvane.example/";
    int32_t expire = 0;
    ASSERT_EQ(service().getLoginAuthCode("13", refererInCodeOut, expire), 0);
    const std::string code = refererInCodeOut;
    EXPECT_EQ(expire, 300);
    auto& passport = platform().passport();
    EXPECT_EQ(passport.longTokenByAuthCode(code), longToken);
    EXPECT_EQ(passport.refererOfAuthCode(code), "https://studio.tolvane.example/");

    const SimRequest sent = lastRequestTo("/japi/app/auth/generateCode");
    ASSERT_EQ(sent.form.size(), 3u);
    EXPECT_EQ(sent.form[0], (std::pair<std::string, std::string>{"bizType", "13"}));
    EXPECT_EQ(sent.form[1], (std::pair<std::string, std::string>{"longToken", longToken}));
    EXPECT_EQ(sent.form[2].first, "did");
    EXPECT_EQ(sent.header("auth"), sent.queryValue("auth"));
    EXPECT_TRUE(sent.authOk);

    passport.advanceSeconds(expire);
    EXPECT_FALSE(passport.longTokenByAuthCode(code).has_value());
}

TEST_F(AppAuthCode, FailureLeavesRefererAndExpireAsGiven) {
    const struct {
        const char* name;
        std::function<void()> arrange;
        const char* bizType;
        int32_t expected;
    } cases[] = {
        {"logged out: no long token", [this] { service().logout(); }, "13", 227},
        {"wrong business type", [] {}, "12", 4501},
        {"no data",
         [this] {
             sim().http().setFault("/japi/app/auth/generateCode",
                                   SimFault::httpStatus(200, R"({"error":0})"));
         },
         "13", 1},
    };
    for (const auto& c : cases) {
        c.arrange();
        std::string refererInCodeOut = "https://studio.tolvane.example/";
        int32_t expire = 5;
        EXPECT_EQ(service().getLoginAuthCode(c.bizType, refererInCodeOut, expire), c.expected)
            << c.name;
        EXPECT_EQ(refererInCodeOut, "https://studio.tolvane.example/") << c.name;
        EXPECT_EQ(expire, 5) << c.name;
    }
}

}  // namespace

#include <gtest/gtest.h>

#include <QJsonObject>
#include <memory>
#include <vector>

#include "http/sim_http_server.h"
#include "net/session_text.h"
#include "net/vx_net_request.h"
#include "support/log_reader.h"
#include "support/replies.h"
#include "support/scoped_env.h"

using tolvane::net::CommonValues;
using tolvane::sim::SimFault;
using tolvane::sim::SimFaultTable;
using tolvane::sim::SimHttpServer;
using tolvane::sim::SimRequest;

namespace {

class RecordingSink : public BreadcrumbSink {
public:
    void onBreadcrumb(const VxBreadcrumb<VxBreadcrumb_Http>& crumb) override {
        crumbs.push_back(crumb);
    }
    std::vector<VxBreadcrumb<VxBreadcrumb_Http>> crumbs;
};

// The echo route whose signing rule matches the base-address kind.
QString echoPathFor(int kind) {
    const bool unsigned_ = kind == 8 || kind == 9 || kind == 11;
    return kind == 6    ? "sim/echo/mobile3"
           : kind == 10 ? "sim/echo/mobile2"
           : unsigned_  ? "sim/echo/none"
                        : "sim/echo/query";
}

// A 64-character label is refused by the C library's resolver before any query leaves the
// machine, whereas an ordinary ".invalid" name is sent to the configured name server.
const std::string kUnresolvableHost = std::string(64, 'a') + ".invalid";

class VxNetRequestTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(server_.start()); }

    // A client of the environment whose every address points at the origin.
    std::unique_ptr<VxNetRequest> client(int environment, const std::string& origin) {
        workspace_.writeDefaultData("{\"app.domain\": " + QByteArray::number(environment) +
                                    R"(, "endpoints": {"origin": ")" + origin.c_str() + "\"}}");
        server_.setEnvironment(environment);
        return std::make_unique<VxNetRequest>(environment, &sink_, nullptr);
    }
    std::unique_ptr<VxNetRequest> client(int environment = 1) {
        return client(environment, server_.httpOrigin());
    }

    SimRequest lastRequest() {
        const auto all = server_.requestLog().all();
        return all.empty() ? SimRequest() : all.back();
    }

    IsolatedWorkspace workspace_;
    SimHttpServer server_;
    RecordingSink sink_;
};

// Any status from 400 or a failed transfer gives a made-up reply; each leaves one breadcrumb.
TEST_F(VxNetRequestTest, StatusOrTransportDecidesTheReply) {
    const std::string here = server_.httpOrigin();
    const struct {
        const char* name;
        int environment;
        std::string origin;
        int kind;
        SimFault fault;
        bool post;
        int error;   // 0: the body passes
        int status;  // in the breadcrumb; 0: no exchange
    } cases[] = {
        {"answered", 1, here, 1, SimFault::delay(0), false, 0, 200},
        {"404", 1, here, 1, SimFault::httpStatus(404, "no such page"), false, 404, 404},
        {"500 to a POST", 1, here, 1, SimFault::httpStatus(500, "{\"oops\":1}"), true, 500, 500},
        {"refused", 1, "http://127.0.0.1:1", 1, {}, false, 1, 0},
        {"unresolvable", 1, "http://" + kUnresolvableHost, 1, {}, false, 3, 0},
        // Environment 3 has no gift service: the URL is the bare path, refused unsent.
        {"no base address", 3, here, 11, {}, false, 5, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto request = client(c.environment, c.origin);
        server_.setFault("/sim/echo/query", c.fault);
        sink_.crumbs.clear();
        QByteArray reply;
        const bool ok =
            c.post ? request->cprPost(reply, c.kind, "sim/echo/query", {}, {{"k", "v"}},
                                      {{"f", "x y"}}, 5000)
                   : request->cprGet(reply, c.kind, "sim/echo/query", {}, {{"k", "v"}}, 5000);
        const QJsonObject object = replyObject(reply);
        EXPECT_EQ(ok, c.error == 0);
        EXPECT_EQ(object.value("error").toInt(), c.error);
        ASSERT_EQ(sink_.crumbs.size(), 1u);
        const auto& crumb = sink_.crumbs.front();
        EXPECT_EQ(crumb.category, 4);
        EXPECT_EQ(crumb.level, 1);
        EXPECT_EQ(crumb.message, c.post ? "cprPost" : "cprGet");
        EXPECT_EQ(crumb.part.method, c.post ? "POST" : "GET");
        EXPECT_EQ(crumb.part.statusCode, c.status);
        if (c.status == 0) {
            EXPECT_FALSE(object.value("data").toString().isEmpty());
            EXPECT_EQ(crumb.part.errorText, object.value("data").toString().toStdString());
        } else {
            EXPECT_EQ(crumb.part.url.rfind(here + "/sim/echo/query?", 0), 0u);
            if (!ok) {  // the made-up envelope itself is shown by the reply check's tests
                EXPECT_EQ(crumb.data, c.fault.body);
            }
        }
    }
    EXPECT_EQ(server_.requestLog().size(), 3u);
    const QStringList log = readLogMessages(tolvane::log::kMainLog);
    const int failure = log.indexOf(QRegularExpression("^cprGet error:.*\"error\":404.*"));
    ASSERT_GE(failure, 0);
    EXPECT_TRUE(log.value(failure + 1).startsWith("url:http://127.0.0.1:"));
    const int postFailure = log.indexOf(QRegularExpression("^cprPost error:.*\"error\":500.*"));
    ASSERT_GE(postFailure, 0);
    EXPECT_TRUE(log.value(postFailure + 1).contains("/sim/echo/query?k=v&auth="));
    EXPECT_EQ(log.value(postFailure + 2), "post:f=x%20y");
    EXPECT_TRUE(mainLogHas("url:sim/echo/query?k=v"));
}

// Requests to a URL of the caller's own carry its query, headers and form as given.
TEST_F(VxNetRequestTest, ParametersArriveIntact) {
    auto request = client();
    const QUrl url(QString::fromStdString(server_.httpOrigin()) + "/sim/echo/none");
    // QUrlQuery leaves "+" and "?" bare: the first reads as a blank on the server, the second
    // is refused by the simulator's HTTP library, so neither is in this text.
    const QString ownQuery = QStringLiteral("中文 &=%/#;ü~\"'");
    QUrlQuery query;
    query.addQueryItem("q", ownQuery);
    QByteArray reply;
    ASSERT_TRUE(request->cprSyncGet(reply, url, query, {{"X-Note", "é"}}, 5000))
        << reply.toStdString();
    SimRequest seen = lastRequest();
    EXPECT_EQ(seen.method, "GET");
    EXPECT_EQ(seen.queryValue("q"), ownQuery.toStdString());
    EXPECT_EQ(seen.header("X-Note"), "é");
    EXPECT_FALSE(seen.header("User-Device").empty());

    const QString awkward = QStringLiteral("中文 &=+%/?#;ü~\"'");
    ASSERT_TRUE(request->cprSyncPost(reply, url, query, {}, {{"f", awkward}}, 5000));
    seen = lastRequest();
    EXPECT_EQ(seen.method, "POST");
    EXPECT_EQ(seen.formValue("f"), awkward.toStdString());
}

// Every kind signs and places its groups so that the server accepts them, awkward values too.
TEST_F(VxNetRequestTest, EverySigningKindIsAcceptedAndCarriesItsGroups) {
    const QString awkward = QStringLiteral("中文 &=+%/?#;ü~\"'");
    const CommonValues common{QStringLiteral("vxtool"), 1700000000, QStringLiteral("-1_0__0_0")};
    for (int environment : {0, 1}) {
        auto request = client(environment);
        request->setDeviceHeader(tolvane::net::userDeviceValue("dev", "v2"));
        for (int kind = 0; kind < 12; ++kind) {
            RequestDescriptor descriptor;
            descriptor.kind = kind;
            descriptor.path = echoPathFor(kind);
            descriptor.groupB = {{"b", awkward}, {"a", "1"}};
            descriptor.groupC = {{"f", awkward}, {"g", ""}};
            descriptor.timeoutMs = 5000;
            QByteArray reply;
            const bool ok = kind % 2 == 0 ? request->requestGet(reply, descriptor, common)
                                          : request->requestPost(reply, descriptor, common);
            ASSERT_TRUE(ok) << "kind " << kind << " env " << environment << ": "
                            << reply.toStdString();
            const SimRequest seen = lastRequest();
            EXPECT_TRUE(seen.authOk) << "kind " << kind << " env " << environment;
            EXPECT_EQ(seen.header("User-Device"), "ZGV2fHYy");
            const bool mobile = kind == 6 || kind == 10;
            const bool unsigned_ = kind == 8 || kind == 9 || kind == 11;
            EXPECT_EQ(!seen.header("auth").empty(), mobile) << kind;
            EXPECT_EQ(!seen.queryValue("auth").empty(), !mobile && !unsigned_) << kind;
            if (mobile) {
                EXPECT_EQ(seen.header("aid"), "vxtool");
                EXPECT_EQ(seen.header("time"), "1700000000");
                EXPECT_EQ(seen.header("token"), "-1_0__0_0");
            }
            EXPECT_EQ(seen.queryValue("time"), kind == 1 ? "1700000000" : "") << kind;
            EXPECT_EQ(seen.queryValue("b"), awkward.toStdString()) << kind;
            if (kind % 2 == 1) {
                EXPECT_EQ(seen.formValue("f"), awkward.toStdString()) << kind;
                EXPECT_EQ(seen.header("Content-Type"), "application/x-www-form-urlencoded");
            }
        }
    }
}

// The simulator plays the proxy for a host the client could never reach itself.
TEST_F(VxNetRequestTest, ProxyCarriesEveryRequestUntilCleared) {
    const std::string target = "http://" + kUnresolvableHost;
    auto request = client(1, target);
    request->setProxy(server_.httpOrigin());
    server_.setFault(SimFaultTable::kAnyPath, SimFault::httpStatus(200, "proxied"));
    QByteArray reply;
    ASSERT_TRUE(request->cprGet(reply, 8, "sim/echo/none", {}, {{"n", "1"}}, 5000));
    ASSERT_TRUE(request->cprPost(reply, 8, "sim/echo/none", {}, {}, {{"n", "2"}}, 5000));
    EXPECT_EQ(reply, "proxied");
    const auto seen = server_.requestLog().all();
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].method + " " + seen[0].path, "GET " + target + "/sim/echo/none");
    EXPECT_EQ(seen[0].queryValue("n"), "1");
    EXPECT_EQ(seen[1].method + " " + seen[1].path, "POST " + target + "/sim/echo/none");
    EXPECT_EQ(seen[1].formValue("n"), "2");

    request->setProxy("");
    EXPECT_FALSE(request->cprGet(reply, 8, "sim/echo/none", {}, {}, 5000));
    EXPECT_EQ(replyError(reply), 3);  // the name was looked up, not sent to the proxy
    EXPECT_EQ(server_.requestLog().size(), 2u);
}

}  // namespace

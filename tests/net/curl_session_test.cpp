#include <gtest/gtest.h>
#include <httplib.h>

#include <thread>

#include "http/sim_http_server.h"
#include "net/curl_session.h"
#include "support/wait.h"

using tolvane::net::CprErrorCode;
using tolvane::net::CurlSession;
using tolvane::sim::SimFault;
using tolvane::sim::SimHttpServer;

// Header names ignore case: the two spellings below go out as one header.
TEST(CurlSession, KeepsItsConnectionAndTlsSessionBetweenRequests) {
    tolvane::sim::SimCertificateAuthority authority;
    ASSERT_TRUE(authority.isValid());
    SimHttpServer server;
    ASSERT_TRUE(server.start());
    ASSERT_TRUE(server.startHttps(authority.trustedIdentity()));

    for (const std::string& origin : {server.httpOrigin(), server.httpsOrigin()}) {
        CurlSession session;
        session.setCaFile(authority.caFile());
        session.setTimeoutMs(5000);
        session.setUrl(origin + "/sim/echo/none");
        session.setHeaders({{"x-token", "1"}, {"X-TOKEN", "2"}});
        const auto first = session.get();
        EXPECT_EQ(first.statusCode, 200) << origin << first.errorMessage;
        EXPECT_EQ(first.newConnections, 1) << origin;
        const auto sent = server.requestLog().all().back().headers;
        EXPECT_EQ(std::count_if(sent.begin(), sent.end(),
                                [](const auto& header) { return header.first == "x-token"; }),
                  1);

        session.setBody("a=1");
        const auto second = session.post();
        EXPECT_EQ(second.statusCode, 200) << origin;
        EXPECT_EQ(second.newConnections, 0) << origin;
        EXPECT_EQ(second.effectiveUrl, origin + "/sim/echo/none");
        EXPECT_EQ(server.requestLog().all().back().formValue("a"), "1");

        // A moved session takes the live connection with it.
        CurlSession moved = std::move(session);
        EXPECT_EQ(moved.get().newConnections, 0) << origin;
        EXPECT_EQ(session.get().errorCode, CprErrorCode::INTERNAL_ERROR);  // NOLINT: moved-from
    }
}

// A hang-up on a kept connection makes libcurl resend, and the one-shot fault answers a resend.
TEST(CurlSession, ResendsAGetButNeverAPostAfterTheServerHungUp) {
    tolvane::sim::SimCertificateAuthority authority;
    ASSERT_TRUE(authority.isValid());
    SimHttpServer server;
    ASSERT_TRUE(server.start());
    ASSERT_TRUE(server.startHttps(authority.trustedIdentity()));

    const struct {
        const char* name;
        bool post;
        long status;  // 0: the call fails
        CprErrorCode error;
        std::size_t timesSeen;
    } cases[] = {
        // A POST may have changed something on the server: it never goes out twice.
        {"Post", true, 0, CprErrorCode::REQUEST_CANCELLED, 1},
        {"Get", false, 200, CprErrorCode::OK, 2},
    };
    for (const auto& c : cases) {
        for (const std::string& origin : {server.httpOrigin(), server.httpsOrigin()}) {
            SCOPED_TRACE(std::string(c.name) + " " + origin);
            CurlSession session;
            session.setCaFile(authority.caFile());
            session.setTimeoutMs(5000);
            session.setUrl(origin + "/sim/echo/none");
            ASSERT_EQ(session.get().statusCode, 200);

            server.setFault("/sim/echo/query", SimFault::closeBeforeReply().oneShot());
            const std::size_t seenBefore = server.requestLog().to("/sim/echo/query").size();
            session.setUrl(origin + "/sim/echo/query");
            session.setBody("n=1");
            const auto faulted = c.post ? session.post() : session.get();
            EXPECT_EQ(faulted.statusCode, c.status);
            EXPECT_EQ(faulted.errorCode, c.error) << faulted.errorMessage;
            EXPECT_EQ(server.requestLog().to("/sim/echo/query").size() - seenBefore, c.timesSeen);

            // The session is not left broken.
            const auto next = session.post();
            EXPECT_EQ(next.statusCode, 200) << next.errorMessage;
        }
    }
}

// A redirect is a new request the server asked for, not a resend: a POST follows it, body and all.
TEST(CurlSession, FollowsRedirectsOfAPost) {
    httplib::Server server;
    server.Post("/moved", [](const httplib::Request&, httplib::Response& out) {
        out.set_redirect("/moved-again", 307);
    });
    server.Post("/moved-again", [](const httplib::Request&, httplib::Response& out) {
        out.set_redirect("/landing", 302);
    });
    server.Post("/landing", [](const httplib::Request& in, httplib::Response& out) {
        out.set_content(in.body, "text/plain");
    });
    const int port = server.bind_to_any_port("127.0.0.1");
    ASSERT_GT(port, 0);
    std::thread listener([&server] { server.listen_after_bind(); });
    EXPECT_TRUE(waitUntil([&server] { return server.is_running(); })) << "the redirecting server";
    {
        CurlSession session;
        session.setTimeoutMs(5000);
        session.setUrl("http://127.0.0.1:" + std::to_string(port) + "/moved");
        session.setBody("a=1");
        const auto response = session.post();
        EXPECT_EQ(response.statusCode, 200) << response.errorMessage;
        EXPECT_EQ(response.body, "a=1");
    }
    server.stop();
    listener.join();
}

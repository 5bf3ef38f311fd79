#include <gtest/gtest.h>

#include "http/sim_http_server.h"
#include "net/curl_session.h"

using tolvane::net::CprErrorCode;
using tolvane::net::CurlSession;
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

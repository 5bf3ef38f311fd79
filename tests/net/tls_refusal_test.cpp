#include <gtest/gtest.h>

#include <QNetworkRequest>
#include <QRegularExpression>
#include <string>

#include "http/sim_certificate_authority.h"
#include "http/sim_http_server.h"
#include "net/easy_net_manager.h"
#include "net/vx_net_request.h"
#include "parse/reply_texts.h"
#include "parse/result_codes.h"
#include "service/vx_net_service_imp.h"
#include "support/log_reader.h"
#include "support/replies.h"
#include "support/scoped_env.h"

namespace {

using tolvane::sim::SimCertificateAuthority;
using tolvane::sim::SimHttpServer;
using tolvane::sim::SimTlsIdentity;

// Every client against the simulator's HTTPS: only the trusted certificate carries a request.
TEST(TlsRefusal, EveryClientRefusesABadCertificate) {
    SimCertificateAuthority authority;
    ASSERT_TRUE(authority.isValid());
    const struct {
        const char* name;
        SimTlsIdentity identity;
        bool trusted;
    } cases[] = {
        {"trusted", authority.trustedIdentity(), true},
        {"untrusted", authority.selfSignedIdentity(), false},
        {"expired", authority.expiredIdentity(), false},
        {"wrong host", authority.wrongHostIdentity(), false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        IsolatedWorkspace workspace;
        SimHttpServer server(1);
        ASSERT_TRUE(server.startHttps(c.identity));
        const QString origin = QString::fromStdString(server.httpsOrigin());
        workspace.writeDefaultData(R"({"app.domain": 1, "endpoints": {"origin": ")" +
                                   origin.toUtf8() + "\"}}");
        const ScopedEnv ca("TOLVANE_CA_FILE", QByteArray::fromStdString(authority.caFile()));

        // libcurl: the request client.
        QByteArray reply;
        VxNetRequest request(1, nullptr, nullptr);
        EXPECT_EQ(request.cprGet(reply, 1, "sim/echo/query", {}, {}, 5000), c.trusted);
        if (!c.trusted) {
            EXPECT_EQ(replyError(reply), 12);  // the server's certificate did not verify
        }

        // Qt: the network client.
        EasyNetManager client;
        EXPECT_EQ(client.get(QNetworkRequest(QUrl(origin + "/sim/echo/none")), reply, 5000),
                  c.trusted);
        if (!c.trusted) {
            EXPECT_EQ(replyError(reply), 6);  // the handshake failed
            const QStringList log = readLogMessages(tolvane::log::kMainLog);
            EXPECT_TRUE(log.contains("ssl error url: " + origin + "/sim/echo/none"));
            EXPECT_GE(log.indexOf(QRegularExpression("^ssl errorInfo: .+")), 0);
            EXPECT_TRUE(log.contains("QNetworkAccessManager get NetworkError:6"));
        } else {
            client.onsslErrors(nullptr, {});
            EXPECT_EQ(readLogMessages(tolvane::log::kMainLog).last(), "QSslError, sender is null");
        }

        // The login library, through the service: a refused handshake is no answer.
        VxNetServiceImp service(nullptr, nullptr);
        std::string error, longToken;
        const int32_t login = service.login("anchor", "secret123", error, longToken);
        if (c.trusted) {
            EXPECT_NE(login, tolvane::kNoAnswer);  // answered, even if the bare server refuses
        } else {
            EXPECT_EQ(login, tolvane::kNoAnswer);
            EXPECT_EQ(error, tolvane::kNetworkFailureText);
        }
        service.stop();

        EXPECT_EQ(server.requestLog().size() > 0, c.trusted) << server.requestLog().size();
    }
}

}  // namespace

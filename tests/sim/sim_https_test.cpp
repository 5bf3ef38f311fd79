#include <gtest/gtest.h>

#include "http/sim_certificate_authority.h"
#include "sim/sim_test_support.h"

using tolvane::sim::SimCertificateAuthority;
using tolvane::sim::SimHttpServer;
using tolvane::sim::SimTlsIdentity;

namespace {

enum class Identity { Trusted, SelfSigned };
enum class Trust { TestCa, SystemStore };

struct TlsCase {
    const char* name;
    Identity identity;
    Trust trust;
    bool connects;
};

const TlsCase kCases[] = {
    {"TrustedWithCaFile", Identity::Trusted, Trust::TestCa, true},
    {"TrustedWithoutCaFile", Identity::Trusted, Trust::SystemStore, false},
    {"SelfSignedWithCaFile", Identity::SelfSigned, Trust::TestCa, false},
    {"SelfSignedWithoutCaFile", Identity::SelfSigned, Trust::SystemStore, false},
};

class SimHttpsTest : public ::testing::TestWithParam<TlsCase> {
protected:
    static void SetUpTestSuite() { authority_ = std::make_unique<SimCertificateAuthority>(); }
    static void TearDownTestSuite() { authority_.reset(); }
    static std::unique_ptr<SimCertificateAuthority> authority_;
};

std::unique_ptr<SimCertificateAuthority> SimHttpsTest::authority_;

TEST_P(SimHttpsTest, ClientVerifiesTheServerCertificate) {
    const TlsCase& c = GetParam();
    ASSERT_TRUE(authority_->isValid());
    const SimTlsIdentity identity = c.identity == Identity::Trusted
                                        ? authority_->trustedIdentity()
                                        : authority_->selfSignedIdentity();
    SimHttpServer server;
    ASSERT_TRUE(server.startHttps(identity));
    ASSERT_EQ(server.origin().rfind("https://127.0.0.1:", 0), 0u) << server.origin();

    httplib::Client client = clientFor(server.origin());
    client.enable_server_certificate_verification(true);
    if (c.trust == Trust::TestCa) {
        client.set_ca_cert_path(authority_->caFile().c_str());
    }
    const httplib::Result result = client.Get("/sim/echo/none?x=1");
    if (c.connects) {
        ASSERT_TRUE(result) << httplib::to_string(result.error());
        EXPECT_EQ(jsonBody(result).value("error").toInt(-1), 0);
        ASSERT_EQ(server.requestLog().size(), 1u);
        EXPECT_EQ(server.requestLog().all()[0].scheme, "https");
    } else {
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error(), httplib::Error::SSLServerVerification);
        EXPECT_EQ(server.requestLog().size(), 0u);
    }
}

INSTANTIATE_TEST_SUITE_P(Certificates, SimHttpsTest, ::testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(SimHttpsServer, RefusesMissingCertificateFiles) {
    SimHttpServer server;
    EXPECT_FALSE(server.startHttps({"/nonexistent/cert.pem", "/nonexistent/key.pem"}));
    EXPECT_FALSE(server.isRunning());
}

}  // namespace

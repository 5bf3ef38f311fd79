#include <gtest/gtest.h>

#include <QFile>

#include "sim/sim_test_support.h"
#include "sim_environment.h"
#include "support/scoped_env.h"
#include "tolvane_config/default_data.h"

using tolvane::sim::SimEnvironment;

namespace {

TEST(SimEnvironmentTest, PointsDefaultDataAtTheRunningServer) {
    const struct {
        const char* name;
        SimEnvironment::Options options;
        const char* scheme;
    } cases[] = {
        {"production over http", {0, false}, "http://127.0.0.1:"},
        {"stress environment over https", {3, true}, "https://127.0.0.1:"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        IsolatedWorkspace workspace;
        ScopedEnv unset("TOLVANE_DEFAULT_DATA", "/before");
        {
            SimEnvironment environment(workspace.path(), c.options);
            environment.setExtraSettings({{"sim.note", "kept"}});
            ASSERT_TRUE(environment.start());
            EXPECT_EQ(environment.origin().rfind(c.scheme, 0), 0u) << environment.origin();
            EXPECT_EQ(qgetenv("TOLVANE_DEFAULT_DATA"), environment.defaultDataPath().toLocal8Bit());

            const tolvane::config::DefaultData data = tolvane::config::readDefaultData();
            EXPECT_EQ(data.environment, c.options.environment);
            EXPECT_EQ(data.endpoints.origin.toStdString(), environment.origin());
            EXPECT_EQ(data.root.value("sim.note").toString(), "kept");
            EXPECT_EQ(environment.caFile().empty(), !c.options.https);

            httplib::Client client = clientFor(environment.origin());
            if (c.options.https) {
                client.set_ca_cert_path(environment.caFile().c_str());
            }
            const httplib::Result result = client.Get("/sim/status/200");
            ASSERT_TRUE(result) << httplib::to_string(result.error());
            EXPECT_EQ(result->status, 200);
            EXPECT_EQ(environment.http().environment(), c.options.environment);
        }
        EXPECT_EQ(qgetenv("TOLVANE_DEFAULT_DATA"), QByteArray("/before"));
    }
}

}  // namespace

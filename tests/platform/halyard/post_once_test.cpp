#include <gtest/gtest.h>

#include "halyard/login_request.h"
#include "http/sim_http_server.h"
#include "platform/sim_platform.h"
#include "support/scoped_env.h"

namespace {

// Qt would send a call that was read and hung up on again, and the service would act twice (here
// a QR poll logging in); every passport call goes through the one POST that prevents it.
TEST(PassportPostOnce, AHangUpIsNoAnswerAndNothingIsSentTwice) {
    IsolatedWorkspace workspace;
    tolvane::sim::SimPlatform sim(workspace.path());
    ASSERT_TRUE(sim.start());
    LoginRequest login;
    int code = 0;
    QString message;
    LoginInfo info;
    RemoteLoginInfo remote;
    const char* path = "/lapi/passport/scan/auth";
    sim.http().setFault(path, tolvane::sim::SimFault::closeBeforeReply().oneShot());
    EXPECT_FALSE(login.syncLoginByQrCode("q-1", code, message, info, remote, 3000));
    EXPECT_EQ(sim.http().requestLog().to(path).size(), 1u);
    // The service itself is fine: the next call is answered.
    EXPECT_TRUE(login.syncLoginByQrCode("q-1", code, message, info, remote, 3000));
}

}  // namespace

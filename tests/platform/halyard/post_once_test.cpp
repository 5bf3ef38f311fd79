#include <gtest/gtest.h>

#include <functional>

#include "halyard/login_request.h"
#include "http/sim_http_server.h"
#include "platform/sim_platform.h"
#include "support/scoped_env.h"

namespace {

using tolvane::sim::SimFault;

// The passport service reads a call and hangs up without a byte of answer. Qt would send the
// call again on a new connection, where the fault is gone and the service would act twice (a
// QR poll logging in, a second SMS); the library reports no answer instead.
TEST(PassportPostOnce, AHangUpIsNoAnswerAndNothingIsSentTwice) {
    IsolatedWorkspace workspace;
    tolvane::sim::SimPlatform sim(workspace.path());
    ASSERT_TRUE(sim.start());
    LoginRequest login;
    int code = 0;
    QString message;
    LoginInfo info;
    RemoteLoginInfo remote;
    QRcodeLoginInfo qr;
    struct Case {
        const char* path;
        std::function<bool()> call;
    };
    const Case cases[] = {
        {"/app/loginCheck2",
         [&] {
             return login.syncLoginByName("anchor", "secret123", {}, code, message, info, remote,
                                          false, 3000);
         }},
        {"/scan/code", [&] { return login.syncGetLoginQrCode(code, message, qr, 3000); }},
        {"/lapi/passport/scan/auth",
         [&] { return login.syncLoginByQrCode("q-1", code, message, info, remote, 3000); }},
        {"/app/sendPhoneCaptcha",
         [&] { return login.syncSendVertifyCode("13800000000", code, message, 3000); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        sim.http().setFault(c.path, SimFault::closeBeforeReply().oneShot());
        EXPECT_FALSE(c.call());
        EXPECT_EQ(sim.http().requestLog().to(c.path).size(), 1u);
        // The service itself is fine: the next call is answered.
        EXPECT_TRUE(c.call());
    }
}

}  // namespace

#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "halyard/login_request.h"
#include "http/sim_http_server.h"
#include "platform/sim_platform.h"
#include "support/scoped_env.h"

namespace {

// Qt would send a call that was read and hung up on again, and the service would act twice (a QR
// poll logging in, a second SMS); the library reports no answer instead.
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
    const std::pair<const char*, std::function<bool()>> cases[] = {
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
    for (const auto& [path, call] : cases) {
        SCOPED_TRACE(path);
        sim.http().setFault(path, tolvane::sim::SimFault::closeBeforeReply().oneShot());
        EXPECT_FALSE(call());
        EXPECT_EQ(sim.http().requestLog().to(path).size(), 1u);
        EXPECT_TRUE(call());  // the service itself is fine
    }
}

}  // namespace

#include <gtest/gtest.h>

#include "parse/data_parser.h"
#include "parse/reply_texts.h"
#include "support/log_reader.h"
#include "support/scoped_env.h"

namespace {

// A login over plain HTTP; each case follows a remote-login refusal, so what a reply keeps shows.
TEST(LoginReplyJson, RemoteLoginsMissingTokensAndSessions) {
    IsolatedWorkspace workspace;
    const struct {
        const char* what;
        QByteArray reply;
        int result;
        std::string message;
        const char* state;  // foreign flag, masked phone, code, uid, long token ("kept" before)
        QString logged;     // a line the parse writes; empty: none checked
    } cases[] = {
        {"remote login with its record",
         R"({"error":130014,"data":"confirm by sms","ext":{"isForeignTel":1,)"
         R"("hidePhone":"139****1111","code":"rl-2"}})",
         228, "confirm by sms", "1 139****1111 rl-2 kept kept", ""},
        {"remote login without a record", R"({"error":130014,"data":"confirm by sms"})", 228,
         "confirm by sms", "0 138****0000 rl-1 kept kept",
         "parse data failed! json has not key: 'ext'"},
        {"an empty long token", R"({"error":0,"data":{"long_token":"","short_token":{"uid":"9"}}})",
         1, tolvane::kReplyDataErrorText, "0 138****0000 rl-1 kept kept", ""},
        {"no short token", R"({"error":0,"data":{"long_token":"L2"}})", 1,
         tolvane::kReplyDataErrorText, "0 138****0000 rl-1 kept kept", ""},
        {"a refusal", R"({"error":603,"data":"wrong password"})", 214, "wrong password",
         "0 138****0000 rl-1 kept kept", ""},
        {"a session",
         R"({"error":0,"data":{"long_token":"L2","short_token":{"uid":"12345","client_type":2,)"
         R"("create_time":"1700000000","expire_in":7200,"long_token_id":77,"short_token":"s",)"
         R"("biz_type":1}}})",
         0, "", "0 138****0000 rl-1 12345 L2", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        DataParser parser;
        std::string message, longToken = "kept";
        ShortTokenInfo record;
        record.uid = "kept";
        ASSERT_EQ(parser.parseLoginResult(
                      R"({"error":130014,"ext":{"isForeignTel":0,"hidePhone":"138****0000",)"
                      R"("code":"rl-1"}})",
                      message, longToken, record),
                  228);
        message.clear();
        EXPECT_EQ(parser.parseLoginResult(c.reply, message, longToken, record), c.result);
        EXPECT_EQ(message, c.message);
        EXPECT_EQ(std::to_string(parser.isForeignTel()) + ' ' + parser.hidePhone() + ' ' +
                      parser.remoteLoginCode() + ' ' + record.uid + ' ' + longToken,
                  c.state);
        if (!c.logged.isEmpty()) {
            EXPECT_TRUE(mainLogHas(c.logged));
        }
    }
}

}  // namespace

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "parse/data_parser.h"
#include "parse/reply_texts.h"
#include "support/log_reader.h"
#include "support/sim_service_fixture.h"

namespace {

class LoginFlow : public SimServiceTest {
protected:
    int32_t loginAs(const char* name, const char* password) {
        errorMessage.clear();
        longToken.clear();
        return service().login(name, password, errorMessage, longToken);
    }

    std::string errorMessage;
    std::string longToken;
};

// Every library login slot, driven with the same fixture accounts.
TEST_F(LoginFlow, EverySlotLogsInAndLoadsTheProfile) {
    auto& s = service();
    auto sms = [this] { return platform().passport().issueSmsCode("13800000001"); };
    LoginCheckRequest byName;  // the phone texts are ignored when a name is given
    byName.name = "anchor";
    byName.secret = "secret123";
    byName.phoneText1 = "19999999999";
    byName.phoneText3 = "1";
    LoginCheckRequest byPhone;
    byPhone.phoneText1 = "13800000001";
    byPhone.phoneText3 = "86";
    const struct {
        const char* name;
        std::function<int32_t(std::string& error, std::string& token)> login;
    } cases[] = {
        {"login", [&](auto& e, auto& t) { return s.login("anchor", "secret123", e, t); }},
        {"loginByPhone",
         [&](auto& e, auto& t) { return s.loginByPhone("13800000001", "secret123", "86", t, e); }},
        {"loginByPhoneCaptcha",
         [&](auto& e, auto& t) { return s.loginByPhoneCaptcha("13800000001", sms(), "86", t, e); }},
        {"loginCheckNew by name", [&](auto& e, auto& t) { return s.loginCheckNew(byName, e, t); }},
        {"loginCheckNew by SMS code",
         [&](auto& e, auto& t) {
             byPhone.secret = sms();
             return s.loginCheckNew(byPhone, e, t);
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        service().logout();
        std::string error, token;
        EXPECT_EQ(c.login(error, token), 0) << error;
        EXPECT_FALSE(token.empty());
        EXPECT_STREQ(service().getNickname(), "Lantern");
        EXPECT_TRUE(service().hasOwnRoom());
        EXPECT_TRUE(platform().sessionByToken(this->token()).has_value());
        std::string stored;
        service().getSessionText(stored);
        EXPECT_EQ(stored, token);
    }
}

TEST_F(LoginFlow, RemoteLoginNeedsTheSmsCode) {
    EXPECT_EQ(loginAs("traveller", "secret456"), 228);
    EXPECT_TRUE(mainLogHas(QString::fromUtf8(
        "error Url: app/loginCheck2, errorCode: 130014,  errorMsg: 请验证手机号后登录")));
    bool foreign = true;
    std::string hidePhone, remoteCode;
    service().getRemoteLoginInfo(foreign, hidePhone, remoteCode);
    EXPECT_FALSE(foreign);
    EXPECT_EQ(hidePhone, "139****0002");
    ASSERT_FALSE(remoteCode.empty());
    EXPECT_EQ(token(), "-1_0__0_0");  // still logged out

    EXPECT_EQ(service().remoteLogin(remoteCode, "000000", longToken, errorMessage), 226);
    // A host has the code sent to the remote-login code.
    ASSERT_EQ(service().sendPhoneCaptcha(remoteCode, errorMessage), 0) << errorMessage;
    const std::string sms = platform().passport().lastSmsCode(remoteCode);
    EXPECT_EQ(service().remoteLogin(remoteCode, sms, longToken, errorMessage), 0) << errorMessage;
    EXPECT_STREQ(service().getNickname(), "Wayfarer");
}

TEST_F(LoginFlow, TokenLoginReplacesTheLongToken) {
    ASSERT_EQ(loginAs("anchor", "secret123"), 0);
    std::string saved = longToken;
    EXPECT_EQ(service().loginByToken(saved, errorMessage), 0) << errorMessage;
    EXPECT_NE(saved, longToken);
    EXPECT_TRUE(platform().accountByLongToken(saved).has_value());

    ASSERT_EQ(loginAs("expired", "secret000"), 0);
    std::string expired = longToken;
    EXPECT_EQ(service().loginByToken(expired, errorMessage), 227);
    EXPECT_EQ(expired, longToken);  // the host's token is left as it was
}

TEST_F(LoginFlow, ThirdPartyLoginUsesTheGivenTokenSet) {
    const auto account = platform().accountByName("anchor");
    ASSERT_TRUE(account.has_value());
    const auto grant = platform().grantLogin(*account);
    ShortTokenInfo info;
    info.uid = grant.session.uid;
    info.shortToken = grant.session.shortToken;
    info.bizType = grant.session.bizType;
    info.clientType = grant.session.clientType;
    info.longTokenId = grant.session.longTokenId;
    info.expireIn = 99;
    EXPECT_EQ(service().login_third_party(grant.longToken, info), 0);
    EXPECT_STREQ(service().getNickname(), "Lantern");
    ShortTokenInfo stored;
    EXPECT_EQ(service().getLoginInfo(stored), 99);
    EXPECT_EQ(stored.shortToken, grant.session.shortToken);

    info.shortToken = "forged";
    EXPECT_EQ(service().login_third_party(grant.longToken, info), 220);  // session expired
}

TEST_F(LoginFlow, RefusalsKeepTheSessionAndLogoutResetsIt) {
    ASSERT_EQ(loginAs("traveller", "secret456"), 228);
    // The profile fetch fails after the passport accepted the password.
    EXPECT_EQ(loginAs("noprofile", "secret321"), 218);
    EXPECT_EQ(errorMessage, lastLoginMessage());
    EXPECT_TRUE(mainLogHas("initUserInfo error: 218"));
    ASSERT_EQ(loginAs("anchor", "secret123"), 0);
    // A refusal is mapped and logged, and the library's own message handed over.
    ASSERT_EQ(loginAs("anchor", "wrong"), 214);
    EXPECT_EQ(errorMessage, lastLoginMessage());
    EXPECT_TRUE(mainLogHas(QString::fromUtf8(
        "error Url: app/loginCheck2, errorCode: 603,  errorMsg: 账号或密码错误")));
    EXPECT_NE(token(), "-1_0__0_0");
    service().logout();
    EXPECT_EQ(token(), "-1_0__0_0");
    std::string longTokenAfter;
    service().getSessionText(longTokenAfter);
    EXPECT_TRUE(longTokenAfter.empty());
    EXPECT_STREQ(service().getNickname(), "");
    bool foreign = false;
    std::string hidePhone, code;
    service().getRemoteLoginInfo(foreign, hidePhone, code);
    EXPECT_TRUE(foreign);                             // back to its initial value
    EXPECT_EQ(lastLoginMessage(), "账号或密码错误");  // kept across logout
}

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

TEST(UserInfoParse, FieldRules) {
    const struct {
        const char* data;
        bool ownRoom;
        int sex;
        const char* ident;
        const char* avatarBig;
    } cases[] = {
        {R"({"nickname":"n","is_own_room":1,"sex":"2","ident":"","ident_status":"2",
             "avatar":{"big":"B","middle":"M","small":"S"}})",
         true, 2, "******", "B"},
        {R"({"nickname":"n","is_own_room":"1","sex":1,"ident":"","ident_status":"1"})", true, 1, "",
         "B"},  // no avatar: the previous avatars stay
        {R"({"nickname":"n","is_own_room":2,"sex":"x","ident":"110*","ident_status":"2"})", false,
         0, "110*", "B"},
    };
    DataParser parser;
    for (const auto& c : cases) {
        std::string message;
        const QByteArray reply = QByteArray(R"({"error":0,"data":)") + c.data + "}";
        EXPECT_EQ(parser.parseUserInfoResult(reply, message), 0) << c.data;
        EXPECT_EQ(parser.userProfile().isOwnRoom, c.ownRoom) << c.data;
        EXPECT_EQ(parser.userProfile().sex, c.sex) << c.data;
        EXPECT_EQ(parser.userProfile().ident, c.ident) << c.data;
        EXPECT_EQ(parser.userProfile().avatarBig, c.avatarBig) << c.data;
    }
    EXPECT_TRUE(mainLogHas("parse data failed! json has not key: 'avatar'"));
    std::string message;
    EXPECT_EQ(parser.parseUserInfoResult(R"({"error":0})", message), 1);
    EXPECT_EQ(message, "服务器数据异常");
}

using UserInfo = LoggedInSimServiceTest;

TEST_F(UserInfo, RecordAccessorsAndRefresh) {
    UserRecord user;
    service().getUserRecord(user);
    EXPECT_EQ(user.uid, "10001");
    EXPECT_EQ(user.nickname, "Lantern");
    EXPECT_EQ(user.ident, "******");
    EXPECT_TRUE(user.phoneBound);
    EXPECT_EQ(user.mobilePhone, "138****0001");
    std::string avatar;
    EXPECT_TRUE(service().getAvatarMiddle(avatar));
    EXPECT_EQ(avatar, "https://img.tolvane.example/a/10001_middle.png");
    EXPECT_EQ(service().getSex(), 1);

    std::string error;
    EXPECT_TRUE(service().refreshUserInfo(error));
    EXPECT_EQ(requestsTo("/api/v1/my_info").size(), 2u);
    service().logout();
    EXPECT_FALSE(service().refreshUserInfo(error));
    EXPECT_TRUE(mainLogHas("refreshUserInfo error: 220"));
}

}  // namespace

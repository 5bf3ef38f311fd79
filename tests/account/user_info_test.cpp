#include <gtest/gtest.h>

#include "parse/data_parser.h"
#include "support/log_reader.h"
#include "support/sim_service_fixture.h"

namespace {

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

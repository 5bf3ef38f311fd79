#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <functional>
#include <sstream>

#include "parse/data_parser.h"
#include "parse/reply_texts.h"
#include "platform/sim_anchor_query_service.h"
#include "support/parse_rows.h"
#include "support/replies.h"
#include "support/sim_service_fixture.h"

namespace {

using tolvane::sim::SimFault;

TEST(AnchorQueriesParse, HoverCardReadsBothPartsAndKeepsWhatIsMissing) {
    const std::string untouched = "kept|||0|0|||0 kept|0|0|0|0||0||0";
    expectParsed(
        {
            {okReply(R"({"userInfo":{"nickname":"灯笼","avatar":"https://a/m.png","weight":"12.5t",
                "vipId":3,"roomId":"880001","city":"杭州","follow":"3260","isOfficial":1},
                "levelInfo":{"level":"21","upgrade_exp":12000,"min_exp":"8000.25","exp":9650.5,
                "isFull":0,"levelIcon":"i21","next_level":22,"nextLevelIcon":"i22",
                "progress":0.4126}})"),
             0,
             u8"灯笼|https://a/m.png|12.5t|3|880001|杭州|3260|1 "
             u8"21|12000|8000.25|9650.5|0|i21|22|i22|0.4126"},
            // No user part, then a level part that is not an object.
            {okReply(R"({"levelInfo":{"level":"3","progress":1}})"), 0,
             "kept|||0|0|||0 3|0|0|0|0||0||1"},
            {okReply(R"({"userInfo":{"vipId":"9"},"levelInfo":[1]})"), 0,
             "|||9|0|||0 kept|0|0|0|0||0||0"},
            {R"({"error":0})", 1, untouched},
            {R"({"error":606,"data":"登录已失效"})", 220, untouched},
        },
        [](DataParser& parser, const QByteArray& reply, std::string& out) {
            AnchorCardUser u;
            AnchorCardLevel l;
            u.nickname = l.level = "kept";
            const int result = parser.parseAnchorHeadHoverInfo(reply, u, l);
            std::ostringstream text;
            text << u.nickname << '|' << u.avatar << '|' << u.weight << '|' << u.vipId << '|'
                 << u.roomId << '|' << u.city << '|' << u.follow << '|' << u.isOfficial << ' '
                 << l.level << '|' << l.upgrade_exp << '|' << l.min_exp << '|' << l.exp << '|'
                 << l.isFull << '|' << l.levelIcon << '|' << l.next_level << '|' << l.nextLevelIcon
                 << '|' << l.progress;
            out = text.str();
            return result;
        });
}

// The flag is read from both starting values: "11" is in, "00" out, "10" left as it was.
TEST(AnchorQueriesParse, GuildFlagIsOneAndNothingElse) {
    expectParsed(
        {
            {okReply(R"({"in":1})"), 0, "11"},
            {okReply(R"({"in":"1"})"), 0, "11"},
            {okReply(R"({"in":2})"), 0, "00"},
            {okReply(R"({"in":true})"), 0, "00"},
            {okReply("{}"), 0, "00"},
            {R"({"error":0,"data":"yes"})", 1, "10"},
            {R"({"error":603,"data":"no"})", 214, "10"},
        },
        [](DataParser& parser, const QByteArray& reply, std::string& out) {
            bool fromTrue = true, fromFalse = false;
            parser.parseCheckInGuildResult(reply, fromFalse);
            const int result = parser.parseCheckInGuildResult(reply, fromTrue);
            out = {char('0' + fromTrue), char('0' + fromFalse)};
            return result;
        });
}

TEST(AnchorQueriesParse, CustomerServiceEntry) {
    expectParsed(
        {
            {okReply(R"({"remark":"在线客服","url":"https://kf.example/c?a=1&b=2"})"), 0,
             u8"在线客服|https://kf.example/c?a=1&b=2|"},
            {okReply(R"({"url":"https://kf.example"})"), 0, "|https://kf.example|"},
            {R"({"error":4307,"data":"应用不存在"})", 4307, u8"before|before|应用不存在"},
            {R"({"error":0,"data":[]})", 1, "before|before|" + tolvane::kReplyDataErrorText},
        },
        [](DataParser& parser, const QByteArray& reply, std::string& out) {
            std::string remark = "before", url = "before";
            const int result = parser.parseCustomerServiceEntry(reply, remark, url);
            out = remark + "|" + url + "|" + parser.lastErrorMessage();
            return result;
        });
}

const char kUid[] = "10001";
const char kBlackList[] = "/api/v1/room_black";
const char kUnblack[] = "/api/v1/del_black";
const char kIdentity[] = "/member/panel/pc/ident/getIdentUrlForShow";

QJsonObject json(const std::string& text) {
    return QJsonDocument::fromJson(QByteArray::fromStdString(text)).object();
}

class AnchorQueries : public AnchorRoomSimServiceTest {
protected:
    tolvane::sim::SimAnchorRecords& records() { return platform().anchorRecords(); }
};

// What each slot sends is in the recorded wire file; the answers come from the fixture account
// and its room.
TEST_F(AnchorQueries, AnswersComeFromTheAccountAndItsRoom) {
    int32_t count = 0;
    bool inGuild = false;
    std::string remark, url;
    AnchorCardUser user;
    AnchorCardLevel level;
    ASSERT_EQ(service().getFollowCnt(count), 0);
    ASSERT_EQ(service().checkInGuild(inGuild), 0);
    ASSERT_EQ(service().getAnchorHeadHoverInfo(user, level), 0);
    ASSERT_EQ(service().getCustomerServiceEntry("tolvane_pc", remark, url), 0);
    EXPECT_EQ(count, 3260);
    EXPECT_TRUE(inGuild);
    EXPECT_EQ(user.nickname + "|" + user.follow + "|" + level.level, "Lantern|3260|21");
    EXPECT_FLOAT_EQ(level.progress, 0.412625f);
    EXPECT_EQ(remark + "|" + url, u8"在线客服 9:00-21:00|https://kf.tolvane.example/chat?app=pc");
}

TEST_F(AnchorQueries, LocationIsStoredAsSentAndShownOnRequest) {
    std::string message;
    EXPECT_EQ(service().getAnchorLocation(1, message), 4304);
    EXPECT_EQ(message, u8"未获取到主播位置");

    ASSERT_EQ(service().reportAnchorLocation(u8"杭州", "120.155070", "+30.274085", message), 0);
    EXPECT_EQ(message, "");
    const auto stored = records().location(kUid);
    ASSERT_TRUE(stored.has_value());
    EXPECT_EQ(stored->city + "|" + stored->longitude + "|" + stored->latitude,
              u8"杭州|120.155070|+30.274085");

    ASSERT_EQ(service().getAnchorLocation(1, message), 0) << message;
    EXPECT_EQ(records().locationShown(kUid), true);
    ASSERT_EQ(service().getAnchorLocation(0, message), 0) << message;
    EXPECT_EQ(records().locationShown(kUid), false);
    EXPECT_EQ(lastRequestTo("/api/applivecompanion/getAnchorPoi").formValue("isAllowPoi"), "0");
}

TEST_F(AnchorQueries, BlackListIsListedThenEdited) {
    std::string reply;
    ASSERT_EQ(service().get_black_user_list(reply), 0);
    const QJsonArray list = json(reply).value("data").toObject().value("list").toArray();
    ASSERT_EQ(list.size(), 2);
    EXPECT_EQ(list[1].toObject().value("nickname").toString().toStdString(), u8"刷屏机器人");

    ASSERT_EQ(service().unblack_user("20001", reply), 0);
    EXPECT_EQ(json(reply).value("error").toInt(-1), 0);
    ASSERT_EQ(records().blackList(kAnchorRoom).size(), 1u);
    EXPECT_EQ(records().blackList(kAnchorRoom)[0].uid, "20002");

    // A refusal is the host's to read: the call itself succeeded.
    ASSERT_EQ(service().unblack_user("20001", reply), 0);
    EXPECT_EQ(json(reply).value("error").toInt(), tolvane::sim::anchor_codes::kNotBlocked);
}

TEST_F(AnchorQueries, RawRepliesReachTheHostUnchanged) {
    struct Case {
        const char* path;
        std::function<int32_t(std::string&)> call;
    };
    const Case cases[] = {
        {kIdentity, [this](std::string& reply) { return service().requestLiveAuthInfo(reply); }},
        {kBlackList, [this](std::string& reply) { return service().get_black_user_list(reply); }},
        {kUnblack, [this](std::string& reply) { return service().unblack_user("20001", reply); }},
    };
    // Not JSON and not even UTF-8: nothing may read or re-encode it on the way.
    std::string odd = "{\"error\":606,\"data\":\"\xff\xfe\"}\r\n";
    odd += '\0';
    odd += "x";
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        std::string reply;
        sim().http().setFault(c.path, SimFault::httpStatus(200, odd));
        EXPECT_EQ(c.call(reply), 0);
        EXPECT_EQ(reply, odd);

        sim().http().setFault(c.path, SimFault::httpStatus(502, "gateway down"));
        EXPECT_EQ(c.call(reply), 210);
        const QJsonObject madeUp = json(reply);
        EXPECT_EQ(madeUp.value("error").toInt(), 502);
        EXPECT_EQ(madeUp.value("data").toString(), QStringLiteral("gateway down"));
        sim().http().clearFaults();
    }
    std::string reply;
    ASSERT_EQ(service().requestLiveAuthInfo(reply), 0);
    EXPECT_EQ(json(reply).value("data").toObject().value("url").toString(),
              QStringLiteral("https://ident.tolvane.example/pc/verify?uid=10001"));
}

}  // namespace

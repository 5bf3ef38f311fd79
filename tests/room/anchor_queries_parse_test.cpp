#include <gtest/gtest.h>

#include <sstream>

#include "parse/data_parser.h"
#include "parse/reply_texts.h"
#include "support/scoped_env.h"

namespace {

QByteArray ok(const char* data) {
    return QByteArray(R"({"error":0,"data":)") + data + "}";
}

std::string userText(const AnchorCardUser& u) {
    std::ostringstream out;
    out << u.nickname << '|' << u.avatar << '|' << u.weight << '|' << u.vipId << '|' << u.roomId
        << '|' << u.city << '|' << u.follow << '|' << u.isOfficial;
    return out.str();
}

std::string levelText(const AnchorCardLevel& l) {
    std::ostringstream out;
    out << l.level << '|' << l.upgrade_exp << '|' << l.min_exp << '|' << l.exp << '|' << l.isFull
        << '|' << l.levelIcon << '|' << l.next_level << '|' << l.nextLevelIcon << '|' << l.progress;
    return out.str();
}

TEST(AnchorQueriesParse, HoverCardReadsBothPartsAndKeepsWhatIsMissing) {
    IsolatedWorkspace workspace;
    const std::string untouchedUser = "kept|||0|0|||0";
    const std::string untouchedLevel = "kept|0|0|0|0||0||0";
    struct Case {
        const char* name;
        QByteArray reply;
        int result;
        std::string user, level;
    };
    const Case cases[] = {
        {"whole card",
         ok(R"({"userInfo":{"nickname":"灯笼","avatar":"https://a/m.png","weight":"12.5t",
                "vipId":3,"roomId":"880001","city":"杭州","follow":"3260","isOfficial":1},
                "levelInfo":{"level":"21","upgrade_exp":12000,"min_exp":"8000.25","exp":9650.5,
                "isFull":0,"levelIcon":"i21","next_level":22,"nextLevelIcon":"i22",
                "progress":0.4126}})"),
         0, u8"灯笼|https://a/m.png|12.5t|3|880001|杭州|3260|1",
         "21|12000|8000.25|9650.5|0|i21|22|i22|0.4126"},
        {"no user part", ok(R"({"levelInfo":{"level":"3","progress":1}})"), 0, untouchedUser,
         "3|0|0|0|0||0||1"},
        {"level part not an object", ok(R"({"userInfo":{"vipId":"9"},"levelInfo":[1]})"), 0,
         "|||9|0|||0", untouchedLevel},
        {"no data", R"({"error":0})", 1, untouchedUser, untouchedLevel},
        {"session expired", R"({"error":606,"data":"登录已失效"})", 220, untouchedUser,
         untouchedLevel},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        DataParser parser;
        AnchorCardUser user;
        AnchorCardLevel level;
        user.nickname = level.level = "kept";
        EXPECT_EQ(parser.parseAnchorHeadHoverInfo(c.reply, user, level), c.result);
        EXPECT_EQ(userText(user), c.user);
        EXPECT_EQ(levelText(level), c.level);
    }
}

TEST(AnchorQueriesParse, GuildFlagIsOneAndNothingElse) {
    IsolatedWorkspace workspace;
    struct Case {
        QByteArray reply;
        int result;
        bool inGuild;  // starts as the opposite of the expected value where the parse succeeds
    };
    const Case cases[] = {
        {ok(R"({"in":1})"), 0, true},
        {ok(R"({"in":"1"})"), 0, true},
        {ok(R"({"in":2})"), 0, false},
        {ok(R"({"in":true})"), 0, false},
        {ok("{}"), 0, false},
        {R"({"error":0,"data":"yes"})", 1, true},
        {R"({"error":603,"data":"no"})", 214, true},
    };
    for (const Case& c : cases) {
        DataParser parser;
        bool inGuild = c.result == 0 ? !c.inGuild : true;
        EXPECT_EQ(parser.parseCheckInGuildResult(c.reply, inGuild), c.result) << c.reply.data();
        EXPECT_EQ(inGuild, c.inGuild) << c.reply.data();
    }
}

TEST(AnchorQueriesParse, CustomerServiceEntry) {
    IsolatedWorkspace workspace;
    struct Case {
        QByteArray reply;
        int result;
        std::string remark, url, parserMessage;
    };
    const Case cases[] = {
        {ok(R"({"remark":"在线客服","url":"https://kf.example/c?a=1&b=2"})"), 0, u8"在线客服",
         "https://kf.example/c?a=1&b=2", ""},
        {ok(R"({"url":"https://kf.example"})"), 0, "", "https://kf.example", ""},
        {R"({"error":4307,"data":"应用不存在"})", 4307, "before", "before", u8"应用不存在"},
        {R"({"error":0,"data":[]})", 1, "before", "before", tolvane::kReplyDataErrorText},
    };
    for (const Case& c : cases) {
        DataParser parser;
        std::string remark = "before", url = "before";
        EXPECT_EQ(parser.parseCustomerServiceEntry(c.reply, remark, url), c.result)
            << c.reply.data();
        EXPECT_EQ(remark, c.remark) << c.reply.data();
        EXPECT_EQ(url, c.url) << c.reply.data();
        EXPECT_EQ(parser.lastErrorMessage(), c.parserMessage) << c.reply.data();
    }
}

}  // namespace

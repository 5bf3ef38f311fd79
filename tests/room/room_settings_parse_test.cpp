#include <gtest/gtest.h>

#include <QString>
#include <QStringList>

#include "parse/data_parser.h"
#include "parse/reply_texts.h"
#include "support/scoped_env.h"

namespace {

QByteArray ok(const QByteArray& data) {
    return R"({"error":0,"data":)" + data + "}";
}

TEST(RoomSettingsParse, WatermarkCornerMask) {
    IsolatedWorkspace workspace;
    struct Case {
        QByteArray reply;
        int result;
        int32_t mask;
    };
    const Case cases[] = {
        {ok("[1,3]"), 0, 9},
        {ok("[3,4]"), 0, 12},
        {ok("[]"), 0, 0},
        {ok(R"([2,"1",5,2.5,{},1,1])"), 0, 3},  // only whole numbers 1-4 count, once each
        {R"({"error":0})", 1, 15},
        {ok(R"("1,3")"), 1, 15},
    };
    for (const Case& c : cases) {
        DataParser parser;
        int32_t mask = 7;
        EXPECT_EQ(parser.parseWatermarkLocationResult(c.reply, mask), c.result) << c.reply.data();
        EXPECT_EQ(mask, c.mask) << c.reply.data();
    }
}

// Every field in record order.
std::string fields(const LiveRoomParameter& p) {
    QStringList all;
    all << QString::number(p.roomId) << QString::fromStdU16String(p.roomName)
        << QString::fromStdU16String(p.newTitle) << QString::number(p.titleVerifyState)
        << QString::number(p.cate1Id) << QString::number(p.cate2Id) << QString::number(p.cate3Id)
        << QString::fromStdU16String(p.cate2Name) << QString::fromStdU16String(p.cate3Name)
        << QString::number(p.categoryTime) << QString::fromStdU16String(p.lastNotice)
        << QString::fromStdU16String(p.newNotice) << QString::number(p.noticeState)
        << QString::number(p.noticeAlways) << QString::fromStdString(p.coverSource)
        << QString::number(p.coverState) << QString::fromStdU16String(p.coverMessage)
        << QString::number(p.coverButtonType) << QString::number(p.openCloseCover)
        << QString::number(p.credit);
    return all.join('|').toStdString();
}

TEST(RoomSettingsParse, LiveRoomParameterSubObjectsAreOptionalButTheCredit) {
    IsolatedWorkspace workspace;
    DataParser parser;
    LiveRoomParameter parameter;
    ASSERT_EQ(parser.parseLiveRoomParamter(ok(R"({
        "room_info":{"room_id":"880001","room_name":"深夜棋局","cate2_id":12,"cate3_id":"121",
                     "cate_time":"1714003200"},
        "room_verify":{"new_title":"残局之夜","title_vertify":1},
        "cate_info":{"cate1_id":"1","cate3_id":"122","cate2_name":"Chess","cate3_name":"Rapid"},
        "notice_info":{"last_notice":"old","new_notice":"new","new_status":"2","always":1},
        "cover_info":{"cover_src":"https://c/1.jpg","cover_status":0,"cover_msg":"模糊",
                      "open_close_cover":0},
        "cover_button_type":1,"credit_info":{"credit":"9"}})"),
                                           parameter),
              0);
    // The category object's third level wins over the room object's.
    EXPECT_EQ(fields(parameter),
              u8"880001|深夜棋局|残局之夜|1|1|12|122|Chess|Rapid|1714003200|"
              u8"old|new|3|1|https://c/1.jpg|1|模糊|1|0|9");

    ASSERT_EQ(parser.parseLiveRoomParamter(ok(R"({"cover_button_type":0})"), parameter), 0);
    EXPECT_EQ(fields(parameter),
              u8"880001|深夜棋局|残局之夜|1|1|12|122|Chess|Rapid|1714003200|"
              u8"old|new|3|1|https://c/1.jpg|1|模糊|0|0|-1");
    EXPECT_EQ(parser.parseLiveRoomParamter(ok(R"("none")"), parameter), 1);
    EXPECT_EQ(parser.lastErrorMessage(), tolvane::kReplyDataErrorText);
}

TEST(RoomSettingsParse, ReviewStatesAreRenumbered) {
    IsolatedWorkspace workspace;
    // title_vertify, new_status, cover_status as sent -> the three states (notice starts at 9)
    const std::pair<QString, std::string> cases[] = {
        {"0,0,0", "2,1,1"}, {"1,1,1", "1,2,2"},  {"5,2,2", "3,3,3"},
        {"2,3,9", "3,0,0"}, {"-1,7,3", "3,9,0"},
    };
    for (const auto& [sent, states] : cases) {
        const QStringList v = sent.split(',');
        const QByteArray reply = ok(QStringLiteral(R"({"room_verify":{"title_vertify":%1},
            "notice_info":{"new_status":%2},"cover_info":{"cover_status":%3}})")
                                        .arg(v[0], v[1], v[2])
                                        .toUtf8());
        DataParser parser;
        LiveRoomParameter p;
        p.noticeState = 9;
        ASSERT_EQ(parser.parseLiveRoomParamter(reply, p), 0);
        EXPECT_EQ(std::to_string(p.titleVerifyState) + "," + std::to_string(p.noticeState) + "," +
                      std::to_string(p.coverState),
                  states)
            << sent.toStdString();
    }
}

TEST(RoomSettingsParse, BitratePresetsSkipIncompleteEntries) {
    IsolatedWorkspace workspace;
    DataParser parser;
    std::vector<BitrateConfig> configs(1);  // appended to
    const QByteArray reply = ok(R"([
        {"type":1,"cate2_id":12,"cate2_name":"Chess","min":1500,"max":4000},
        {"type":"2","cate2_id":"201","cate2_name":"Singing","min":"1000","max":3000},
        {"type":1,"cate2_id":13,"cate2_name":"Go","min":100},
        3,
        {"type":0,"cate2_id":207,"cate2_name":"Voice chat","min":300,"max":800}])");
    ASSERT_EQ(parser.parseIntelligentSettingConfigList(reply, configs), 0);
    std::string listed;
    for (const BitrateConfig& config : configs) {
        listed += std::to_string(config.typeFlag) + ":" + std::to_string(config.cate2Id) + ":" +
                  config.cate2Name + ":" + std::to_string(config.min) + "-" +
                  std::to_string(config.max) + " ";
    }
    EXPECT_EQ(listed,
              "0:0::0-0 0:12:Chess:1500-4000 1:201:Singing:1000-3000 "
              "1:207:Voice chat:300-800 ");
    EXPECT_EQ(parser.parseIntelligentSettingConfigList(ok("{}"), configs), 1);
    EXPECT_EQ(configs.size(), 4u);
}

TEST(RoomSettingsParse, CreatedRoomIdBecomesTheRoomId) {
    IsolatedWorkspace workspace;
    const std::pair<QByteArray, int32_t> cases[] = {{ok("880777"), 880777},
                                                    {ok(R"("880778")"), 880778},
                                                    {ok("{}"), -1},
                                                    {R"({"error":0})", -1},
                                                    {R"({"error":606,"data":"expired"})", -1}};
    for (const auto& [reply, roomId] : cases) {
        DataParser parser;
        EXPECT_EQ(parser.parseCreateLiveRoomResult(reply) == 0, roomId != -1) << reply.data();
        EXPECT_EQ(parser.roomInfo().roomId, roomId) << reply.data();
    }
}

}  // namespace

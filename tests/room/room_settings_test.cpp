#include <gtest/gtest.h>

#include <QString>
#include <QStringList>

#include "parse/data_parser.h"
#include "parse/reply_texts.h"
#include "support/log_reader.h"
#include "support/parse_rows.h"
#include "support/replies.h"
#include "support/sim_service_fixture.h"

namespace {

using tolvane::sim::SimFault;

// The mask starts as 7.
TEST(RoomSettingsParse, WatermarkCornerMask) {
    expectParsed(
        {
            {okReply("[1,3]"), 0, "9"},
            {okReply("[3,4]"), 0, "12"},
            {okReply("[]"), 0, "0"},
            {okReply(R"([2,"1",5,2.5,{},1,1])"), 0, "3"},  // only whole numbers 1-4, once each
            {R"({"error":0})", 1, "15"},
            {okReply(R"("1,3")"), 1, "15"},
        },
        [](DataParser& parser, const QByteArray& reply, std::string& out) {
            int32_t mask = 7;
            const int result = parser.parseWatermarkLocationResult(reply, mask);
            out = std::to_string(mask);
            return result;
        });
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
    DataParser parser;
    LiveRoomParameter parameter;
    ASSERT_EQ(parser.parseLiveRoomParamter(okReply(R"({
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

    ASSERT_EQ(parser.parseLiveRoomParamter(okReply(R"({"cover_button_type":0})"), parameter), 0);
    EXPECT_EQ(fields(parameter),
              u8"880001|深夜棋局|残局之夜|1|1|12|122|Chess|Rapid|1714003200|"
              u8"old|new|3|1|https://c/1.jpg|1|模糊|0|0|-1");
    EXPECT_EQ(parser.parseLiveRoomParamter(okReply(R"("none")"), parameter), 1);
    EXPECT_EQ(parser.lastErrorMessage(), tolvane::kReplyDataErrorText);
}

TEST(RoomSettingsParse, ReviewStatesAreRenumbered) {
    // title_vertify, new_status, cover_status as sent -> the three states (notice starts at 9)
    const std::pair<QString, std::string> cases[] = {
        {"0,0,0", "2,1,1"}, {"1,1,1", "1,2,2"},  {"5,2,2", "3,3,3"},
        {"2,3,9", "3,0,0"}, {"-1,7,3", "3,9,0"},
    };
    for (const auto& [sent, states] : cases) {
        const QStringList v = sent.split(',');
        const QByteArray reply = okReply(QStringLiteral(R"({"room_verify":{"title_vertify":%1},
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
    DataParser parser;
    std::vector<BitrateConfig> configs(1);  // appended to
    const QByteArray reply = okReply(R"([
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
    EXPECT_EQ(parser.parseIntelligentSettingConfigList(okReply("{}"), configs), 1);
    EXPECT_EQ(configs.size(), 4u);
}

TEST(RoomSettingsParse, CreatedRoomIdBecomesTheRoomId) {
    expectParsed(
        {
            {okReply("880777"), 0, "880777"},
            {okReply(R"("880778")"), 0, "880778"},
            {okReply("{}"), 1, "-1"},
            {R"({"error":0})", 1, "-1"},
            {R"({"error":606,"data":"expired"})", 220, "-1"},
        },
        [](DataParser& parser, const QByteArray& reply, std::string& out) {
            const int result = parser.parseCreateLiveRoomResult(reply);
            out = std::to_string(parser.roomInfo().roomId);
            return result;
        });
}

const char kCorners[] = "/api/v1/get_corner";
const char kStatistics[] = "/api/videoPartner/livinginfo";

// What each operation sends is in the recorded wire file.
using RoomSettingsService = AnchorRoomSimServiceTest;

TEST_F(RoomSettingsService, VideoSettingsFollowThePlatformAndItsCategory) {
    std::string message;
    ASSERT_EQ(service().setLiveClassify(201, 2011, message), 0) << message;
    LiveRoomParameter parameter;
    ASSERT_EQ(service().getLiveRoomParameter(parameter), 0);
    // Every field is read as the parser tests show; these follow the platform's category.
    EXPECT_EQ(parameter.cate2Name + u"|" + parameter.cate3Name, u"Singing|Karaoke");
    EXPECT_EQ(parameter.cate3Id, 2011);
    EXPECT_EQ(parameter.credit, 12);
    // The room information names the same category.
    service().refreshRoomInfo();
    RoomSummary room;
    service().getRoomRecord(room);
    EXPECT_EQ(room.gameName + "/" + room.childName, "Singing/Karaoke");
}

// Only no answer is 210: an answer, even one carrying the server code 210, is a mask.
TEST_F(RoomSettingsService, CornersAndBitratePresets) {
    platform().roomSettings().setCorners(kAnchorRoom, {3, 4});
    EXPECT_EQ(service().getWatermarkLocation(), 12);
    for (const char* body : {R"({"error":0})", R"({"error":210,"data":"busy"})"}) {
        sim().http().setFault(kCorners, SimFault::httpStatus(200, body));
        EXPECT_EQ(service().getWatermarkLocation(), 15) << body;
    }

    std::vector<BitrateConfig> presets;
    ASSERT_EQ(service().getIntelligentSettingConfig(presets), 0);
    ASSERT_EQ(presets.size(), 4u);
    EXPECT_EQ(presets[1].cate2Name + " " + std::to_string(presets[1].typeFlag), "Singing 1");
}

TEST_F(RoomSettingsService, ReminderIsStoredAndNeedsATitle) {
    std::string message = "before";
    ASSERT_EQ(service().sendLiveRemindCustom(u8"今晚八点开播", message), 0);
    EXPECT_EQ(message, "");
    const auto reminders = platform().roomSettings().reminders();
    ASSERT_EQ(reminders.size(), 1u);
    EXPECT_EQ(reminders[0].title, u8"今晚八点开播");

    EXPECT_EQ(service().sendLiveRemindCustom("", message), 4203);
    EXPECT_EQ(message, u8"提醒标题不能为空");
}

TEST_F(RoomSettingsService, CreatedRoomIsTheAccountsRoom) {
    service().logout();
    std::string error, token;
    ASSERT_EQ(service().login("sparse", "secret789", error, token), 0) << error;
    service().refreshRoomInfo();
    ASSERT_EQ(service().getRoomId(), -1);

    ASSERT_EQ(service().createLiveRoom(207, -3), 0);
    EXPECT_EQ(service().getRoomId(), 880101);
    service().refreshRoomInfo();
    EXPECT_EQ(service().getRoomId(), 880101);

    EXPECT_EQ(service().createLiveRoom(207, 1), 4202);
    EXPECT_EQ(service().getRoomId(), 880101);
}

TEST_F(RoomSettingsService, StatisticsGrowOnlyWhileLiveAndNeedASession) {
    tolvane::sim::SimLiveStatistics start;
    start.mh = 5000000000;  // beyond 32 bits
    start.bancount = 2;
    platform().roomSettings().setStatistics(kAnchorRoom, start);
    LivingStatistics first, second;
    ASSERT_EQ(service().getLivingStatisticalInfo(first), 0);
    EXPECT_EQ(first.mh, 5000000000);
    EXPECT_EQ(first.bancount, 2);
    ASSERT_EQ(service().getLivingStatisticalInfo(second), 0);
    EXPECT_EQ(second.mh, first.mh);

    platform().setLive(true);
    ASSERT_EQ(service().getLivingStatisticalInfo(first), 0);
    ASSERT_EQ(service().getLivingStatisticalInfo(second), 0);
    EXPECT_GT(second.mh, first.mh);
    EXPECT_GT(second.ld, first.ld);
    EXPECT_GT(service().getLivingStatistic(), static_cast<double>(second.mh));

    // Without a session nothing is sent.
    const std::size_t sent = requestsTo(kStatistics).size();
    service().logout();
    EXPECT_EQ(service().getLivingStatisticalInfo(first), 220);
    EXPECT_EQ(service().getLivingStatistic(), 0.0);
    EXPECT_EQ(requestsTo(kStatistics).size(), sent);
    EXPECT_TRUE(mainLogHas(QStringLiteral("getLivingStatisticalInfo:{token is empty}")));
}

}  // namespace

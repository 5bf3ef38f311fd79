#include <gtest/gtest.h>

#include "parse/reply_texts.h"
#include "support/log_reader.h"
#include "support/sim_service_fixture.h"

namespace {

using tolvane::sim::SimFault;
using tolvane::sim::SimRequest;

constexpr int kRoom = kAnchorRoom;
const char kCorners[] = "/api/v1/get_corner";
const char kVideoSettings[] = "/api/videoPartner/getVideoSettingInfo";
const char kPresets[] = "/api/videoPartner/bitrate_config";
const char kCreateRoom[] = "/mgapi/livenc/anchor/createLiveRoom";
const char kRemind[] = "/api/applivecompanion/remind";
const char kStatistics[] = "/api/videoPartner/livinginfo";

// "key=value ..." in arrival order, with the values that change on every run named instead.
std::string placed(const tolvane::sim::SimPairs& pairs) {
    std::string text;
    for (const auto& [key, value] : pairs) {
        const bool varies = key == "token" || key == "time" || key == "auth";
        text += key + "=" + (varies ? key : value) + " ";
    }
    return text;
}

class RoomSettingsService : public AnchorRoomSimServiceTest {
protected:
    // The one request the last call sent to `path`, checked for its signature.
    SimRequest sentTo(const char* path) {
        const SimRequest sent = lastRequestTo(path);
        EXPECT_TRUE(sent.authOk) << sent.signingText;
        return sent;
    }
};

TEST_F(RoomSettingsService, VideoSettingsFollowThePlatformAndItsCategory) {
    std::string message;
    ASSERT_EQ(service().setLiveClassify(201, 2011, message), 0) << message;
    LiveRoomParameter parameter;
    ASSERT_EQ(service().getLiveRoomParameter(parameter), 0);
    EXPECT_EQ(placed(sentTo(kVideoSettings).form), "token=token ");
    EXPECT_EQ(placed(sentTo(kVideoSettings).query), "aid=vxtool time=time auth=auth ");
    EXPECT_EQ(parameter.roomName + u"|" + parameter.newTitle + u"|" + parameter.cate2Name + u"|" +
                  parameter.cate3Name,
              u"Lantern's late show|Endgame night|Singing|Karaoke");
    EXPECT_EQ(std::to_string(parameter.roomId) + "|" + std::to_string(parameter.cate1Id) + "|" +
                  std::to_string(parameter.cate3Id) + "|" + std::to_string(parameter.credit),
              "880001|2|2011|12");
    // The room information names the same category.
    service().refreshRoomInfo();
    RoomSummary room;
    service().getRoomRecord(room);
    EXPECT_EQ(room.gameName + "/" + room.childName, "Singing/Karaoke");

    platform().roomSettings().updateVideoSettings(
        kRoom, [](tolvane::sim::SimVideoSettings& settings) { settings.credit.reset(); });
    ASSERT_EQ(service().getLiveRoomParameter(parameter), 0);
    EXPECT_EQ(parameter.credit, -1);
}

TEST_F(RoomSettingsService, CornersAndBitratePresets) {
    struct Case {
        std::vector<int> corners;
        int32_t mask;
    };
    for (const Case& c : {Case{{3, 4}, 12}, Case{{}, 0}, Case{{4, 1, 2, 3}, 15}}) {
        platform().roomSettings().setCorners(kRoom, c.corners);
        EXPECT_EQ(service().getWatermarkLocation(), c.mask);
    }
    // Public: the room id alone, unsigned.
    EXPECT_EQ(placed(sentTo(kCorners).query), "room_id=880001 ");

    std::vector<BitrateConfig> presets;
    ASSERT_EQ(service().getIntelligentSettingConfig(presets), 0);
    EXPECT_EQ(placed(sentTo(kPresets).query), "aid=vxtool time=time auth=auth ");
    ASSERT_EQ(presets.size(), 4u);
    EXPECT_EQ(presets[1].cate2Name + " " + std::to_string(presets[1].typeFlag), "Singing 1");
}

TEST_F(RoomSettingsService, ReminderKeepsItsItemsInOrder) {
    std::string message = "before";
    ASSERT_EQ(service().sendLiveRemindCustom(u8"今晚八点开播", message), 0);
    EXPECT_EQ(message, "");
    const SimRequest sent = sentTo(kRemind);
    EXPECT_EQ(placed(sent.form), u8"remind_title=今晚八点开播 client_version=1 token=token ");
    EXPECT_EQ(placed(sent.query), "aid=vxtool time=time auth=auth ");
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
    const SimRequest sent = sentTo(kCreateRoom);
    EXPECT_EQ(placed(sent.form), "token=token tag_id=207 id=-3 ");
    EXPECT_EQ(placed(sent.query), "aid=vxtool client_sys=pc time=time auth=auth ");
    EXPECT_EQ(service().getRoomId(), 880101);
    service().refreshRoomInfo();
    EXPECT_EQ(service().getRoomId(), 880101);

    EXPECT_EQ(service().createLiveRoom(207, 1), 4202);
    EXPECT_EQ(service().getRoomId(), 880101);
}

TEST_F(RoomSettingsService, StatisticsGrowOnlyWhileLive) {
    tolvane::sim::SimLiveStatistics start;
    start.mh = 5000000000;  // beyond 32 bits
    start.bancount = 2;
    platform().roomSettings().setStatistics(kRoom, start);
    LivingStatistics first, second;
    ASSERT_EQ(service().getLivingStatisticalInfo(first), 0);
    EXPECT_EQ(placed(sentTo(kStatistics).form), "token=token rid=880001 ");
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
}

TEST_F(RoomSettingsService, StatisticsWithoutASessionSendNothing) {
    service().logout();
    LivingStatistics statistics;
    EXPECT_EQ(service().getLivingStatisticalInfo(statistics), 220);
    EXPECT_EQ(service().getLivingStatistic(), 0.0);
    EXPECT_TRUE(requestsTo(kStatistics).empty());
    EXPECT_TRUE(readLogMessages(tolvane::log::kMainLog)
                    .contains(QStringLiteral("getLivingStatisticalInfo:{token is empty}")));
}

TEST_F(RoomSettingsService, NoAnswerIs210ForEveryShape) {
    for (const char* path :
         {kCorners, kVideoSettings, kPresets, kCreateRoom, kRemind, kStatistics}) {
        sim().http().setFault(path, SimFault::httpStatus(502));
    }
    EXPECT_EQ(service().getWatermarkLocation(), 210);
    LiveRoomParameter parameter;
    EXPECT_EQ(service().getLiveRoomParameter(parameter), 210);
    EXPECT_EQ(parameter.credit, -1);
    std::vector<BitrateConfig> presets;
    EXPECT_EQ(service().getIntelligentSettingConfig(presets), 210);
    EXPECT_EQ(service().createLiveRoom(207, 1), 210);
    EXPECT_EQ(service().getRoomId(), kRoom);
    std::string message;
    EXPECT_EQ(service().sendLiveRemindCustom("title", message), 210);
    EXPECT_EQ(message, tolvane::kNetworkFailureText);
    EXPECT_EQ(service().getLivingStatistic(), 0.0);

    // An answer, even one carrying the server code 210, is a mask: every corner.
    for (const char* body : {R"({"error":0})", R"({"error":210,"data":"busy"})"}) {
        sim().http().setFault(kCorners, SimFault::httpStatus(200, body));
        EXPECT_EQ(service().getWatermarkLocation(), 15) << body;
    }
}

}  // namespace

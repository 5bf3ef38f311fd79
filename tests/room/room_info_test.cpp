#include <gtest/gtest.h>

#include <QStringList>
#include <tuple>

#include "parse/data_parser.h"
#include "support/log_reader.h"
#include "support/parse_rows.h"
#include "support/replies.h"
#include "support/sim_service_fixture.h"

namespace {

using tolvane::sim::SimFault;

QString listText(const QList<ServerAddress>& servers) {
    QStringList parts;
    for (const ServerAddress& server : servers) {
        parts << server.ip + QLatin1Char('|') + QString::number(server.port);
    }
    return parts.join(QLatin1Char(','));
}

// Room servers are added after what the list held, gateway entries need a port; only an address
// that is no IP is logged.
TEST(RoomInfoParse, ServerEntries) {
    struct Case {
        bool gateway;
        const char* data;
        const char* expected;
        bool logsAbc;  // writes "invalid IP:abc  port:8601" and no other such line
    };
    // clang-format off
    const Case cases[] = {
        {false, R"({"servers":[{"ip":" 10.0.0.1 ","port":"8601"}]})", "1.1.1.1|1,10.0.0.1|8601",
         false},
        {false, R"({"servers":[{"ip":"10.0.0.2","port":8602}]})", "1.1.1.1|1,10.0.0.2|8602", false},
        {false, R"({"servers":[{"ip":"abc","port":"8601"}]})", "1.1.1.1|1", true},
        {false, R"({"servers":[{"ip":"","port":"1"},{"ip":"10.0.0.3"},7,{"ip":"::1","port":"90"},
                               {"ip":"10.0.0.4","port":"x"}]})",
         "1.1.1.1|1,::1|90,10.0.0.4|0", false},
        {false, "{}", "1.1.1.1|1", false},
        {true, R"({"iplist":[{"ip":"10.0.0.1","port":0},{"ip":"10.0.0.2"},
                             {"ip":"10.0.0.3","port":"8603"},{"ip":" 10.0.0.4 ","port":8604},
                             {"ip":"","port":1},"x"]})",
         "10.0.0.3|8603,10.0.0.4|8604", false},
        {true, R"({"iplist":[{"ip":"abc","port":8601},{"ip":"fe80::1","port":9}]})", "fe80::1|9",
         true},
        {true, "{}", "", false},
    };
    // clang-format on
    for (const Case& c : cases) {
        DataParser parser;
        QList<ServerAddress> servers;
        if (!c.gateway) {
            servers.append({QStringLiteral("1.1.1.1"), 1});
        }
        std::string message;
        const int before = readLogMessages(tolvane::log::kMainLog).filter("invalid IP:").size();
        const QByteArray reply = okReply(c.data);
        EXPECT_EQ(c.gateway ? parser.parseGatewayResult(reply, message, servers)
                            : parser.parseRoomInfoResult(reply, message, servers),
                  0)
            << c.data;
        EXPECT_EQ(listText(servers), QString::fromUtf8(c.expected)) << c.data;
        EXPECT_EQ(readLogMessages(tolvane::log::kMainLog).filter("invalid IP:").mid(before),
                  c.logsAbc ? QStringList{"invalid IP:abc  port:8601"} : QStringList())
            << c.data;
    }
}

// Every field in record order.
std::string fields(const RoomInfo& r) {
    return QStringLiteral("%1|%2|%3|%4|%5|%6|%7|%8|%9")
        .arg(r.roomId)
        .arg(r.vipId)
        .arg(r.anchorLevel)
        .arg(r.online)
        .arg(QString::fromStdString(r.roomName), QString::fromStdString(r.gameName),
             QString::fromStdString(r.childName), QString::fromStdString(r.ownerWeight))
        .arg(r.cateId)
        .toStdString();
}

TEST(RoomInfoParse, RoomFieldsAndDefaults) {
    DataParser parser;
    QList<ServerAddress> servers;
    std::string message;
    ASSERT_EQ(parser.parseRoomInfoResult(
                  okReply(R"({"room_id":"880001","vipId":3,"anchor_level":{"level":"21"},
                              "online":"1520","room_name":"夜场","game_name":"Chess",
                              "child_name":"Blitz","owner_weight":"12.5t","cate_id":12})"),
                  message, servers),
              0);
    const std::string full = u8"880001|3|21|1520|夜场|Chess|Blitz|12.5t|12";
    EXPECT_EQ(fields(parser.roomInfo()), full);

    // Failures keep everything as it was.
    const std::tuple<QByteArray, int, std::string> failures[] = {
        {R"({"error":0})", 1, "服务器数据异常"},
        {R"({"error":606,"data":"登录已失效"})", 220, "登录已失效"},
    };
    for (const auto& [reply, code, expected] : failures) {
        message.clear();
        EXPECT_EQ(parser.parseRoomInfoResult(reply, message, servers), code) << reply.constData();
        EXPECT_EQ(message, expected) << reply.constData();
        EXPECT_EQ(fields(parser.roomInfo()), full) << reply.constData();
    }

    // A sparse reply resets every field but the anchor level; a bad level text reads as 0.
    ASSERT_EQ(parser.parseRoomInfoResult(okReply("{}"), message, servers), 0);
    EXPECT_EQ(fields(parser.roomInfo()), "-1|0|21|0|||||0");
    ASSERT_EQ(parser.parseRoomInfoResult(okReply(R"({"anchor_level":{"level":"top"}})"), message,
                                         servers),
              0);
    EXPECT_EQ(parser.roomInfo().anchorLevel, 0);
    EXPECT_TRUE(servers.isEmpty());

    parser.reset();
    EXPECT_EQ(parser.roomInfo().roomId, -1);
}

// The flags are read from both starting values: a failure leaves "11 00", each as it was.
TEST(RoomInfoParse, BroadcastingFlags) {
    expectParsed(
        {
            {okReply(R"({"show_status":"1","roomShowType":3})"), 0, "11 11"},
            {okReply(R"({"show_status":"2","roomShowType":1})"), 0, "00 00"},
            {okReply(R"({"roomShowType":3})"), 0, "01 01"},
            {R"({"error":606,"data":"x"})", 220, "11 00"},
        },
        [](DataParser& parser, const QByteArray& reply, std::string& out) {
            bool live = false, showType = false;
            parser.parseIsRoomBroadcastingResult(reply, live, showType);
            bool liveFromTrue = true, showTypeFromTrue = true;
            const int result =
                parser.parseIsRoomBroadcastingResult(reply, liveFromTrue, showTypeFromTrue);
            out = {char('0' + liveFromTrue), char('0' + showTypeFromTrue), ' ', char('0' + live),
                   char('0' + showType)};
            EXPECT_EQ(parser.roomInfo().roomId, -1);  // the room is not loaded
            return result;
        });
}

TEST(EmotionListParse, WrappedAndBroken) {
    DataParser parser;
    ASSERT_EQ(parser.parseEmotionSeiyClassifyList(
                  R"(VXConfigCallback({"error":0,"data":{"white_cate2_list":[201,"x",311.0]}}))"),
              0);
    auto ids = [&parser] {
        std::vector<int> out;
        for (const CategoryNode& node : parser.emotionWhiteList()) {
            out.push_back(node.id);
            EXPECT_TRUE(node.name.empty());
        }
        return out;
    };
    EXPECT_EQ(ids(), (std::vector<int>{201, 0, 311}));

    struct Broken {
        QByteArray reply;
        QString logged;
    };
    const Broken broken[] = {
        {R"({"error":0,"data":{"white_cate2_list":[1]}})",
         QStringLiteral("VXConfigCallback({}) data error!")},
        {"cb([1,2])", QStringLiteral("parse data failed!")},
    };
    for (const Broken& b : broken) {
        EXPECT_EQ(parser.parseEmotionSeiyClassifyList(b.reply), 1) << b.reply.constData();
        EXPECT_TRUE(mainLogHas(b.logged)) << b.reply.constData();
        EXPECT_EQ(ids(), (std::vector<int>{201, 0, 311})) << b.reply.constData();
    }

    // A reply without the list empties it.
    EXPECT_EQ(parser.parseEmotionSeiyClassifyList(R"(cb({"error":0,"data":{}}))"), 0);
    EXPECT_TRUE(parser.emotionWhiteList().empty());
}

using RoomService = SimServiceTest;

TEST_F(RoomService, RoomInformationReachesTheAccessors) {
    // Before any room is known nothing refers to one and the gift tables refuse to load.
    EXPECT_EQ(service().getRoomId(), -1);
    EXPECT_EQ(service().loadGiftTables(), 1);
    login();

    service().refreshRoomInfo();
    EXPECT_EQ(sim().http().requestLog().to("/api/v1/my_room").size(), 1u);

    EXPECT_EQ(service().getRoomId(), 880001);
    EXPECT_EQ(service().getVipId(), 3);
    EXPECT_EQ(service().getAnchorLevel(), 21);
    RoomSummary room;
    service().getRoomRecord(room);
    EXPECT_EQ(std::to_string(room.roomId) + "|" + room.roomName + "|" + room.gameName + "|" +
                  room.childName + "|" + std::to_string(room.roomFlag) + "|" +
                  std::to_string(room.cateId),
              "880001|Lantern's late show|Chess|Blitz|0|12");
    EXPECT_EQ(room.roomUrl, sim().environment().origin() + "/880001");
    std::string url;
    EXPECT_TRUE(service().getRoomUrl(url));
    EXPECT_EQ(url, room.roomUrl);

    // Logging out forgets the room.
    service().logout();
    EXPECT_EQ(service().getRoomId(), -1);
}

// The gateway's servers come first; a gateway that fails in any way leaves the room's alone.
TEST_F(RoomService, GatewayServersComeBeforeRoomServers) {
    platform().setGatewayServers({{"127.0.0.1", 7001}, {"127.0.0.1", 7002}});
    platform().setRoomServers({{"127.0.0.2", 8001}});
    platform().setEmotionWhiteList({5, 6});
    login();
    const std::pair<SimFault, QString> cases[] = {
        {SimFault(), "127.0.0.1|7001,127.0.0.1|7002,127.0.0.2|8001"},
        {SimFault::httpStatus(500), "127.0.0.2|8001"},
        {SimFault::malformed(), "127.0.0.2|8001"},
        {SimFault::dropConnection(), "127.0.0.2|8001"},
        {SimFault::httpStatus(200, R"({"error":603,"data":"busy"})"), "127.0.0.2|8001"},
    };
    for (const auto& [fault, expected] : cases) {
        sim().http().setFault("/lapi/live/gateway/client2", fault);
        QList<ServerAddress> servers{{QStringLiteral("10.9.9.9"), 1}};  // replaced, not kept
        EXPECT_EQ(service().collectBarrageServers(servers), 0);
        EXPECT_EQ(listText(servers), expected);
    }
    EXPECT_TRUE(mainLogHas(QStringLiteral(R"(result data : {"error":603,"data":"busy"})")));
    std::vector<CategoryNode> whiteList;
    service().getStoredList(whiteList);
    ASSERT_EQ(whiteList.size(), 2u);
    EXPECT_EQ(whiteList[0].id, 5);
    EXPECT_EQ(whiteList[1].id, 6);

    // Without a session the room information fails, and so does the whole collection.
    service().logout();
    QList<ServerAddress> servers;
    EXPECT_EQ(service().collectBarrageServers(servers), 220);
}

}  // namespace

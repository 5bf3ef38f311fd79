#include <gtest/gtest.h>

#include <QStringList>

#include "barrage/barrage_server.h"
#include "support/log_reader.h"
#include "support/sim_service_fixture.h"

namespace {

using tolvane::sim::SimFault;
using tolvane::sim::SimServerAddress;

QString listText(const QList<ServerAddress>& servers) {
    QStringList parts;
    for (const ServerAddress& server : servers) {
        parts << server.ip + QLatin1Char('|') + QString::number(server.port);
    }
    return parts.join(QLatin1Char(','));
}

class RoomService : public SimServiceTest {
protected:
    void login() {
        std::string error, token;
        ASSERT_EQ(service().login("anchor", "secret123", error, token), 0) << error;
    }
    std::size_t requestsTo(const char* path) { return sim().http().requestLog().to(path).size(); }
};

TEST_F(RoomService, RoomInformationReachesTheAccessors) {
    // Before any room is known nothing refers to one and the gift tables refuse to load.
    EXPECT_EQ(service().getRoomId(), -1);
    EXPECT_EQ(service().loadGiftTables(), 1);
    login();
    EXPECT_EQ(service().loadGiftTables(), 1);

    service().refreshRoomInfo();
    const auto requests = sim().http().requestLog().to("/api/v1/my_room");
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_TRUE(requests[0].authOk) << requests[0].signingText;
    EXPECT_EQ(requests[0].formValue("biz_type"), "13");

    EXPECT_EQ(service().getRoomId(), 880001);
    EXPECT_EQ(service().getVipId(), 3);
    EXPECT_EQ(service().getAnchorLevel(), 21);
    EXPECT_EQ(service().loadGiftTables(), 0);
    RoomSummary room;
    service().getRoomRecord(room);
    EXPECT_EQ(room.roomId, 880001);
    EXPECT_EQ(room.roomUrl, sim().environment().origin() + "/880001");
    EXPECT_EQ(room.roomName, "Lantern's late show");
    EXPECT_EQ(room.gameName, "Chess");
    EXPECT_EQ(room.childName, "Blitz");
    EXPECT_EQ(room.roomFlag, 0);
    EXPECT_EQ(room.cateId, 12);
    std::string url;
    EXPECT_TRUE(service().getRoomUrl(url));
    EXPECT_EQ(url, room.roomUrl);

    // Logging out forgets the room.
    service().logout();
    EXPECT_EQ(service().getRoomId(), -1);
}

TEST_F(RoomService, GatewayServersComeBeforeRoomServers) {
    platform().setGatewayServers({{"127.0.0.1", 7001}, {"127.0.0.1", 7002}});
    platform().setRoomServers({{"127.0.0.2", 8001}});
    platform().setEmotionWhiteList({5, 6});
    login();

    QList<ServerAddress> servers{{QStringLiteral("10.9.9.9"), 1}};  // replaced, not kept
    EXPECT_EQ(service().collectBarrageServers(servers), 0);
    EXPECT_EQ(listText(servers), "127.0.0.1|7001,127.0.0.1|7002,127.0.0.2|8001");
    for (const auto& request : sim().http().requestLog().to("/lapi/live/gateway/client2")) {
        EXPECT_TRUE(request.authOk) << request.signingText;
    }
    std::vector<CategoryNode> whiteList;
    service().getStoredList(whiteList);
    ASSERT_EQ(whiteList.size(), 2u);
    EXPECT_EQ(whiteList[0].id, 5);
    EXPECT_EQ(whiteList[1].id, 6);
}

TEST_F(RoomService, FailedGatewayLeavesTheRoomServers) {
    platform().setGatewayServers({{"127.0.0.1", 7001}});
    platform().setRoomServers({{"127.0.0.2", 8001}});
    login();
    const SimFault faults[] = {SimFault::httpStatus(500), SimFault::malformed(),
                               SimFault::dropConnection(),
                               SimFault::httpStatus(200, R"({"error":603,"data":"busy"})")};
    for (const SimFault& fault : faults) {
        sim().http().setFault("/lapi/live/gateway/client2", fault);
        QList<ServerAddress> servers;
        EXPECT_EQ(service().collectBarrageServers(servers), 0);
        EXPECT_EQ(listText(servers), "127.0.0.2|8001");
    }
    EXPECT_TRUE(readLogMessages(tolvane::log::kMainLog)
                    .contains(QStringLiteral(R"(result data : {"error":603,"data":"busy"})")));

    // Without a session the room information fails, and so does the whole collection.
    service().logout();
    QList<ServerAddress> servers;
    EXPECT_EQ(service().collectBarrageServers(servers), 220);
}

TEST_F(RoomService, RoomStateFlags) {
    login();
    struct Case {
        bool live;
        int showType;
        bool expectedShowType;
    };
    const Case cases[] = {{true, 3, true}, {false, 3, true}, {true, 1, false}, {false, 0, false}};
    for (const Case& c : cases) {
        platform().setLive(c.live);
        platform().setShowType(c.showType);
        bool live = !c.live;
        bool showType = !c.expectedShowType;
        EXPECT_EQ(service().getRoomState(live, showType), 0);
        EXPECT_EQ(live, c.live);
        EXPECT_EQ(showType, c.expectedShowType);
    }
    // The state request does not load the room.
    EXPECT_EQ(service().getRoomId(), -1);
}

TEST_F(RoomService, ExpiredSessionRefreshesTheProfile) {
    login();
    service().logout();
    const std::size_t profileRequests = requestsTo("/api/v1/my_info");
    bool live = false;
    bool showType = false;
    EXPECT_EQ(service().getRoomState(live, showType), 220);
    EXPECT_EQ(requestsTo("/api/v1/my_info"), profileRequests + 1);

    // A request that gets no answer is not an expired session.
    sim().http().setFault("/api/v1/my_room", SimFault::httpStatus(503));
    EXPECT_EQ(service().getRoomState(live, showType), 210);
    EXPECT_EQ(requestsTo("/api/v1/my_info"), profileRequests + 1);
}

}  // namespace

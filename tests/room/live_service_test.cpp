#include <gtest/gtest.h>

#include <memory>

#include "support/log_reader.h"
#include "support/sim_service_fixture.h"

namespace {

using tolvane::sim::SimFault;
using tolvane::sim::SimLineListShape;
using tolvane::sim::SimLineRefusal;
using tolvane::sim::SimRoomLines;

constexpr int kRoom = kAnchorRoom;
const char kStartLive[] = "/mgapi/livenc/anchor/startLive";
const std::string kMainLine3 = "rtmp://push-c.tolvane.example/live/880001_c3?key=9f1e";
const std::string kH265Line12 = "rtmp://push-h.tolvane.example/live265/880001_h12?key=d00d";

// The arrays the service hands out, released the way a host releases them.
struct HandedOutLines {
    explicit HandedOutLines(VxNetServiceImp& service) : service_(service) {}
    ~HandedOutLines() {
        service_.freeArray(main);
        service_.freeArray(h265);
    }
    std::vector<std::pair<int, std::string>> list(const PushAddress* lines, int32_t n) const {
        std::vector<std::pair<int, std::string>> out;
        for (int32_t i = 0; lines != nullptr && i < n; ++i) {
            out.emplace_back(lines[i].id, lines[i].url);
        }
        return out;
    }
    PushAddress* main = nullptr;
    int32_t mainCount = 0;
    PushAddress* h265 = nullptr;
    int32_t h265Count = 0;

private:
    VxNetServiceImp& service_;
};

class LiveService : public LoggedInSimServiceTest {
protected:
    int32_t fetchLines(HandedOutLines& lines) {
        return service().get_all_rtmp_addresses(lines.main, lines.mainCount, lines.h265,
                                                lines.h265Count);
    }
    bool roomIsLive() {
        bool live = false, showType = false;
        EXPECT_EQ(service().getRoomState(live, showType), 0);
        return live;
    }
};

TEST_F(LiveService, GoesLiveOnAHandedOutLineAndCloses) {
    HandedOutLines lines(service());
    ASSERT_EQ(fetchLines(lines), 0);
    using Lines = std::vector<std::pair<int, std::string>>;
    const Lines main = lines.list(lines.main, lines.mainCount);
    ASSERT_EQ(main.size(), 3u);
    EXPECT_EQ(main[0], (std::pair<int, std::string>{3, kMainLine3}));
    EXPECT_EQ(lines.list(lines.h265, lines.h265Count).size(), 2u);
    std::vector<PushAddress> copy;
    EXPECT_TRUE(service().getRtmpAddressList(copy));
    ASSERT_EQ(copy.size(), 3u);
    EXPECT_EQ(copy[2].id, main[2].first);

    // An address the platform never handed out is refused before anything is sent.
    EXPECT_EQ(service().open_live_room("rtmp://elsewhere.example/live/x"), 1);
    EXPECT_TRUE(requestsTo(kStartLive).empty());

    LiveParameters parameters;
    parameters.room_live_type = 2;
    parameters.is_rtc = true;
    service().setLiveParameters(parameters);
    EXPECT_FALSE(roomIsLive());
    ASSERT_EQ(service().open_live_room(kMainLine3), 0);
    EXPECT_TRUE(roomIsLive());
    const auto started = requestsTo(kStartLive);
    ASSERT_EQ(started.size(), 1u);
    EXPECT_TRUE(started[0].authOk) << started[0].signingText;
    std::string order;
    for (const auto& [key, value] : started[0].form) {
        order += key + "=" + (key == "token" ? "T" : value) + " ";
    }
    EXPECT_EQ(order,
              "token=T client_sys=pc fms_val=fms-880001-7c2e rtmp_id=3 live_client_type=11 "
              "room_live_type=2 is_third_party_obs=0 is_rtc=1 is_hdr=0 ");
    // The token never travels as a header of the mobile service.
    EXPECT_EQ(started[0].header("token"), "");
    EXPECT_EQ(started[0].header("client_sys"), "pc");

    EXPECT_EQ(service().stop_live_room(), 0);
    EXPECT_FALSE(roomIsLive());
    // H.265 lines start the show too.
    EXPECT_EQ(service().open_live_room(kH265Line12), 0);
    EXPECT_EQ(requestsTo(kStartLive).back().formValue("rtmp_id"), "12");

    // Logging out forgets every line and the copy.
    service().logout();
    EXPECT_EQ(service().open_live_room(kMainLine3), 1);
    EXPECT_TRUE(service().getRtmpAddressList(copy));
    EXPECT_TRUE(copy.empty());
}

TEST_F(LiveService, CategoryAndModuleAreSentOnlyWhenSet) {
    struct Case {
        int32_t cid2, cid3, moduleId, isAudio;
        const char* expected;  // cid2|cid3|module_id|is_audio as the platform saw them
    };
    const Case cases[] = {
        {0, 121, 0, 0, "|||"},
        {12, 121, 0, 1, "12|121||1"},
        {0, 0, 7, 0, "||7|"},
        {12, 0, 7, 0, "12|0|7|"},
    };
    HandedOutLines lines(service());
    for (const Case& c : cases) {
        SCOPED_TRACE(c.expected);
        LiveParameters parameters;
        parameters.cid2 = c.cid2;
        parameters.cid3 = c.cid3;
        parameters.module_id = c.moduleId;
        parameters.is_audio = c.isAudio;
        service().setLiveParameters(parameters);
        service().freeArray(lines.main);
        service().freeArray(lines.h265);
        lines.main = lines.h265 = nullptr;
        ASSERT_EQ(fetchLines(lines), 0);
        ASSERT_EQ(service().open_live_room(kMainLine3), 0);
        const auto sent = requestsTo(kStartLive).back();
        const auto asked = platform().liveState().lastLineRequest(kRoom);
        ASSERT_TRUE(asked.has_value());
        EXPECT_EQ(asked->cid2 + "|" + asked->cid3 + "|" + asked->moduleId + "|" +
                      sent.formValue("is_audio"),
                  c.expected);
        EXPECT_EQ(sent.formValue("cid2") + "|" + sent.formValue("cid3") + "|" +
                      sent.formValue("module_id"),
                  asked->cid2 + "|" + asked->cid3 + "|" + asked->moduleId);
    }
}

TEST_F(LiveService, RefusalsAndUnusableLists) {
    struct Case {
        const char* name;
        std::function<void(SimRoomLines&)> change;
        int32_t expected;
        std::vector<std::string> mainUrls;  // what the main array holds afterwards
    };
    const Case cases[] = {
        {"refused for a time",
         [](SimRoomLines& room) {
             room.refusal = SimLineRefusal::roomClosed("maintenance", "2030-01-01 08:00", 1.5);
         },
         217,
         {"maintenance", "2030-01-01 08:00", "1.5"}},
        {"verification needed",
         [](SimRoomLines& room) {
             room.refusal =
                 SimLineRefusal::verificationNeeded("verify first", "https://v.example/x");
         },
         223,
         {}},
        // The plain list was handed out before the sorted one turned out empty.
        {"empty sorted list",
         [](SimRoomLines& room) { room.listSort = SimLineListShape::Empty; },
         1,
         {"rtmp://push-a.tolvane.example/live/880001_a1?key=41d0",
          "rtmp://push-b.tolvane.example/live/880001_b2?key=7a55", kMainLine3}},
        {"H.265 only",
         [](SimRoomLines& room) { room.list = room.listSort = SimLineListShape::Absent; },
         0,
         {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        platform().liveState().update(kRoom, [](SimRoomLines& room) {
            room.refusal = SimLineRefusal();
            room.list = room.listSort = room.h265List = SimLineListShape::Lines;
        });
        platform().liveState().update(kRoom, c.change);
        HandedOutLines lines(service());
        EXPECT_EQ(fetchLines(lines), c.expected);
        std::vector<std::string> urls;
        for (const auto& line : lines.list(lines.main, lines.mainCount)) {
            urls.push_back(line.second);
        }
        EXPECT_EQ(urls, c.mainUrls);
    }
    // After the H.265-only reply its lines still start the show.
    EXPECT_EQ(service().open_live_room(kH265Line12), 0);
    EXPECT_TRUE(readLogMessages(tolvane::log::kMainLog)
                    .contains("error Url: mgapi/livenc/anchor/getRtMpList"));
}

TEST_F(LiveService, RoomPushAddressJoinsTheLines) {
    std::string url;
    int32_t lineId = 0;
    ASSERT_EQ(service().get_rtmp_address(url, lineId), 0);
    EXPECT_EQ(lineId, 3);
    EXPECT_EQ(url, kMainLine3);

    // The room's own address is added to the lines handed out, not in place of them.
    HandedOutLines lines(service());
    ASSERT_EQ(fetchLines(lines), 0);
    platform().liveState().update(kRoom, [](SimRoomLines& room) {
        room.sendAddress = tolvane::sim::SimSendAddress{QJsonValue(2), "rtmp://other/live", "k"};
    });
    ASSERT_EQ(service().get_rtmp_address(url, lineId), 0);
    EXPECT_EQ(service().open_live_room(url), 0);
    EXPECT_EQ(requestsTo(kStartLive).back().formValue("rtmp_id"), "2");
    EXPECT_EQ(service().open_live_room(kMainLine3), 0);

    platform().liveState().update(kRoom, [](SimRoomLines& room) {
        room.sendAddress = tolvane::sim::SimSendAddress{QJsonValue("-1"), "rtmp://a/live/", "k"};
    });
    ASSERT_EQ(service().get_rtmp_address(url, lineId), 0);
    EXPECT_EQ(lineId, -1);
    EXPECT_EQ(url, "rtmp://a/live//k");
    platform().liveState().update(kRoom, [](SimRoomLines& room) {
        room.sendAddress = tolvane::sim::SimSendAddress{QJsonValue(4), "rtmp://a/live", ""};
    });
    EXPECT_EQ(service().get_rtmp_address(url, lineId), 1);
    EXPECT_EQ(url, "");
}

TEST_F(LiveService, StartIsSentOnceWhenTheConnectionDiesUnanswered) {
    HandedOutLines lines(service());
    ASSERT_EQ(fetchLines(lines), 0);  // leaves a kept connection to the mobile service
    sim().http().setFault(kStartLive, SimFault::closeBeforeReply().oneShot());
    EXPECT_EQ(service().open_live_room(kMainLine3), 210);
    EXPECT_EQ(requestsTo(kStartLive).size(), 1u);
    EXPECT_EQ(service().open_live_room(kMainLine3), 0);
}

TEST_F(LiveService, ExpiredSessionRefreshesTheProfileExceptOnClose) {
    HandedOutLines lines(service());
    ASSERT_EQ(fetchLines(lines), 0);
    service().logout();
    const auto profileRequests = [this] { return requestsTo("/api/v1/my_info").size(); };
    struct Case {
        const char* name;
        std::function<int32_t()> call;
        std::size_t refreshes;
    };
    const Case cases[] = {
        {"lines", [&] { return fetchLines(lines); }, 1},
        {"room address",
         [&] {
             std::string url;
             int32_t id = 0;
             return service().get_rtmp_address(url, id);
         },
         1},
        {"close", [&] { return service().stop_live_room(); }, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::size_t before = profileRequests();
        EXPECT_EQ(c.call(), 220);
        EXPECT_EQ(profileRequests(), before + c.refreshes);
    }
}

}  // namespace

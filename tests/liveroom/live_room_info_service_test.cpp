#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "barrage/barrage_texts.h"
#include "liveroom/vx_live_room_info.h"
#include "platform/sim_gift_catalogue.h"
#include "support/sim_service_fixture.h"
#include "support/wait.h"

namespace {

namespace catalogue = tolvane::sim::gift_catalogue;
using Records = std::vector<sim::BarrageConnectionRecord>;
using namespace std::chrono_literals;

constexpr const char* kTemplatePath = "/api/gift/v2/web/template";
constexpr const char* kPropListPath = "/api/prop/v1/web/list";
constexpr const char* kSingleGiftPath = "/api/gift/v2/web/single";
constexpr const char* kSinglePropPath = "/api/prop/v1/web/single";
constexpr int32_t kViewer = 2012;

// The host's catalogue observer: keeps what it heard as "table 0" or "room 880001" lines.
class RecordingSubject : public IVxDataSubject, public EventLog {
public:
    void onTableChanged(VxCatalogueTable table) override {
        add("table " + std::to_string(static_cast<int>(table)));
    }
    void onRoomChanged(int32_t roomId) override { add("room " + std::to_string(roomId)); }
};

bool resourcesLoaded(const IVxLiveRoomInfo& store) {
    for (int t = static_cast<int>(VxCatalogueTable::PropertyInfo); t < kVxCatalogueTableCount;
         ++t) {
        if (store.resources(static_cast<VxCatalogueTable>(t)).empty()) {
            return false;
        }
    }
    return true;
}

class LiveRoomInfoService : public LoggedInSimServiceTest {
protected:
    IVxLiveRoomInfo& store() { return *service().getLiveRoomInfo(); }
    RecordingSubject subject_;
};

// Slot 49 needs a room; the room information loads the room's catalogue, a failed template keeps
// it, and a logout empties the store behind the pointer the host holds.
TEST_F(LiveRoomInfoService, TheRoomInformationLoadsTheCatalogueAndLogoutEmptiesIt) {
    IVxLiveRoomInfo* const pointer = service().getLiveRoomInfo();
    ASSERT_NE(pointer, nullptr);
    EXPECT_EQ(service().loadGiftTables(), 1);
    EXPECT_TRUE(requestsTo(kTemplatePath).empty() && requestsTo(kPropListPath).empty());
    EXPECT_EQ(store().roomId(), -1);

    store().addObserver(&subject_);
    service().setClientVersion("00_11_22_33_44_55", "v3.1.0.0");
    service().refreshRoomInfo();
    EXPECT_EQ(store().roomId(), kAnchorRoom);
    EXPECT_EQ(store().anchorLevel(), service().getAnchorLevel());
    EXPECT_EQ(store().vipId(), service().getVipId());
    EXPECT_EQ(store().clientVersion(), "v3.1.0.0");
    EXPECT_EQ(lastRequestTo(kTemplatePath).queryValue("rid"), std::to_string(kAnchorRoom));
    EXPECT_EQ(lastRequestTo(kPropListPath).queryValue("rid"), std::to_string(kAnchorRoom));
    ShortTokenInfo session;
    service().getLoginInfo(session);
    EXPECT_EQ(store().currentUserId(), std::stoi(session.uid));

    const std::vector<VxGiftRecord> gifts = store().gifts();
    ASSERT_EQ(gifts.size(), static_cast<std::size_t>(catalogue::templateGifts().size()));
    EXPECT_EQ(gifts.front().id, catalogue::kFirstTemplateGift);
    EXPECT_EQ(gifts.back().id, catalogue::kLastTemplateGift);
    VxGiftSkinRecord skin;
    ASSERT_TRUE(store().findGiftSkin(gifts.front().skinIds.at(0), skin));
    EXPECT_EQ(skin.giftId, catalogue::kFirstTemplateGift);
    VxPropRecord prop;
    EXPECT_TRUE(store().findProp(catalogue::kFirstListedProp, prop));
    EXPECT_FALSE(store().findProp(catalogue::kLateProp, prop));

    ASSERT_TRUE(waitUntil([&] { return resourcesLoaded(store()); }));
    VxResourceRecord noble;
    ASSERT_TRUE(store().findResource(VxCatalogueTable::NobleEffects, 2, noble));
    EXPECT_EQ(noble.name, "Viscount");
    EXPECT_TRUE(subject_.heard("room " + std::to_string(kAnchorRoom)));
    EXPECT_TRUE(subject_.heard("table 0"));
    EXPECT_TRUE(subject_.heard("table 7"));

    // The same room again is no change of room.
    subject_.clear();
    service().refreshRoomInfo();
    EXPECT_FALSE(subject_.heard("room " + std::to_string(kAnchorRoom)));
    sim().http().setFault(kTemplatePath, tolvane::sim::SimFault::httpStatus(500).oneShot());
    EXPECT_EQ(service().loadGiftTables(), 0);
    EXPECT_EQ(store().gifts().size(), gifts.size());

    subject_.clear();
    service().logout();
    EXPECT_EQ(service().getLiveRoomInfo(), pointer);
    EXPECT_EQ(pointer->roomId(), -1);
    EXPECT_EQ(pointer->currentUserId(), 0);
    EXPECT_TRUE(pointer->gifts().empty());
    EXPECT_TRUE(pointer->props().empty());
    EXPECT_TRUE(pointer->resources(VxCatalogueTable::FansMedals).empty());
    EXPECT_EQ(pointer->resolveSendValue(catalogue::kFirstTemplateGift, kVxSendGift, 1), 0);
    EXPECT_TRUE(subject_.heard("room -1"));
    EXPECT_TRUE(subject_.heard("table 0"));

    login();
    service().refreshRoomInfo();
    EXPECT_EQ(pointer->roomId(), kAnchorRoom);
    EXPECT_FALSE(pointer->gifts().empty());
    EXPECT_EQ(pointer->currentUserId(), std::stoi(session.uid));
    store().removeObserver(&subject_);
}

TEST_F(LiveRoomInfoService, TheBarrageStartDoesNotWaitForTheCatalogue) {
    sim().http().setFault(kTemplatePath, tolvane::sim::SimFault::delay(1500).oneShot());
    QElapsedTimer clock;
    clock.start();
    ASSERT_EQ(service().startBarrage(), 0);
    EXPECT_LT(clock.elapsed(), 1000);
    // A gift the template lists, seen in the barrage before the template arrived.
    BarrageMessage gift;
    gift.typeName = "gift";
    gift.rawText = "type=gift;gid=" + std::to_string(catalogue::kFirstTemplateGift) + ";";
    static_cast<VxLiveRoomInfo&>(store()).noteBarrageMessage(gift);
    ASSERT_TRUE(
        waitUntil([&] { return !store().gifts().empty() && !store().props().empty(); }, 5000))
        << "watchdog: waiting for the tables from the fetch thread";
    ASSERT_TRUE(waitUntil([&] { return !static_cast<VxLiveRoomInfo&>(store()).fetching(); }, 5000))
        << "watchdog: waiting for the fetch thread to go quiet";
    EXPECT_EQ(requestsTo(kTemplatePath).size(), 1u);
    EXPECT_EQ(requestsTo(kPropListPath).size(), 1u);
    EXPECT_TRUE(requestsTo(kSingleGiftPath).empty());
}

// A logged-in service with its barrage connection up and the room's catalogue loaded.
class CatalogueBarrage : public BarrageSimServiceTest {
protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(BarrageSimServiceTest::SetUp());
        ASSERT_NO_FATAL_FAILURE(login());
        ASSERT_NO_FATAL_FAILURE(startAndWait());
        // The start-up leaves the tables to the catalogue's fetch thread.
        ASSERT_TRUE(waitUntil([&] { return !store().gifts().empty() && !store().props().empty(); }))
            << "watchdog: waiting for the gift template and the prop list";
    }

    IVxLiveRoomInfo& store() { return *service_->getLiveRoomInfo(); }
    std::size_t requestsTo(const char* path) { return sim_->http().requestLog().to(path).size(); }
    std::string giftText(int32_t giftId, int32_t skinId = 0) {
        return sim::BarrageTexts::gift(server().nextSequence(), service_->getRoomId(), kViewer,
                                       "viewer12", giftId, 3, skinId);
    }
};

// A thousand messages a second name a gift the template lacks, which is slow to fetch.
TEST_F(CatalogueBarrage, AnUnknownGiftIsFetchedOnceWithoutHoldingUpTheFeed) {
    constexpr int kMessages = 1000;
    const int32_t lateGift = catalogue::kLateGift;
    VxGiftRecord gift;
    ASSERT_FALSE(store().findGift(lateGift, gift));
    sim_->http().setFault(kSingleGiftPath, tolvane::sim::SimFault::delay(4000));

    for (int i = 0; i < kMessages; ++i) {
        server().sendText(giftText(lateGift));
        if (i % 10 == 9) {
            std::this_thread::sleep_for(10ms);
        }
    }
    ASSERT_TRUE(waitUntil(
        [&] { return observer_.events("message gift").size() == std::size_t{kMessages}; }, 8000));
    EXPECT_FALSE(store().findGift(lateGift, gift)) << "the feed waited for the fetch";

    ASSERT_TRUE(waitUntil([&] { return store().findGift(lateGift, gift); }, 8000));
    EXPECT_EQ(gift.name, "Comet");
    EXPECT_EQ(requestsTo(kSingleGiftPath), 1u);
    const auto request = sim_->http().requestLog().to(kSingleGiftPath).front();
    EXPECT_EQ(request.queryValue("gid"), std::to_string(lateGift));
    EXPECT_EQ(request.queryValue("skinId"), "0");

    // Known now: more messages fetch nothing.
    server().sendText(giftText(lateGift));
    ASSERT_TRUE(waitUntil(
        [&] { return observer_.events("message gift").size() == std::size_t{kMessages + 1}; }));
    EXPECT_EQ(requestsTo(kSingleGiftPath), 1u);
}

// How often and how late a key is retried is the fetch queue's; here a refused fetch is one.
TEST_F(CatalogueBarrage, UnknownSkinsAndPropsAreFetchedTooAndARefusedFetchIsRetried) {
    RecordingSubject subject;
    store().addObserver(&subject);
    sim_->http().setFault(kSinglePropPath, tolvane::sim::SimFault::httpStatus(503).oneShot());
    // Gift 100 is in the template, but skin 1061 belongs to a gift it lacks.
    server().sendText(giftText(catalogue::kFirstTemplateGift));
    server().sendText(giftText(catalogue::kLateGift, 1061));
    server().sendText(sim::BarrageTexts::prop(server().nextSequence(), service_->getRoomId(),
                                              kViewer, "viewer12", catalogue::kLateProp, 1));
    VxGiftSkinRecord skin;
    VxPropRecord prop;
    ASSERT_TRUE(waitUntil(
        [&] {
            return store().findGiftSkin(1061, skin) && store().findProp(catalogue::kLateProp, prop);
        },
        5000));
    EXPECT_EQ(skin.giftId, catalogue::kLateGift);
    EXPECT_EQ(prop.name, "Lucky charm");
    EXPECT_EQ(requestsTo(kSingleGiftPath), 1u);
    EXPECT_EQ(sim_->http().requestLog().to(kSingleGiftPath).front().queryValue("skinId"), "1061");
    EXPECT_EQ(sim_->http().requestLog().to(kSinglePropPath).back().queryValue("pid"),
              std::to_string(catalogue::kLateProp));
    EXPECT_EQ(requestsTo(kSinglePropPath), 2u);
    EXPECT_TRUE(subject.heard("table 0"));
    EXPECT_TRUE(subject.heard("table 2"));
    store().removeObserver(&subject);
}

TEST_F(CatalogueBarrage, AFetchUnderWayAtLogoutStoresNothing) {
    sim_->http().setFault(kSingleGiftPath, tolvane::sim::SimFault::delay(800));
    server().sendText(giftText(catalogue::kLateGift));
    ASSERT_TRUE(waitUntil([&] { return requestsTo(kSingleGiftPath) == 1; }));
    service_->logout();
    ASSERT_TRUE(waitUntil([&] { return !static_cast<VxLiveRoomInfo&>(store()).fetching(); }));
    VxGiftRecord gift;
    EXPECT_FALSE(store().findGift(catalogue::kLateGift, gift));
    EXPECT_TRUE(store().gifts().empty());
}

// What slot 26 puts on the wire, as the barrage server receives it.
TEST_F(CatalogueBarrage, SlotTwentySixSendsTheCataloguesValue) {
    // Rocket costs 500, the Noble pass 100; 999 is unknown, kind 7 is no kind.
    const struct {
        int32_t id, kind, count, value;
    } cases[] = {{103, kVxSendGift, 3, 1500},
                 {301, kVxSendProp, 2, 200},
                 {999, kVxSendGift, 1, 0},
                 {103, 7, 1, 0}};
    const std::string room = std::to_string(service_->getRoomId());
    for (const auto& c : cases) {
        service_->barrageLoginCall(c.id, c.kind, c.count);
    }
    ASSERT_TRUE(server().waitUntil(
        [&](const Records& r) { return !r.empty() && r[0].gifts.size() == std::size(cases); }, 5s));
    const std::vector<std::string> sent = server().connections()[0].gifts;
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        const auto& c = cases[i];
        EXPECT_EQ(sent[i], "type=giftsend;ga1=1;ga2=" + room + ";ga3=2;ga4=" +
                               std::to_string(c.value) + ";ga5=" + std::to_string(c.id) +
                               ";ga6=" + std::to_string(c.count) + ";ga7=;");
    }

    // Without a barrage client nothing is sent.
    service_->logout();
    service_->barrageLoginCall(103, kVxSendGift, 1);
    std::this_thread::sleep_for(200ms);
    EXPECT_EQ(server().connections()[0].gifts.size(), std::size(cases));
}

}  // namespace

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <string>
#include <vector>

#include "liveroom/recording_subject.h"
#include "liveroom/vx_live_room_info.h"
#include "platform/sim_gift_catalogue.h"
#include "support/sim_service_fixture.h"
#include "support/wait.h"

namespace {

namespace catalogue = tolvane::sim::gift_catalogue;

constexpr const char* kTemplatePath = "/api/gift/v2/web/template";
constexpr const char* kPropListPath = "/api/prop/v1/web/list";

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
    EXPECT_TRUE(requestsTo("/api/gift/v2/web/single").empty());
}

}  // namespace

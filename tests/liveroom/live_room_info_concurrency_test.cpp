#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "barrage/barrage_texts.h"
#include "liveroom/vx_live_room_info.h"
#include "net/vx_net_request.h"
#include "parse/data_parser.h"
#include "platform/sim_platform.h"
#include "support/scoped_env.h"

namespace {

using namespace std::chrono_literals;

// Reads every table and the room values; returns a checksum so nothing is optimised away.
int64_t readEverything(IVxLiveRoomInfo& store, int32_t id) {
    int64_t sum = 0;
    VxGiftRecord gift;
    VxPropRecord prop;
    VxGiftSkinRecord skin;
    VxResourceRecord record;
    sum += store.findGift(id, gift) ? gift.price + static_cast<int64_t>(gift.name.size()) : 0;
    sum += store.findProp(300 + id % 8, prop) ? prop.price : 0;
    sum += store.findGiftSkin(1001, skin) ? skin.giftId : 0;
    sum += store.findResource(VxCatalogueTable::FansMedals, 1, record) ? 1 : 0;
    sum += static_cast<int64_t>(store.gifts().size() + store.props().size());
    sum += static_cast<int64_t>(store.resources(VxCatalogueTable::PropertyInfo).size());
    sum += store.resolveSendValue(100, kVxSendGift, 2);
    sum += store.roomId() + store.currentUserId() + store.anchorLevel();
    return sum + static_cast<int64_t>(store.clientVersion().size());
}

struct ReadingSubject : IVxDataSubject {
    explicit ReadingSubject(IVxLiveRoomInfo& reading) : store(reading) {}
    void onTableChanged(VxCatalogueTable) override { sum += readEverything(store, 106); }
    void onRoomChanged(int32_t roomId) override { sum += roomId; }
    IVxLiveRoomInfo& store;
    std::atomic<int64_t> sum{0};
};

// The service, barrage (and so fetch) and host threads use the tables at once: under TSan this
// is the check that every table is properly locked.
TEST(LiveRoomInfoConcurrency, WritersAndReadersOnManyThreads) {
    IsolatedWorkspace workspace;
    tolvane::sim::SimPlatform sim(workspace.path());
    ASSERT_TRUE(sim.start());
    VxNetRequest request(0, nullptr);
    DataParser parser;
    VxLiveRoomInfo store(&request, &parser);
    std::atomic<bool> running{true};
    std::atomic<int64_t> checksum{0};

    std::vector<std::thread> threads;
    threads.emplace_back([&] {  // the service
        VxGiftRecord gift;
        gift.id = gift.price = 100;
        gift.name = "gift 100";
        VxGiftSkinRecord skin;
        skin.id = 1001;
        skin.giftId = 100;
        VxPropRecord prop;
        prop.id = 300;
        prop.price = 1;
        for (int round = 0; running; ++round) {
            store.storeGifts({gift}, {skin});
            store.storeProps({prop});
            store.setCurrentUserId(round);
            store.setClientVersion("v" + std::to_string(round));
            if (round % 5 == 0) {
                store.loadResourceFiles();
            }
            if (round % 7 == 0) {
                store.clear();
            }
            std::this_thread::sleep_for(1ms);
        }
    });
    for (int t = 0; t < 2; ++t) {  // barrage threads
        threads.emplace_back([&, t] {
            for (int i = 0; running; ++i) {
                BarrageMessage message;
                const bool gift = (i + t) % 2 == 0;
                message.typeName = gift ? "gift" : "prop";
                message.rawText = gift ? sim::BarrageTexts::gift(i, 1, 2, "v", 100 + i % 8, 1)
                                       : sim::BarrageTexts::prop(i, 1, 2, "v", 300 + i % 6, 1);
                store.noteBarrageMessage(message);
                std::this_thread::sleep_for(200us);
            }
        });
    }
    for (int t = 0; t < 2; ++t) {  // host threads
        threads.emplace_back([&, t] {
            ReadingSubject subject(store);
            for (int i = 0; running; ++i) {
                if (i % 50 == 0) {
                    store.addObserver(&subject);
                } else if (i % 50 == 25) {
                    store.removeObserver(&subject);
                }
                checksum += readEverything(store, 100 + (i + t) % 8);
            }
            store.removeObserver(&subject);
            checksum += subject.sum.load();
        });
    }
    std::this_thread::sleep_for(1500ms);
    running = false;
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_NE(checksum.load(), 0);
    // Whatever the interleaving, a final refill leaves exactly what was stored.
    store.storeGifts({}, {});
    EXPECT_TRUE(store.gifts().empty());
}

}  // namespace

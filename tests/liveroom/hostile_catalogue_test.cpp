// A Qt GUI host hands each catalogue callback to its GUI thread, the service's, and waits.
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <atomic>
#include <functional>
#include <string>

#include "http/sim_records.h"
#include "liveroom/vx_live_room_info.h"
#include "support/blocking_host.h"
#include "support/sim_service_fixture.h"
#include "support/wait.h"
#include "support/watchdog.h"
#include "tolvane/async_net_service.h"

namespace {

using tolvane::sim::SimFault;

class HandingOverSubject : public IVxDataSubject {
public:
    void onTableChanged(VxCatalogueTable) override { handOver(); }
    void onRoomChanged(int32_t) override { handOver(); }
    void handOver() {
        ++calls;
        gui.handOver();
    }

    BlockingHandOver gui;  // the test thread plays the GUI thread
    std::atomic<int> calls{0};
};

class BlockingCatalogueObserver : public AnchorRoomSimServiceTest {
protected:
    void TearDown() override {
        Watchdog watchdog("tearing the service down");
        AnchorRoomSimServiceTest::TearDown();
    }

    IVxLiveRoomInfo& store() { return *service().getLiveRoomInfo(); }
    VxLiveRoomInfo& catalogue() { return static_cast<VxLiveRoomInfo&>(store()); }

    // Registers the observer once the room's first load is over, then has slot 49 queue the
    // resource files, whose callbacks on the fetch thread wait for this thread, left unserved.
    void startWaitingCallback() {
        ASSERT_TRUE(waitUntil([&] { return !catalogue().fetching(); }));
        store().addObserver(&subject_);
        {
            Watchdog watchdog("slot 49 (loadGiftTables) starting the resource fetches");
            ASSERT_EQ(service().loadGiftTables(), 0);
        }
        ASSERT_TRUE(subject_.gui.waitUntilWaiting())
            << "no catalogue callback came from the fetch thread";
    }

    // Runs a step on this thread while a catalogue callback on the fetch thread waits for it.
    void whileACallbackWaits(const std::string& where, const std::function<void()>& step) {
        ASSERT_NO_FATAL_FAILURE(startWaitingCallback());
        Watchdog watchdog(where + " while a catalogue callback waited for its thread");
        step();
    }
    void release() { service_.release()->release(); }

    HandingOverSubject subject_;
};

// Each step returns, and the waiting callback is served; once removeObserver returns, no
// callback runs or starts, though the other resource files still load and change tables.
TEST_F(BlockingCatalogueObserver, ReloadRemovalAndLogoutGoOnWhileACallbackWaits) {
    ASSERT_NO_FATAL_FAILURE(whileACallbackWaits("slot 49", [&] { service().loadGiftTables(); }));
    EXPECT_TRUE(waitUntil([&] { return subject_.gui.waiting() == 0; }));
    store().removeObserver(&subject_);

    ASSERT_NO_FATAL_FAILURE(
        whileACallbackWaits("removeObserver()", [&] { store().removeObserver(&subject_); }));
    EXPECT_EQ(subject_.gui.waiting(), 0);
    const int calls = subject_.calls.load();
    ASSERT_TRUE(waitUntil([&] { return !catalogue().fetching(); }));
    EXPECT_EQ(subject_.calls.load(), calls);

    ASSERT_NO_FATAL_FAILURE(whileACallbackWaits("slot 36", [&] { service().logout(); }));
    EXPECT_TRUE(waitUntil([&] { return subject_.gui.waiting() == 0; }));
    store().removeObserver(&subject_);
}

TEST_F(BlockingCatalogueObserver, ReleaseServesAWaitingCallback) {
    ASSERT_NO_FATAL_FAILURE(whileACallbackWaits("slot 25", [&] { release(); }));
    EXPECT_EQ(subject_.gui.waiting(), 0);
}

ILiveencoderNetService* createService(ServiceObserver* observer, BreadcrumbSink* sink) {
    return new VxNetServiceImp(observer, sink);
}

// The GUI thread destroys the facade while a callback on the service thread waits for it.
TEST_F(BlockingCatalogueObserver, AsyncNetServiceDestructionServesACallbackWaitingForIt) {
    auto net = std::make_unique<tolvane::AsyncNetService>(&createService, nullptr, nullptr);
    net->post([this](ILiveencoderNetService& service) {
        std::string error, token;
        service.login("anchor", "secret123", error, token);
        service.getLiveRoomInfo()->addObserver(&subject_);
        service.refreshRoomInfo();
    });
    ASSERT_TRUE(subject_.gui.waitUntilWaiting());
    Watchdog watchdog("~AsyncNetService while a catalogue callback waited for its thread");
    net.reset();
}

// Everything the service has in flight on other threads is aborted, not waited out.
TEST_F(BlockingCatalogueObserver, StopAndReleaseDoNotWaitForHeldTransfers) {
    const char* const held[] = {"/resource/common/property_info.json", "/api/v1/timestamp"};
    for (const char* path : held) {
        sim().http().setFault(path, SimFault::delay(8000));
    }
    const std::size_t seen = requestsTo(held[0]).size() + requestsTo(held[1]).size();
    ASSERT_EQ(service().loadGiftTables(), 0);
    service().startServerTimeSync();
    ASSERT_TRUE(waitUntil([&] {
        return requestsTo(held[0]).size() + requestsTo(held[1]).size() >= seen + 2;
    })) << "the simulator never held both transfers";

    QElapsedTimer elapsed;
    elapsed.start();
    {
        Watchdog watchdog("stop() and release() with transfers held by the simulator");
        service().stop();
        release();
    }
    EXPECT_LT(elapsed.elapsed(), 1000);
}

}  // namespace

#include <gtest/gtest.h>

#include <QDateTime>
#include <string>
#include <vector>

#include "log/log_writer.h"
#include "service/vx_net_service_imp.h"
#include "support/log_reader.h"
#include "support/recording_observer.h"
#include "support/scoped_env.h"

namespace {

// Made, a service writes two bare lines; stopped, it forwards nothing; destroyed, it says so last.
TEST(ServiceLifecycle, StopCutsTheObserverOffAndDestructionIsTheLastLine) {
    RecordingObserver observer;
    auto* service = new VxNetServiceImp(&observer, nullptr);
    EXPECT_EQ(readLogMessages(tolvane::log::kMainLog).mid(0, 2), QStringList({"", ""}));
    IRoomListener& listener = *service;
    BarrageMessage message;
    message.typeName = "chatmsg";
    // Every forwarding slot answers 0, with or without an observer to forward to.
    auto deliver = [&](int32_t status, const char* text) {
        EXPECT_EQ(listener.onRoomStatus(status) | listener.onHostText(text) |
                      listener.onShowEnd(2, 3) | listener.onBarrageMessage(&message),
                  0);
    };
    deliver(0, "hello");
    service->stop();
    deliver(213, "after stop");
    EXPECT_EQ(observer.events(), (std::vector<std::string>{"status 0", "text hello",
                                                           "end 2 3.000000", "message chatmsg"}));

    service->release();
    const QStringList lines = readLogMessages(tolvane::log::kMainLog);
    EXPECT_TRUE(lines.contains("call function: VxNetServiceImp::stop -----------------"));
    EXPECT_EQ(lines.last().toStdString(),
              "call function: VxNetServiceImp::~VxNetServiceImp -----------------");
}

// Values the service keeps or computes without a platform; the barrage tests show the rest.
TEST(ServiceLifecycle, LocalValues) {
    VxNetServiceImp service(nullptr, nullptr);
    static_cast<IRoomListener&>(service).onKeepAliveFirst(-5);
    EXPECT_EQ(service.getOnlineCount(), 0);
    // Before any synchronisation the server time is the local time.
    EXPECT_NEAR(static_cast<double>(service.getServerTime()),
                static_cast<double>(QDateTime::currentSecsSinceEpoch()), 1.0);

    const struct {
        bool obs, rtc, hdr;
        int32_t packed;
    } packs[] = {
        {true, false, false, 0x1}, {false, true, false, 0x100}, {true, true, true, 0x10101}};
    for (const auto& p : packs) {
        LiveParameters parameters;
        parameters.is_third_party_obs = p.obs;
        parameters.is_rtc = p.rtc;
        parameters.is_hdr = p.hdr;
        EXPECT_EQ(service.setLiveParameters(parameters), p.packed);
    }
}

}  // namespace

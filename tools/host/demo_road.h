#pragma once

#include <QString>
#include <QTextStream>
#include <cstdint>
#include <functional>
#include <string>

#include "tolvane/i_liveencoder_net_service.h"

class PrintingObserver;
namespace tolvane::sim {
class SimPlatform;
}  // namespace tolvane::sim

// The demo's walk along the broadcast road, one printed line per step. A step that fails
// marks the whole walk as failed, and the steps that depend on it are skipped.
class DemoRoad {
public:
    DemoRoad(ILiveencoderNetService& service, tolvane::sim::SimPlatform& sim,
             PrintingObserver& observer, QTextStream& out)
        : service_(service), sim_(sim), observer_(observer), out_(out) {}

    void run();
    bool failed() const { return failed_; }

    void step(const QString& name, const QString& result);
    // Prints `shown` for code 0, else the code and the module's message, as a failure.
    bool check(const QString& name, int32_t code, const std::string& message = std::string(),
               const QString& shown = QStringLiteral("ok"));
    // Prints `shown`, as a failure unless `met`.
    bool expect(const QString& name, bool met, const QString& shown);

    // Runs the event loop as a host's main loop would, until `done` or the time is up.
    static bool runEvents(int milliseconds, const std::function<bool()>& done = nullptr);

private:
    // demo.cpp: the account, the room and its barrage.
    bool logIn();
    bool showRoom();
    void followBarrage();
    // demo_qr_login.cpp: a QR login that the simulator confirms, then a logout.
    bool showQrLogin();

    // demo_catalogue.cpp: the room's gifts, props and resource files, and a gift sent.
    void showGiftCatalogue();
    void sendGift();

    // demo_live.cpp: category, tags, push lines and the show itself.
    void goLive();
    void showCategoryTree();
    bool pickCategory();
    bool pickTag();
    void showVoiceCheck();
    void setLiveParameters();
    bool listPushLines(PushAddress& firstMainLine);
    bool expectRoomLive(bool live);
    void awaitShowEnd();

    // demo_room_settings.cpp: what the anchor's panels show while the room is live.
    void showLiveRoomSettings(int32_t cid2);
    void showRoomParameter();
    void showFollowersAndGuild();
    void showWatermarkCorners();
    void showLiveStatistics();
    void showBitratePreset(int32_t cid2);

    ILiveencoderNetService& service_;
    tolvane::sim::SimPlatform& sim_;
    PrintingObserver& observer_;
    QTextStream& out_;
    bool failed_ = false;
};

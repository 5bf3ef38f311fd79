#include "platform/sim_platform.h"

#include "barrage/barrage_server.h"
#include "http/sim_builtin_routes.h"
#include "platform/sim_anchor_query_service.h"
#include "platform/sim_category_service.h"
#include "platform/sim_content_service.h"
#include "platform/sim_gift_catalogue.h"
#include "platform/sim_live_service.h"
#include "platform/sim_passport_service.h"
#include "platform/sim_room_service.h"
#include "platform/sim_room_settings_service.h"

namespace tolvane::sim {

SimPlatform::SimPlatform(const QString& folder, SimEnvironment::Options options)
    : environment_(folder, options) {
    addBuiltinRoutes(http().routes());
    addPassportRoutes(http(), state_);
    addContentRoutes(http(), state_);
    addRoomRoutes(http(), state_);
    addLiveRoutes(http(), state_);
    addCategoryRoutes(http(), state_);
    addFeedbackRoutes(http(), state_, feedback_);
    addAnchorQueryRoutes(http(), state_);
    addRoomSettingsRoutes(http(), state_);
    addGiftRoutes(http());
    state_.liveState().setShowEndedListener([this](int) { announceShowEnd(); });
}

SimPlatform::~SimPlatform() {
    stop();
}

bool SimPlatform::start() {
    return environment_.start();
}

void SimPlatform::stop() {
    environment_.stop();
}

bool SimPlatform::startBarrageServers(int count) {
    std::lock_guard<std::mutex> lock(barrageMutex_);
    for (int i = 0; i < count; ++i) {
        auto server = std::make_unique<::sim::BarrageServer>();
        if (server->port() == 0) {
            return false;
        }
        barrageServers_.push_back(std::move(server));
    }
    std::vector<SimServerAddress> addresses;
    for (const auto& server : barrageServers_) {
        addresses.push_back(SimServerAddress{::sim::BarrageServer::host(), server->port()});
    }
    state_.setGatewayServers(addresses);
    state_.setRoomServers(std::move(addresses));
    return true;
}

int SimPlatform::barrageServerCount() const {
    std::lock_guard<std::mutex> lock(barrageMutex_);
    return static_cast<int>(barrageServers_.size());
}

::sim::BarrageServer& SimPlatform::barrageServer(int index) {
    std::lock_guard<std::mutex> lock(barrageMutex_);
    return *barrageServers_.at(index);
}

void SimPlatform::announceShowEnd() {
    // Reason 1: the anchor closed the show; no ban.
    constexpr int32_t kClosedByAnchor = 1;
    std::lock_guard<std::mutex> lock(barrageMutex_);
    for (const auto& server : barrageServers_) {
        server->sendShowEnd(kClosedByAnchor, 0);
    }
}

}  // namespace tolvane::sim

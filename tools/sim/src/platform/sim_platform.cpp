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
#include "relay/sim_relay.h"

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
    const SimLinkShape& link = environment_.options().link;
    for (int i = 0; i < count; ++i) {
        auto server = std::make_unique<::sim::BarrageServer>();
        if (server->port() == 0) {
            return false;
        }
        if (link.relays()) {
            auto relay =
                std::make_unique<SimRelay>(::sim::BarrageServer::host(), server->port(), link);
            if (!relay->start()) {
                return false;
            }
            barrageRelays_.push_back(std::move(relay));
        }
        barrageServers_.push_back(std::move(server));
    }
    std::vector<SimServerAddress> addresses;
    for (std::size_t i = 0; i < barrageServers_.size(); ++i) {
        addresses.push_back(
            barrageRelays_.empty()
                ? SimServerAddress{::sim::BarrageServer::host(), barrageServers_[i]->port()}
                : SimServerAddress{SimRelay::host(), barrageRelays_[i]->port()});
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

const SimRelay* SimPlatform::barrageRelay(int index) const {
    std::lock_guard<std::mutex> lock(barrageMutex_);
    return barrageRelays_.empty() ? nullptr : barrageRelays_.at(index).get();
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

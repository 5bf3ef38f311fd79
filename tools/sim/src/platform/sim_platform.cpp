#include "platform/sim_platform.h"

#include "http/sim_builtin_routes.h"
#include "platform/sim_content_service.h"
#include "platform/sim_passport_service.h"

namespace tolvane::sim {

SimPlatform::SimPlatform(const QString& folder, SimEnvironment::Options options)
    : environment_(folder, options) {
    addBuiltinRoutes(http().routes());
    addPassportRoutes(http(), state_);
    addContentRoutes(http(), state_);
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

}  // namespace tolvane::sim

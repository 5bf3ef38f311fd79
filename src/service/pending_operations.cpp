// Operations whose subsystems have not landed yet: each writes its banner and reports
// failure, so a host can already be built and run against the whole interface.
#include "parse/result_codes.h"
#include "service/log_writer.h"
#include "service/vx_net_service_imp.h"

namespace {
constexpr int32_t kNotYetAvailable = tolvane::kNoAnswer;
}  // namespace

// slot 94
IVxLiveRoomInfo* VxNetServiceImp::getLiveRoomInfo() {
    return nullptr;
}

// Operations whose subsystems have not landed yet, so a host can already be built and run
// against the whole interface.
#include "service/vx_net_service_imp.h"

// slot 94
IVxLiveRoomInfo* VxNetServiceImp::getLiveRoomInfo() {
    return nullptr;
}

#include <new>

#include "service/vx_net_service_imp.h"

extern "C" TOLVANE_API ILiveencoderNetService* CreateNetService(ServiceObserver* observer,
                                                                BreadcrumbSink* breadcrumbSink) {
    auto* service = new (std::nothrow) VxNetServiceImp(observer, breadcrumbSink);
    return service;  // the ILiveencoderNetService sub-object
}

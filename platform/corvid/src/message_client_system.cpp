#include "corvid/message_client_system.h"

#include <atomic>

#include "vx_message_client.h"
#include "vx_message_decoder.h"

namespace {

std::atomic<int> startCount{0};

}  // namespace

bool StartupMessageClientSystem() {
    ++startCount;
    return true;
}

void ShutdownMessageClientSystem() {
    int count = startCount.load();
    while (count > 0 && !startCount.compare_exchange_weak(count, count - 1)) {
    }
}

MessageClient* CreateVxMessageClient() {
    return CreateVxMessageClientWithOptions(MessageClientOptions{});
}

MessageClient* CreateVxMessageClientWithOptions(const MessageClientOptions& options) {
    if (startCount.load() <= 0) {
        return nullptr;
    }
    return new corvid::VxMessageClient(options);
}

MessageDecoder* CreateVxMessageDecoder() {
    if (startCount.load() <= 0) {
        return nullptr;
    }
    return new corvid::VxMessageDecoder();
}

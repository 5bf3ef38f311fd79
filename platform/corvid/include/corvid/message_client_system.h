#pragma once

#include <cstdint>

#include "corvid/message_client.h"
#include "corvid/message_decoder.h"

// Timings and limits of a message client; the defaults suit a real server, tests shorten them.
struct MessageClientOptions {
    int32_t keepAliveIntervalMs = 15000;
    // Keep-alives sent without any answer before the connection counts as dead; 0 never.
    int32_t keepAliveMissLimit = 3;
    int32_t connectTimeoutMs = 10000;
    // Time from the login message to its reply.
    int32_t loginTimeoutMs = 10000;
    // Largest frame payload accepted from the server.
    uint32_t maxFramePayload = 64 * 1024;
};

// The library must be started before objects are made and shut down after the last one is
// freed; calls nest, so each start needs one shutdown. Objects are refused (null) while the
// library is not started.
bool StartupMessageClientSystem();
void ShutdownMessageClientSystem();

MessageClient* CreateVxMessageClient();
MessageClient* CreateVxMessageClientWithOptions(const MessageClientOptions& options);
MessageDecoder* CreateVxMessageDecoder();

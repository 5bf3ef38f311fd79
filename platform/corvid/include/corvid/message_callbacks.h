#pragma once

#include <cstddef>
#include <cstdint>

// The table of callbacks a user registers with a MessageClient. Its layout is a binary
// interface: 96 bytes, twelve 8-byte fields, the first holding the table's own size.
// Every callback runs on the client's I/O thread and receives the user data given at
// registration. Texts passed in are valid only for the duration of the call.

// A received message (one barrage text).
using OnMessageFn = void (*)(const char* message, void* userData);
// A keep-alive was answered. Returning true consumes the answer: it is then not passed on
// through OnMessageFn as well.
using OnKeepAliveFn = bool (*)(void* userData);
// The connection failed or broke; code is a MessageClientError, detail a readable text.
using OnErrorFn = void (*)(int32_t code, const char* detail, void* userData);
// The TCP connection to the server finished: code 0, or the socket's error number with
// failed set. port is the server's port, elapsedMs the time the attempt took.
using OnGateServerConnectFinishedFn = void (*)(int32_t code, int32_t port, int32_t elapsedMs,
                                               bool failed, void* userData);
// The login exchange on an open connection finished: code 0 when the login reply arrived,
// else a MessageClientError.
using OnRepeaterServerConnectFinishedFn = void (*)(int32_t code, const char* host, int32_t port,
                                                   int32_t elapsedMs, void* userData);
// A logged-in connection broke; code is a MessageClientError.
using OnRepeaterServerConnectAbortFn = void (*)(int32_t code, const char* details, const char* host,
                                                int32_t port, void* userData);
// The server's login reply (also passed on through OnMessageFn right after).
using OnRepeaterServerLoginReplyFn = void (*)(const char* reply, void* userData);

struct MessageCallbacks {
    uint64_t size = sizeof(MessageCallbacks);
    OnMessageFn onMessage = nullptr;
    OnKeepAliveFn onKeepAlive = nullptr;
    OnErrorFn onError = nullptr;
    void* unused32 = nullptr;
    void* unused40 = nullptr;
    OnGateServerConnectFinishedFn onGateServerConnectFinished = nullptr;
    OnRepeaterServerConnectFinishedFn onRepeaterServerConnectFinished = nullptr;
    void* unused64 = nullptr;
    void* unused72 = nullptr;
    OnRepeaterServerConnectAbortFn onRepeaterServerConnectAbort = nullptr;
    OnRepeaterServerLoginReplyFn onRepeaterServerLoginReply = nullptr;
};

static_assert(sizeof(MessageCallbacks) == 96, "callback table is 96 bytes");
static_assert(offsetof(MessageCallbacks, size) == 0);
static_assert(offsetof(MessageCallbacks, onMessage) == 8);
static_assert(offsetof(MessageCallbacks, onKeepAlive) == 16);
static_assert(offsetof(MessageCallbacks, onError) == 24);
static_assert(offsetof(MessageCallbacks, unused32) == 32);
static_assert(offsetof(MessageCallbacks, unused40) == 40);
static_assert(offsetof(MessageCallbacks, onGateServerConnectFinished) == 48);
static_assert(offsetof(MessageCallbacks, onRepeaterServerConnectFinished) == 56);
static_assert(offsetof(MessageCallbacks, unused64) == 64);
static_assert(offsetof(MessageCallbacks, unused72) == 72);
static_assert(offsetof(MessageCallbacks, onRepeaterServerConnectAbort) == 80);
static_assert(offsetof(MessageCallbacks, onRepeaterServerLoginReply) == 88);

#pragma once

#include <asio.hpp>
#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include "callback_table.h"
#include "corvid/message_client.h"
#include "corvid/message_client_system.h"
#include "outgoing_messages.h"
#include "server_connection.h"

namespace corvid {

// The client handed out by CreateVxMessageClient. Public operations only hand work to the
// I/O thread (in call order); the members marked for that thread are touched there alone,
// so they need no lock.
//
// A connection goes through two steps, each closed by its own callback: the gate step (TCP
// connect: "gate server connect finished") and the repeater step (login message and its
// reply: "repeater server connect finished"). A break after the login reply is an abort.
// Every failure ends with the error callback, once per connection.
class VxMessageClient final : public MessageClient, private ServerConnection::Events {
public:
    explicit VxMessageClient(const MessageClientOptions& options);

    bool setServerAddress(const char* host, int32_t port) override;
    bool login(const char* loginText1, int32_t loginNumber, const char* loginText2,
               int32_t clientType, int32_t roomId, const char* extraText,
               int32_t loginMode) override;
    bool registerCallbacks(const MessageCallbacks* callbacks, void* userData) override;
    void setParameterText(const char* text) override;
    void release() override;
    bool sendChatMessage(const char* text) override;
    bool sendRawMessage(const char16_t* message) override;
    bool sendGift(int32_t kind, int32_t roomId, int32_t mode, int32_t giftValue, int32_t giftId,
                  int32_t count, const char* extraText) override;
    int32_t requestMemberInfo(int32_t roomId) override;
    void setParameterNumberAndText(int32_t number, const char* text) override;
    bool sendKeepAliveNow() override;
    bool sendRoomText(const char* text) override;
    int32_t loginState() override;
    bool sendSubscription(const char16_t* message) override;
    void reset() override;

private:
    ~VxMessageClient();

    // ServerConnection::Events, on the I/O thread.
    void connected(ServerConnection& connection) override;
    void connectFailed(ServerConnection& connection, const std::error_code& error) override;
    void received(ServerConnection& connection, const char* payload, std::size_t size) override;
    void broken(ServerConnection& connection, int32_t code, const std::string& detail) override;

    // Hands a built payload to the I/O thread; false when it is empty or nothing is open.
    bool post(std::string payload);
    void closeCurrent();
    void failCurrent(int32_t code, const std::string& detail);
    void armKeepAlive();
    void onKeepAliveTimer();
    void shutdownOnIoThread();

    const MessageClientOptions options_;
    CallbackTable callbacks_;
    asio::io_context io_;
    asio::executor_work_guard<asio::io_context::executor_type> work_;

    // I/O thread only.
    std::string host_;
    uint16_t port_ = 0;
    LoginValues login_;
    std::shared_ptr<ServerConnection> current_;
    asio::steady_timer loginTimer_;
    asio::steady_timer keepAliveTimer_;
    int32_t keepAliveTick_ = 0;
    int32_t unanswered_ = 0;

    std::atomic<bool> serverSet_{false};
    std::atomic<bool> open_{false};
    std::atomic<bool> loggedIn_{false};
    std::atomic<bool> deleteOnExit_{false};
    std::thread thread_;
};

}  // namespace corvid

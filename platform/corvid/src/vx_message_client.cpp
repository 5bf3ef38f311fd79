#include "vx_message_client.h"

#include <QString>
#include <utility>

#include "corvid/message_codes.h"
#include "vxencoder/vx_wire_names.h"

namespace corvid {

namespace {

std::string textOrEmpty(const char* text) {
    return text != nullptr ? std::string(text) : std::string();
}

std::string utf16ToUtf8(const char16_t* text) {
    return QString::fromUtf16(text).toUtf8().toStdString();
}

std::string describeServer(const ServerConnection& connection) {
    return connection.host() + ":" + std::to_string(connection.port());
}

// "type=<name>;": a text whose first item is this type starts with it. Escaping leaves both
// names the client looks for as they are (neither holds "\\", "=" or ";"), so comparing the
// text's start is exact and spares every message decoding its first item.
std::string typePrefix(const char* name) {
    return std::string(vxwire::kType) + '=' + name + ';';
}

bool startsWith(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() && text.compare(0, prefix.size(), prefix) == 0;
}

}  // namespace

VxMessageClient::VxMessageClient(const MessageClientOptions& options)
    : options_(options),
      work_(asio::make_work_guard(io_)),
      loginTimer_(io_),
      keepAliveTimer_(io_),
      thread_([this] {
          io_.run();
          if (deleteOnExit_) {
              delete this;
          }
      }) {}

VxMessageClient::~VxMessageClient() = default;

bool VxMessageClient::setServerAddress(const char* host, int32_t port) {
    if (host == nullptr || *host == '\0' || port < 1 || port > 65535) {
        return false;
    }
    serverSet_ = true;
    asio::post(io_, [this, host = std::string(host), port] {
        host_ = host;
        port_ = static_cast<uint16_t>(port);
    });
    return true;
}

bool VxMessageClient::login(const char* loginText1, int32_t loginNumber, const char* loginText2,
                            int32_t clientType, int32_t roomId, const char* extraText,
                            int32_t loginMode) {
    if (!serverSet_) {
        return false;
    }
    LoginValues values;
    values.loginText1 = textOrEmpty(loginText1);
    values.loginNumber = loginNumber;
    values.loginText2 = textOrEmpty(loginText2);
    values.clientType = clientType;
    values.roomId = roomId;
    values.extraText = textOrEmpty(extraText);
    values.loginMode = loginMode;
    asio::post(io_, [this, values = std::move(values)]() mutable {
        closeCurrent();
        // The parameter values set through slots 5 and 21 travel with every login.
        values.parameterText = std::move(login_.parameterText);
        values.parameterNumber = login_.parameterNumber;
        values.parameterText2 = std::move(login_.parameterText2);
        login_ = std::move(values);
        current_ = std::make_shared<ServerConnection>(
            io_, static_cast<ServerConnection::Events&>(*this), host_, port_,
            std::chrono::milliseconds(options_.connectTimeoutMs), options_.maxFramePayload);
        current_->start();
    });
    return true;
}

bool VxMessageClient::registerCallbacks(const MessageCallbacks* callbacks, void* userData) {
    return callbacks_.set(callbacks, userData);
}

void VxMessageClient::setParameterText(const char* text) {
    asio::post(io_, [this, text = textOrEmpty(text)] { login_.parameterText = text; });
}

void VxMessageClient::setParameterNumberAndText(int32_t number, const char* text) {
    asio::post(io_, [this, number, text = textOrEmpty(text)] {
        login_.parameterNumber = number;
        login_.parameterText2 = text;
    });
}

void VxMessageClient::release() {
    // From here on no callback starts, and one that is running has returned.
    callbacks_.close();
    asio::post(io_, [this] { shutdownOnIoThread(); });
    if (std::this_thread::get_id() == thread_.get_id()) {
        // Released from inside a callback: the I/O thread can't join itself, so it frees the
        // client once its loop has ended.
        deleteOnExit_ = true;
        thread_.detach();
        return;
    }
    thread_.join();
    delete this;
}

void VxMessageClient::shutdownOnIoThread() {
    closeCurrent();
    work_.reset();
    io_.stop();
}

bool VxMessageClient::post(std::string payload) {
    if (payload.empty() || !open_) {
        return false;
    }
    asio::post(io_, [this, payload = std::move(payload)] {
        // A frame meant for a connection that has since closed is dropped, never sent on the
        // next one ahead of its login.
        if (current_ != nullptr) {
            current_->send(payload);
        }
    });
    return true;
}

bool VxMessageClient::sendChatMessage(const char* text) {
    return text != nullptr && post(buildChatMessage(text));
}

bool VxMessageClient::sendRoomText(const char* text) {
    return text != nullptr && post(buildRoomTextMessage(text));
}

bool VxMessageClient::sendRawMessage(const char16_t* message) {
    return message != nullptr && post(utf16ToUtf8(message));
}

bool VxMessageClient::sendSubscription(const char16_t* message) {
    return message != nullptr && post(utf16ToUtf8(message));
}

bool VxMessageClient::sendGift(int32_t kind, int32_t roomId, int32_t mode, int32_t giftValue,
                               int32_t giftId, int32_t count, const char* extraText) {
    const int32_t values[6] = {kind, roomId, mode, giftValue, giftId, count};
    return post(buildGiftMessage(values, extraText != nullptr ? extraText : ""));
}

int32_t VxMessageClient::requestMemberInfo(int32_t roomId) {
    return post(buildMemberInfoRequest(roomId)) ? 0 : -1;
}

bool VxMessageClient::sendKeepAliveNow() {
    if (!open_) {
        return false;
    }
    asio::post(io_, [this] {
        if (current_ != nullptr && current_->isOpen()) {
            ++unanswered_;
            current_->send(buildKeepAliveMessage(++keepAliveTick_));
        }
    });
    return true;
}

int32_t VxMessageClient::loginState() {
    return loggedIn_ ? 1 : 0;
}

void VxMessageClient::reset() {
    asio::post(io_, [this] { closeCurrent(); });
}

void VxMessageClient::closeCurrent() {
    if (current_ != nullptr) {
        current_->close();
        current_.reset();
    }
    loginTimer_.cancel();
    keepAliveTimer_.cancel();
    open_ = false;
    loggedIn_ = false;
}

void VxMessageClient::connected(ServerConnection& connection) {
    open_ = true;
    callbacks_.gateServerConnectFinished(0, connection.port(), connection.elapsedMs(), false);
    const std::string message = buildLoginMessage(login_);
    if (!connection.send(message)) {
        failCurrent(kMessageClientProtocolError, "login values too long for one frame");
        return;
    }
    loginTimer_.expires_after(std::chrono::milliseconds(options_.loginTimeoutMs));
    loginTimer_.async_wait([this, connection = current_](const std::error_code& error) {
        if (!error && current_ == connection && !loggedIn_) {
            failCurrent(kMessageClientLoginTimeout,
                        "no login reply from " + describeServer(*connection));
        }
    });
}

void VxMessageClient::connectFailed(ServerConnection& connection, const std::error_code& error) {
    closeCurrent();
    callbacks_.gateServerConnectFinished(error.value(), connection.port(), connection.elapsedMs(),
                                         true);
    const std::string detail =
        "connect to " + describeServer(connection) + " failed: " + error.message();
    callbacks_.error(kMessageClientConnectFailed, detail.c_str());
}

void VxMessageClient::received(ServerConnection& connection, const char* payload,
                               std::size_t size) {
    // Only the type matters here; the module's decoder reads the rest.
    static const std::string loginReply = typePrefix(vxwire::kLoginReply);
    static const std::string keepAlive = typePrefix(vxwire::kKeepAlive);
    const std::string_view text(payload, size);
    if (startsWith(text, loginReply)) {
        if (!loggedIn_) {
            loggedIn_ = true;
            loginTimer_.cancel();
            armKeepAlive();
            callbacks_.repeaterServerConnectFinished(kMessageClientOk, connection.host().c_str(),
                                                     connection.port(), connection.elapsedMs());
        }
        callbacks_.repeaterServerLoginReply(payload);
    } else if (startsWith(text, keepAlive)) {
        unanswered_ = 0;
        if (callbacks_.keepAlive()) {
            return;
        }
    }
    callbacks_.message(payload);
}

void VxMessageClient::broken(ServerConnection& connection, int32_t code,
                             const std::string& detail) {
    const bool wasLoggedIn = loggedIn_;
    closeCurrent();
    if (wasLoggedIn) {
        callbacks_.repeaterServerConnectAbort(code, detail.c_str(), connection.host().c_str(),
                                              connection.port());
    } else {
        callbacks_.repeaterServerConnectFinished(code, connection.host().c_str(), connection.port(),
                                                 connection.elapsedMs());
    }
    callbacks_.error(code, detail.c_str());
}

void VxMessageClient::failCurrent(int32_t code, const std::string& detail) {
    const std::shared_ptr<ServerConnection> connection = current_;
    if (connection == nullptr) {
        return;
    }
    connection->close();
    broken(*connection, code, detail);
}

void VxMessageClient::armKeepAlive() {
    keepAliveTimer_.expires_after(std::chrono::milliseconds(options_.keepAliveIntervalMs));
    keepAliveTimer_.async_wait([this, connection = current_](const std::error_code& error) {
        if (!error && current_ == connection) {
            onKeepAliveTimer();
        }
    });
}

void VxMessageClient::onKeepAliveTimer() {
    if (options_.keepAliveMissLimit > 0 && unanswered_ >= options_.keepAliveMissLimit) {
        failCurrent(kMessageClientKeepAliveTimeout, std::to_string(unanswered_) +
                                                        " keep-alives unanswered by " +
                                                        describeServer(*current_));
        return;
    }
    ++unanswered_;
    current_->send(buildKeepAliveMessage(++keepAliveTick_));
    armKeepAlive();
}

}  // namespace corvid

#include "barrage/vx_room_client.h"

#include <QThread>

#include "corvid/message_client.h"
#include "corvid/message_decoder.h"
#include "halyard/danmu_mock_platform.h"
#include "log/log_writer.h"

using tolvane::log::kMainLog;
using tolvane::log::writeLine;

namespace {

VxRoomClient* clientOf(void* userData) {
    return static_cast<VxRoomClient*>(userData);
}

QString currentThreadId() {
    return QString::number(reinterpret_cast<quintptr>(QThread::currentThreadId()));
}

}  // namespace

VxRoomClient::VxRoomClient(QObject* parent, IRoomListener* listener)
    : QObject(parent), listener_(listener) {
    StartupMessageClientSystem();
    messageLog_.open(tolvane::log::logFilePath(tolvane::log::kMessageLog));
    decoder_ = CreateVxMessageDecoder();
    reconnectTimer_ = new QTimer(this);
    reconnectTimer_->setSingleShot(true);
    // A coarse timer may fire up to 5 % early, and a reconnect must wait the whole second.
    reconnectTimer_->setTimerType(Qt::PreciseTimer);
    reconnectTimer_->setInterval(1000);
    // Both may be raised on a message-library thread; the work belongs on this one.
    QObject::connect(
        reconnectTimer_, &QTimer::timeout, this, [this] { reconnect(); }, Qt::QueuedConnection);
    QObject::connect(this, &VxRoomClient::errorReceived, this, &VxRoomClient::handleError,
                     Qt::QueuedConnection);
    stopped_ = false;
    loggedIn_ = false;
    kicked_ = false;
}

VxRoomClient::~VxRoomClient() {
    // A callback still inside the listener must come back before the client can go.
    stopped_ = true;
    reconnectTimer_->stop();
    listenerGate_.close();
    if (client_ != nullptr) {
        client_->release();
        client_ = nullptr;
    }
    if (decoder_ != nullptr) {
        decoder_->destroy();
        decoder_ = nullptr;
    }
    reconnectTimer_->stop();
    stopped_ = false;
    ShutdownMessageClientSystem();
    latest_.clear();
    messageLog_.close();
}

void VxRoomClient::setClientOptions(const MessageClientOptions& options) {
    customOptions_ = true;
    options_ = options;
}

MessageCallbacks VxRoomClient::callbackTable() {
    MessageCallbacks table;
    table.onMessage = [](const char* message, void* userData) {
        if (userData != nullptr) {
            clientOf(userData)->handleMessage(message);
        }
    };
    table.onKeepAlive = [](void* userData) {
        if (userData != nullptr) {
            clientOf(userData)->writeMessageLog(QStringLiteral("[msg] onMsgKeepLive"));
        }
        return false;
    };
    table.onError = [](int32_t code, const char*, void* userData) {
        if (userData != nullptr) {
            clientOf(userData)->onLibraryError(code);
        }
    };
    table.onGateServerConnectFinished = [](int32_t code, int32_t, int32_t, bool failed,
                                           void* userData) {
        if (userData == nullptr) {
            return;
        }
        VxRoomClient* self = clientOf(userData);
        if (code != 0 && failed) {
            self->onLibraryError(code);
        }
        self->writeMessageLog(QStringLiteral("[msg] GateServerConnectFinished: %1").arg(code));
    };
    table.onRepeaterServerConnectFinished = [](int32_t code, const char* host, int32_t port,
                                               int32_t, void* userData) {
        if (userData != nullptr) {
            clientOf(userData)->writeMessageLog(
                QStringLiteral("[msg] RepeatServerConnectFinished{code: %1, ip: %2, port: %3")
                    .arg(code)
                    .arg(QString::fromUtf8(host != nullptr ? host : ""))
                    .arg(port));
        }
    };
    table.onRepeaterServerConnectAbort = [](int32_t code, const char* details, const char* host,
                                            int32_t port, void* userData) {
        if (userData != nullptr) {
            clientOf(userData)->writeMessageLog(
                QStringLiteral("[msg] RepeatServerConnectAbort{code: %1, details: %2, ip: %3, "
                               "port: %4")
                    .arg(code)
                    .arg(QString::fromUtf8(details != nullptr ? details : ""))
                    .arg(QString::fromUtf8(host != nullptr ? host : ""))
                    .arg(port));
        }
    };
    table.onRepeaterServerLoginReply = [](const char* reply, void* userData) {
        if (userData == nullptr) {
            return;
        }
        VxRoomClient* self = clientOf(userData);
        self->subscribe(true, "olviplst");
        self->writeMessageLog(QStringLiteral("[msg] onRepeaterServerLoginres{ %1 }")
                                  .arg(QString::fromUtf8(reply != nullptr ? reply : "")));
    };
    return table;
}

void VxRoomClient::onLibraryError(int32_t code) {
    writeLine(kMainLog, QStringLiteral("[msg] error:%1").arg(code));
    Q_EMIT errorReceived();
    writeMessageLog(QStringLiteral("onMsgError: %1").arg(code));
}

void VxRoomClient::login() {
    listenerGate_.open();
    if (client_ == nullptr) {
        writeLine(kMainLog, QStringLiteral("[msg] CreateVxMessageClient."));
        client_ =
            customOptions_ ? CreateVxMessageClientWithOptions(options_) : CreateVxMessageClient();
        if (client_ != nullptr) {
            const MessageCallbacks table = callbackTable();
            client_->registerCallbacks(&table, this);
        }
    }
    if (client_ != nullptr) {
        client_->setParameterText(params_.slot5Text.c_str());
        client_->setParameterNumberAndText(params_.slot21Number, params_.slot21Text.c_str());
    }
    writeLine(kMainLog, QStringLiteral("[msg] login start threadId: %1.").arg(currentThreadId()));
    // Set before the attempt starts, so that a 56 or 59 its connection brings in on the
    // library's thread is never overwritten here; a retry armed earlier is now void.
    ++session_;
    reconnectTimer_->stop();
    loggedIn_ = true;
    stopped_ = false;
    connect();
}

int32_t VxRoomClient::loginWithRoomId(int32_t roomId) {
    if (client_ == nullptr) {
        writeLine(kMainLog, QStringLiteral("[msg] CreateVxMessageClient."));
        // Made here, the client never gets the callback table: login() registers only a
        // client it made itself. Kept as the platform's own client behaves.
        client_ =
            customOptions_ ? CreateVxMessageClientWithOptions(options_) : CreateVxMessageClient();
    }
    params_.roomId = roomId;
    login();
    return 0;
}

int32_t VxRoomClient::selectNextServer(BarrageServerAddr& address) {
    if (params_.servers.empty()) {
        return -1;
    }
    const auto count = static_cast<int32_t>(params_.servers.size());
    if (nextServer_ < 0 || nextServer_ >= count) {
        nextServer_ = 0;
    }
    address = params_.servers[static_cast<std::size_t>(nextServer_)];
    nextServer_ = nextServer_ + 1 < count ? nextServer_ + 1 : 0;
    return 0;
}

void VxRoomClient::connect() {
    writeLine(kMainLog, QStringLiteral("[msg] connect threadId:%1").arg(currentThreadId()));
    if (client_ == nullptr) {
        return;
    }
    BarrageServerAddr address;
    if (selectNextServer(address) != 0) {
        writeLine(kMainLog, QStringLiteral("[msg] select server addr failed."));
        return;
    }
    writeLine(kMainLog, QStringLiteral("[msg] connect ip:%1 poort:%2")
                            .arg(QString::fromStdString(address.host))
                            .arg(address.port));
    client_->reset();
    if (DanmuMockPlatform::enabled()) {
        address.host = DanmuMockPlatform::serverIp().toStdString();
        address.port = DanmuMockPlatform::serverPort();
    }
    const bool accepted =
        client_->setServerAddress(address.host.c_str(), address.port) &&
        client_->login(params_.loginText1.c_str(), params_.loginNumber, params_.loginText2.c_str(),
                       params_.clientType, params_.roomId, "", params_.loginMode);
    if (!accepted) {
        // Refused on the spot (an unusable address): a failed attempt like any other, so the
        // next server gets its turn a second later instead of the room going silent.
        writeLine(kMainLog, QStringLiteral("[msg] connect refused ip:%1 poort:%2.")
                                .arg(QString::fromStdString(address.host))
                                .arg(address.port));
        Q_EMIT errorReceived();
    }
}

void VxRoomClient::handleError() {
    if (loggedIn_ && !stopped_) {
        armedSession_ = session_;
        reconnectTimer_->start();
    }
}

void VxRoomClient::reconnect() {
    // A kick or suspension handled on the library's thread since the timer was armed, a
    // logout or a new login all void the retry.
    if (armedSession_ == session_ && loggedIn_ && !stopped_) {
        connect();
    }
}

void VxRoomClient::logout() {
    writeLine(kMainLog, QStringLiteral("[msg] logout begin."));
    loggedIn_ = false;
    reconnectTimer_->stop();
    stopped_ = true;
    ++session_;
    // Before the library is told: a callback blocked in host code on this thread's queued
    // calls gets them served here, whereas the library would simply wait for it.
    listenerGate_.close();
    if (client_ != nullptr) {
        writeLine(kMainLog, QStringLiteral("[msg] unRegist MessageCallback."));
        const MessageCallbacks empty;
        client_->registerCallbacks(&empty, this);
        writeLine(kMainLog, QStringLiteral("[msg] release Client."));
        client_->release();
        client_ = nullptr;
    }
    latest_.clear();
    writeLine(kMainLog, QStringLiteral("[msg] logout end."));
}

int32_t VxRoomClient::sendChat(const char* text) {
    if (text == nullptr || client_ == nullptr) {
        return -1;
    }
    client_->sendChatMessage(text);
    writeLine(kMainLog, QStringLiteral("[msg] chartMsg:%1").arg(QString::fromUtf8(text)));
    return 0;
}

int32_t VxRoomClient::sendRawMessage(const char* text) {
    if (text == nullptr || client_ == nullptr) {
        return -1;
    }
    const QString message = QString::fromUtf8(text);
    writeMessageLog(QStringLiteral("[sendRawMessage]: %1").arg(message));
    client_->sendRawMessage(reinterpret_cast<const char16_t*>(message.utf16()));
    return 0;
}

int32_t VxRoomClient::sendRoomText(const char* text) {
    if (text == nullptr || client_ == nullptr) {
        return -1;
    }
    client_->sendRoomText(text);
    return 0;
}

void VxRoomClient::sendGift(int32_t giftValue, int32_t giftId, int32_t count) {
    if (client_ != nullptr) {
        client_->sendGift(1, params_.roomId, 2, giftValue, giftId, count, "");
    }
}

void VxRoomClient::sendKeepAliveNow() {
    if (client_ != nullptr) {
        client_->sendKeepAliveNow();
    }
}

uint32_t VxRoomClient::loginState() {
    if (client_ == nullptr || !loggedIn_) {
        return UINT32_MAX;
    }
    return static_cast<uint32_t>(client_->loginState());
}

int32_t VxRoomClient::requestMemberInfo() {
    if (client_ == nullptr) {
        return -1;
    }
    return client_->requestMemberInfo(params_.roomId);
}

#pragma once

#include <QObject>
#include <QTimer>
#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "barrage/host_call_gate.h"
#include "barrage/latest_messages.h"
#include "barrage/room_login_params.h"
#include "corvid/message_callbacks.h"
#include "corvid/message_client_system.h"
#include "log/persistent_log_writer.h"
#include "tolvane/barrage_message.h"

class IRoomListener;

// The streamer's connection to the room's barrage servers: logs in, re-connects round-robin
// one second after an error, subscribes after the login reply and hands every received
// message to the listener. Lives on the service's thread; the message library calls back on
// its own threads, which only write logs, report to the listener or emit errorReceived().
class VxRoomClient : public QObject {
    Q_OBJECT

public:
    VxRoomClient(QObject* parent, IRoomListener* listener);
    ~VxRoomClient() override;
    VxRoomClient(const VxRoomClient&) = delete;
    VxRoomClient& operator=(const VxRoomClient&) = delete;

    void setLoginParams(const RoomLoginParams& params) { params_ = params; }
    const RoomLoginParams& loginParams() const { return params_; }
    void login();
    // Logs in with the stored parameters and this room id; always 0.
    int32_t loginWithRoomId(int32_t roomId);
    // Once this returns, the listener gets no further call; one under way when it was called
    // has returned (queued calls to this thread are served while waiting for it).
    void logout();

    int32_t sendChat(const char* text);
    int32_t sendRawMessage(const char* text);
    int32_t sendRoomText(const char* text);
    void sendGift(int32_t giftValue, int32_t giftId, int32_t count);
    void sendKeepAliveNow();
    // The library's login state, or all ones when there is no client or no login.
    uint32_t loginState();
    int32_t requestMemberInfo();
    // Copies the server at the round-robin position and moves on; -1 for an empty list.
    int32_t selectNextServer(BarrageServerAddr& address);

    // Received-message handling; the on-message callback calls it on the library's thread.
    void handleMessage(const char* rawText);
    // 0, or -1 when the text could not be encoded or there is no client.
    int32_t requestChannel(const char* channel);
    void subscribe(bool subscribe, const char* channel);
    void latestWatchedMessages(std::vector<std::string>& out);

    bool loggedIn() const { return loggedIn_.load(); }
    bool stopped() const { return stopped_.load(); }
    bool kicked() const { return kicked_.load(); }
    bool hasMessageClient() const { return client_ != nullptr; }
    bool reconnectPending() const { return reconnectTimer_->isActive(); }
    // Tests shorten the library's timings; the service keeps the defaults.
    void setClientOptions(const MessageClientOptions& options);

Q_SIGNALS:
    void errorReceived();

public Q_SLOTS:
    void connect();
    void handleError();

private:
    static MessageCallbacks callbackTable();
    // The reconnect timer's end: retries only for the login that armed it, while it stands.
    void reconnect();
    void onLibraryError(int32_t code);
    void handleLoginReply(const char* rawText);
    void handleErrorMessage(const char* rawText);
    int32_t handleShowEnd(const char* rawText);
    void writeMessageLog(const QString& text) { messageLog_.write(text); }

    MessageClient* client_ = nullptr;
    MessageDecoder* decoder_ = nullptr;
    IRoomListener* listener_ = nullptr;
    QTimer* reconnectTimer_ = nullptr;
    std::atomic<bool> stopped_{false};
    RoomLoginParams params_;
    int32_t nextServer_ = 0;
    std::atomic<bool> kicked_{false};
    tolvane::log::PersistentLogWriter messageLog_;
    std::atomic<bool> loggedIn_{false};
    tolvane::barrage::LatestMessages latest_;
    BarrageMessage received_;  // the message being handled, on the library's thread
    bool customOptions_ = false;
    MessageClientOptions options_;
    // Counts logins and logouts, so a retry armed for one login never runs for the next.
    uint32_t session_ = 0;
    uint32_t armedSession_ = 0;
    // Received messages reach the listener only through this gate; logout closes it.
    tolvane::barrage::HostCallGate listenerGate_;
};

// The service's barrage operations: starting the room connection and the slots it forwards
// to the barrage client.
#include "barrage/vx_room_client.h"
#include "liveroom/vx_live_room_info.h"
#include "log/log_writer.h"
#include "service/vx_net_service_imp.h"

namespace {

constexpr int32_t kNoRoom = -1;
constexpr int32_t kBarrageClientType = 13;
constexpr int32_t kBarrageLoginMode = 3;
constexpr int32_t kBarrageParameterNumber = 13;

}  // namespace

// slot 8
bool VxNetServiceImp::sendBarrageText(const char* text) {
    roomClient_->sendRoomText(text);
    return false;
}

// slot 17
int32_t VxNetServiceImp::sendChatMessage(const char* text) {
    return roomClient_->sendChat(text);
}

// slot 26
void VxNetServiceImp::barrageLoginCall(int32_t giftId, int32_t kind, int32_t count) {
    if (!roomClient_->hasMessageClient()) {
        return;
    }
    roomClient_->sendGift(liveRoomInfo_->resolveSendValue(giftId, kind, count), giftId, count);
}

// slot 40
void VxNetServiceImp::barrageCall() {
    roomClient_->sendKeepAliveNow();
}

// slot 50
int32_t VxNetServiceImp::barrageCallConnected() {
    return roomClient_->loginState() == UINT32_MAX ? -1 : 0;
}

// slot 56
int32_t VxNetServiceImp::sendRawMessage(const char* text) {
    return roomClient_->sendRawMessage(text);
}

// slot 75
int32_t VxNetServiceImp::barrageListCall(std::vector<std::string>& latestMessages) {
    roomClient_->latestWatchedMessages(latestMessages);
    return 0;
}

// slot 93
int32_t VxNetServiceImp::startBarrage() {
    logBanner("startBarrage");
    QList<ServerAddress> servers;
    const int32_t result = collectBarrageServers(servers);
    const int32_t roomId = getRoomId();
    if (result != 0 || roomId == kNoRoom) {
        return result;
    }
    RoomLoginParams params;
    params.roomId = roomId;
    params.loginText1 = tokenInfo_.uid;
    params.loginNumber = barrageProtocolNumber_;
    params.loginText2 = sessionToken();
    for (const ServerAddress& server : servers) {
        params.servers.push_back({server.ip.toStdString(), server.port});
    }
    params.slot21Number = kBarrageParameterNumber;
    params.slot21Text = clientVersion_;
    params.clientType = kBarrageClientType;
    params.slot5Text = deviceId_;
    params.loginMode = kBarrageLoginMode;
    roomClient_->setLoginParams(params);
    roomClient_->login();
    return result;
}

void VxNetServiceImp::logoutBarrage() {
    roomClient_->logout();
    // The client's callbacks are unregistered now, so nothing writes these any more.
    onlineCount_.store(0);
    keepAliveSecond_.store(0);
    memberInfoValue_.store(0);
    noticeValue_.store(0);
    fansBrand_.clear();
}

#include "service/vx_net_service_imp.h"

#include <QDateTime>
#include <QNetworkProxyFactory>

#include "barrage/vx_room_client.h"
#include "halyard/client_setup.h"
#include "halyard/login_request.h"
#include "liveroom/vx_live_room_info.h"
#include "log/log_writer.h"
#include "net/easy_net_manager.h"
#include "net/param_list.h"
#include "net/session_text.h"
#include "net/vx_net_request.h"
#include "service/environment.h"

using tolvane::log::kMainLog;
using tolvane::log::writeLine;

VxNetServiceImp::VxNetServiceImp(ServiceObserver* observer, BreadcrumbSink* breadcrumbSink)
    : QObject(nullptr), observer_(observer), breadcrumbSink_(breadcrumbSink) {
    // Two bare time stamps mark a new session in the day's file.
    writeLine(kMainLog, QString());
    writeLine(kMainLog, QString());
    InitFuzzyKeyType(1);
    requestLog_.open(tolvane::log::logFilePath(tolvane::log::kRequestLog));
    lastLoginMessage_.clear();
    longToken_.clear();
    environment_ = tolvane::readEnvironment();
    endpoints_ = VxEndpoints::fromDefaultData();
    const QString redirection = tolvane::describeRedirection(endpoints_.overrides());
    if (!redirection.isEmpty()) {
        writeLine(kMainLog, redirection);
    }
    qtClient_ = new EasyNetManager();
    request_ = new VxNetRequest(environment_, breadcrumbSink_, this);
    request_->setDeviceHeader(tolvane::net::userDeviceValue(deviceId_, clientVersion_));
    liveRoomInfo_ = std::make_shared<VxLiveRoomInfo>(request_, &parser_);
    liveRoomInfo_->setClientVersion(clientVersion_);
    // The module never follows the system's proxy settings; slot 95 sets its own.
    QNetworkProxyFactory::setUseSystemConfiguration(false);
    timer_ = new QTimer(this);
    getServerTime(3000);
    roomClient_ = new VxRoomClient(this, static_cast<IRoomListener*>(this));
    loginClient_ = new LoginRequest(this);
}

VxNetServiceImp::~VxNetServiceImp() {
    tolvane::log::writeBanner(QStringLiteral("VxNetServiceImp::~VxNetServiceImp"));
    // The catalogue's fetch thread goes first, while everything here is still whole: its
    // transfer is aborted, and a host callback running on it may wait for a queued call to this
    // thread, which the wait serves.
    liveRoomInfo_->shutdown();
    if (timer_ != nullptr) {
        timer_->stop();
        delete timer_;
        timer_ = nullptr;
    }
    delete qtClient_;
    qtClient_ = nullptr;
    delete roomClient_;
    roomClient_ = nullptr;
    delete request_;
    request_ = nullptr;
    liveRoomInfo_.reset();
    requestLog_.close();
}

void VxNetServiceImp::logBanner(const char* operation) {
    tolvane::log::writeBanner(QStringLiteral("VxNetServiceImp::") + QLatin1String(operation));
}

tolvane::net::CommonValues VxNetServiceImp::commonValues() {
    tolvane::net::CommonValues values;
    values.aid = QString::fromLatin1(getAppId());
    values.time = getServerTime();
    values.token = QString::fromStdString(sessionToken());
    return values;
}

std::string VxNetServiceImp::sessionToken() const {
    return tolvane::net::sessionToken(tokenInfo_);
}

void VxNetServiceImp::reloadEnvironment() {
    environment_ = 0;
    environment_ = tolvane::readEnvironment();
}

// slot 9
void VxNetServiceImp::stop() {
    logBanner("stop");
    observer_.store(nullptr);
    qtClient_->stop();
    // Returns only once a barrage callback already inside the host has come back.
    roomClient_->logout();
}

// slot 13
void VxNetServiceImp::freeArray(PushAddress* addresses) {
    delete[] addresses;
}

// slot 16
int32_t VxNetServiceImp::getOnlineCount() {
    const int32_t count = onlineCount_.load();
    return count < 0 ? 0 : count;
}

// slot 25
void VxNetServiceImp::release() {
    delete this;
}

// slot 30
void VxNetServiceImp::setClientVersion(const std::string& deviceId, const std::string& version) {
    ::setClientVersion(QString::fromStdString(version));
    deviceId_ = deviceId;
    clientVersion_ = version;
    if (request_ != nullptr) {
        request_->setDeviceHeader(tolvane::net::userDeviceValue(deviceId_, clientVersion_));
    }
    liveRoomInfo_->setClientVersion(version);
}

// slot 33
int32_t VxNetServiceImp::isAvailable() {
    return 1;
}

// slot 37
int32_t VxNetServiceImp::getSessionValueA() {
    return keepAliveSecond_.load();
}

// slot 39
int32_t VxNetServiceImp::getSessionValueB() {
    return memberInfoValue_.load();
}

// slot 77
int32_t VxNetServiceImp::getSessionValueC() {
    return noticeValue_.load();
}

// slot 82
const char* VxNetServiceImp::getAppId() {
    return tolvane::net::kAppId;
}

// slot 83
int32_t VxNetServiceImp::getBizType() {
    return 13;
}

// slot 87
int32_t VxNetServiceImp::setLiveParameters(const LiveParameters& parameters) {
    liveParameters_ = parameters;
    return static_cast<int32_t>(parameters.is_third_party_obs ? 1 : 0) |
           static_cast<int32_t>(parameters.is_rtc ? 1 : 0) << 8 |
           static_cast<int32_t>(parameters.is_hdr ? 1 : 0) << 16;
}

// slot 90
void VxNetServiceImp::setBarrageProtocolNumber(int32_t number) {
    barrageProtocolNumber_ = number;
}

// slot 91
void VxNetServiceImp::getEmptyText(std::string& text) {
    text.clear();
}

// IRoomListener

int32_t VxNetServiceImp::onRoomStatus(int32_t status) {
    if (ServiceObserver* observer = observer_.load()) {
        observer->onRoomStatus(status);
    }
    return 0;
}

int32_t VxNetServiceImp::onMemberInfoValue(int32_t value) {
    memberInfoValue_.store(value);
    return 0;
}

int32_t VxNetServiceImp::onFansBrand(const char* brand) {
    fansBrand_ = brand != nullptr ? brand : "";
    return 0;
}

int32_t VxNetServiceImp::onKeepAliveFirst(int32_t value) {
    onlineCount_.store(value);
    return 0;
}

int32_t VxNetServiceImp::onKeepAliveSecond(int32_t value) {
    keepAliveSecond_.store(value);
    return 0;
}

int32_t VxNetServiceImp::onHostText(const char* text) {
    if (ServiceObserver* observer = observer_.load()) {
        observer->onText(text != nullptr ? std::string(text) : std::string());
    }
    return 0;
}

int32_t VxNetServiceImp::onShowEnd(int32_t reason, int32_t banHours) {
    if (ServiceObserver* observer = observer_.load()) {
        observer->onShowEnd(reason, static_cast<float>(banHours));
    }
    return 0;
}

int32_t VxNetServiceImp::onBarrageMessage(const BarrageMessage* message) {
    // Once stopped, a message changes nothing, the catalogue included.
    ServiceObserver* observer = observer_.load();
    if (observer == nullptr) {
        return 0;
    }
    if (message != nullptr) {
        // Only queues a fetch for an unknown gift or prop; the host gets the message at once.
        liveRoomInfo_->noteBarrageMessage(*message);
    }
    observer->onBarrageMessage(message);
    return 0;
}

int32_t VxNetServiceImp::onNoticeValue(int32_t value) {
    noticeValue_.store(value);
    return 0;
}

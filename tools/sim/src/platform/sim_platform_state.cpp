#include "platform/sim_platform_state.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <utility>

#include "platform/sim_random.h"

namespace tolvane::sim {

extern const char* const kAccountsFixture;

namespace {

std::string text(const QJsonObject& object, const char* key) {
    return object.value(QLatin1String(key)).toString().toStdString();
}

std::vector<SimAccount> loadAccounts() {
    std::vector<SimAccount> accounts;
    const QJsonArray list = QJsonDocument::fromJson(QByteArray(kAccountsFixture))
                                .object()
                                .value(QStringLiteral("accounts"))
                                .toArray();
    for (const QJsonValue& value : list) {
        const QJsonObject object = value.toObject();
        SimAccount account;
        account.name = text(object, "name");
        account.password = text(object, "password");
        account.uid = text(object, "uid");
        account.phone = text(object, "phone");
        account.areaCode = text(object, "area_code");
        account.remoteLogin = object.value(QStringLiteral("remote_login")).toBool();
        account.foreignTel = object.value(QStringLiteral("foreign_tel")).toBool();
        account.longTokenExpired = object.value(QStringLiteral("long_token_expired")).toBool();
        account.profileError = object.value(QStringLiteral("profile_error")).toInt();
        account.profile = object.value(QStringLiteral("profile")).toObject();
        account.room = object.value(QStringLiteral("room")).toObject();
        accounts.push_back(account);
    }
    return accounts;
}

}  // namespace

SimPlatformState::SimPlatformState() : accounts_(loadAccounts()) {}

std::optional<SimAccount> SimPlatformState::findAccount(std::string SimAccount::*field,
                                                        const std::string& value) const {
    std::lock_guard<std::mutex> lock(mutex_);
    for (const SimAccount& account : accounts_) {
        if (account.*field == value) {
            return account;
        }
    }
    return std::nullopt;
}

std::optional<SimAccount> SimPlatformState::accountByName(const std::string& name) const {
    return findAccount(&SimAccount::name, name);
}

std::optional<SimAccount> SimPlatformState::accountByPhone(const std::string& phone) const {
    return findAccount(&SimAccount::phone, phone);
}

std::optional<SimAccount> SimPlatformState::accountByUid(const std::string& uid) const {
    return findAccount(&SimAccount::uid, uid);
}

bool SimPlatformState::setAccountRoom(const std::string& uid, QJsonObject room) {
    std::lock_guard<std::mutex> lock(mutex_);
    for (SimAccount& account : accounts_) {
        if (account.uid == uid) {
            account.room = std::move(room);
            return true;
        }
    }
    return false;
}

SimPlatformState::Grant SimPlatformState::grantLogin(const SimAccount& account) {
    std::lock_guard<std::mutex> lock(mutex_);
    ++counter_;
    Grant grant;
    grant.longToken = "lt" + std::to_string(counter_) + randomDigits(12);
    grant.session.uid = account.uid;
    grant.session.shortToken = "st" + std::to_string(counter_) + randomDigits(10);
    grant.session.longTokenId = static_cast<int>(counter_);
    longTokens_[grant.longToken] = account.uid;
    sessions_[grant.session.shortToken] = grant.session;
    return grant;
}

std::optional<SimAccount> SimPlatformState::accountByLongToken(const std::string& longToken) const {
    std::string uid;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        const auto it = longTokens_.find(longToken);
        if (it == longTokens_.end()) {
            return std::nullopt;
        }
        uid = it->second;
    }
    return accountByUid(uid);
}

std::optional<SimSession> SimPlatformState::sessionByToken(const std::string& token) const {
    // uid_bizType_shortToken_clientType_longTokenId; our short tokens carry no "_".
    std::vector<std::string> parts;
    std::string::size_type start = 0;
    for (std::string::size_type end; (end = token.find('_', start)) != std::string::npos;
         start = end + 1) {
        parts.push_back(token.substr(start, end - start));
    }
    parts.push_back(token.substr(start));
    if (parts.size() != 5) {
        return std::nullopt;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = sessions_.find(parts[2]);
    if (it == sessions_.end() || it->second.uid != parts[0] ||
        std::to_string(it->second.bizType) != parts[1] ||
        std::to_string(it->second.clientType) != parts[3] ||
        std::to_string(it->second.longTokenId) != parts[4]) {
        return std::nullopt;
    }
    return it->second;
}

void SimPlatformState::setClockSkewSeconds(int64_t skew) {
    std::lock_guard<std::mutex> lock(mutex_);
    clockSkew_ = skew;
}

int64_t SimPlatformState::nowSeconds() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return QDateTime::currentSecsSinceEpoch() + clockSkew_;
}

void SimPlatformState::failTimestamps(int count, TimeFailure kind) {
    std::lock_guard<std::mutex> lock(mutex_);
    timeFailuresLeft_ = count;
    timeFailure_ = kind;
}

std::optional<SimPlatformState::TimeFailure> SimPlatformState::takeTimestampFailure() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (timeFailuresLeft_ <= 0) {
        return std::nullopt;
    }
    --timeFailuresLeft_;
    return timeFailure_;
}

void SimPlatformState::setLive(bool live) {
    std::lock_guard<std::mutex> lock(mutex_);
    live_ = live;
}

bool SimPlatformState::live() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return live_;
}

void SimPlatformState::setShowType(int showType) {
    std::lock_guard<std::mutex> lock(mutex_);
    showType_ = showType;
}

int SimPlatformState::showType() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return showType_;
}

void SimPlatformState::setGatewayServers(std::vector<SimServerAddress> servers) {
    std::lock_guard<std::mutex> lock(mutex_);
    gatewayServers_ = std::move(servers);
}

std::vector<SimServerAddress> SimPlatformState::gatewayServers() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return gatewayServers_;
}

void SimPlatformState::setRoomServers(std::vector<SimServerAddress> servers) {
    std::lock_guard<std::mutex> lock(mutex_);
    roomServers_ = std::move(servers);
}

std::vector<SimServerAddress> SimPlatformState::roomServers() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return roomServers_;
}

void SimPlatformState::setEmotionWhiteList(std::vector<int> cate2Ids) {
    std::lock_guard<std::mutex> lock(mutex_);
    emotionWhiteList_ = std::move(cate2Ids);
}

std::vector<int> SimPlatformState::emotionWhiteList() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return emotionWhiteList_;
}

}  // namespace tolvane::sim

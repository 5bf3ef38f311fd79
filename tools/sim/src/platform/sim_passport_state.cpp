#include "platform/sim_passport_state.h"

#include <QDateTime>

#include "platform/sim_random.h"

namespace tolvane::sim {

int64_t SimPassportState::nowSeconds() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return nowLocked();
}

void SimPassportState::advanceSeconds(int64_t seconds) {
    std::lock_guard<std::mutex> lock(mutex_);
    offset_ += seconds;
}

int64_t SimPassportState::nowLocked() const {
    return QDateTime::currentSecsSinceEpoch() + offset_;
}

std::string SimPassportState::nextCode(const char* prefix, int digits) {
    return prefix + std::to_string(++counter_) + randomDigits(digits);
}

void SimPassportState::setSmsLifetimeSeconds(int seconds) {
    std::lock_guard<std::mutex> lock(mutex_);
    smsLifetime_ = seconds;
}

int SimPassportState::smsLifetimeSeconds() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return smsLifetime_;
}

std::string SimPassportState::issueSmsCode(const std::string& target) {
    const std::string code = randomDigits(6);
    std::lock_guard<std::mutex> lock(mutex_);
    smsCodes_[target] = Expiring{code, nowLocked() + smsLifetime_};
    return code;
}

SimPassportState::SmsCheck SimPassportState::consumeSmsCode(const std::string& target,
                                                            const std::string& code) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = smsCodes_.find(target);
    if (it == smsCodes_.end() || code.empty() || it->second.value != code) {
        return SmsCheck::Wrong;
    }
    const bool expired = nowLocked() >= it->second.expiresAt;
    smsCodes_.erase(it);
    return expired ? SmsCheck::Expired : SmsCheck::Accepted;
}

std::string SimPassportState::lastSmsCode(const std::string& target) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = smsCodes_.find(target);
    if (it == smsCodes_.end() || nowLocked() >= it->second.expiresAt) {
        return std::string();
    }
    return it->second.value;
}

std::string SimPassportState::issueRemoteCode(const std::string& uid) {
    std::lock_guard<std::mutex> lock(mutex_);
    const std::string code = "rl" + std::to_string(++counter_);
    remoteCodes_[code] = uid;
    return code;
}

std::optional<std::string> SimPassportState::uidByRemoteCode(const std::string& code) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = remoteCodes_.find(code);
    if (it == remoteCodes_.end()) {
        return std::nullopt;
    }
    return it->second;
}

void SimPassportState::openBinding(const std::string& uid, const std::string& phone) {
    std::lock_guard<std::mutex> lock(mutex_);
    openBindings_[uid] = Expiring{phone, nowLocked() + smsLifetime_};
}

SimPassportState::BindResult SimPassportState::bindPhone(const std::string& uid,
                                                         const std::string& phone) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = openBindings_.find(uid);
    if (it == openBindings_.end() || it->second.value != phone) {
        return BindResult::NotRequested;
    }
    const bool expired = nowLocked() >= it->second.expiresAt;
    openBindings_.erase(it);
    if (expired) {
        return BindResult::Expired;
    }
    for (auto bound = boundPhones_.begin(); bound != boundPhones_.end();) {
        bound = bound->second == phone ? boundPhones_.erase(bound) : std::next(bound);
    }
    boundPhones_[uid] = phone;
    return BindResult::Bound;
}

std::optional<std::string> SimPassportState::boundPhone(const std::string& uid) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = boundPhones_.find(uid);
    if (it == boundPhones_.end()) {
        return std::nullopt;
    }
    return it->second;
}

std::optional<std::string> SimPassportState::uidByBoundPhone(const std::string& phone) const {
    std::lock_guard<std::mutex> lock(mutex_);
    for (const auto& [uid, bound] : boundPhones_) {
        if (bound == phone) {
            return uid;
        }
    }
    return std::nullopt;
}

void SimPassportState::setQrLifetimeSeconds(int seconds) {
    std::lock_guard<std::mutex> lock(mutex_);
    qrLifetime_ = seconds;
}

int SimPassportState::qrLifetimeSeconds() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return qrLifetime_;
}

std::string SimPassportState::issueQrCode() {
    std::lock_guard<std::mutex> lock(mutex_);
    const std::string code = nextCode("qr", 6);
    qrSessions_[code] = QrSession{QrState::Issued, std::string(), nowLocked() + qrLifetime_};
    return code;
}

SimPassportState::QrState SimPassportState::currentLocked(const std::string& code) const {
    const auto it = qrSessions_.find(code);
    if (it == qrSessions_.end()) {
        return QrState::Unknown;
    }
    if (it->second.state != QrState::Expired && nowLocked() >= it->second.expiresAt) {
        return QrState::Expired;
    }
    return it->second.state;
}

SimPassportState::QrState SimPassportState::qrState(const std::string& code) const {
    std::lock_guard<std::mutex> lock(mutex_);
    return currentLocked(code);
}

SimPassportState::QrState SimPassportState::pollQr(const std::string& code,
                                                   std::string* accountName) {
    std::lock_guard<std::mutex> lock(mutex_);
    const QrState state = currentLocked(code);
    if (state == QrState::Unknown) {
        return state;
    }
    QrSession& session = qrSessions_[code];
    if (state == QrState::Confirmed) {
        if (accountName != nullptr) {
            *accountName = session.accountName;
        }
        qrSessions_.erase(code);
        return state;
    }
    session.state = state == QrState::Issued ? QrState::Waiting : state;
    return session.state;
}

SimPassportState::QrState SimPassportState::scanQr(const std::string& code,
                                                   const std::string& accountName) {
    std::lock_guard<std::mutex> lock(mutex_);
    const QrState state = currentLocked(code);
    if (state != QrState::Issued && state != QrState::Waiting) {
        return state;
    }
    QrSession& session = qrSessions_[code];
    session.state = QrState::Scanned;
    session.accountName = accountName;
    return session.state;
}

SimPassportState::QrState SimPassportState::confirmQr(const std::string& code) {
    std::lock_guard<std::mutex> lock(mutex_);
    const QrState state = currentLocked(code);
    if (state != QrState::Scanned) {
        return state;
    }
    qrSessions_[code].state = QrState::Confirmed;
    return QrState::Confirmed;
}

SimPassportState::QrState SimPassportState::expireQr(const std::string& code) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (currentLocked(code) == QrState::Unknown) {
        return QrState::Unknown;
    }
    qrSessions_[code].state = QrState::Expired;
    return QrState::Expired;
}

void SimPassportState::setAuthPorts(const QJsonArray& ports) {
    std::lock_guard<std::mutex> lock(mutex_);
    authPorts_ = ports;
}

QJsonArray SimPassportState::authPorts() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return authPorts_;
}

void SimPassportState::setAuthCodeLifetimeSeconds(int seconds) {
    std::lock_guard<std::mutex> lock(mutex_);
    authCodeLifetime_ = seconds;
}

int SimPassportState::authCodeLifetimeSeconds() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return authCodeLifetime_;
}

std::string SimPassportState::issueAuthCode(const std::string& longToken,
                                            const std::string& referer) {
    std::lock_guard<std::mutex> lock(mutex_);
    const std::string code = nextCode("ac", 10);
    authCodes_[code] = AuthCode{longToken, referer, nowLocked() + authCodeLifetime_};
    return code;
}

std::optional<std::string> SimPassportState::longTokenByAuthCode(const std::string& code) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = authCodes_.find(code);
    if (it == authCodes_.end() || nowLocked() >= it->second.expiresAt) {
        return std::nullopt;
    }
    return it->second.longToken;
}

std::string SimPassportState::refererOfAuthCode(const std::string& code) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = authCodes_.find(code);
    return it == authCodes_.end() ? std::string() : it->second.referer;
}

const char* SimPassportState::qrStateName(QrState state) {
    switch (state) {
        case QrState::Issued:
            return "issued";
        case QrState::Waiting:
            return "waiting";
        case QrState::Scanned:
            return "scanned";
        case QrState::Confirmed:
            return "confirmed";
        case QrState::Expired:
            return "expired";
        case QrState::Unknown:
            break;
    }
    return "unknown";
}

}  // namespace tolvane::sim

#pragma once

#include <QJsonArray>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace tolvane::sim {

// What the passport remembers between requests: SMS codes, remote-login codes, phone
// bindings, QR sessions and the authorisation codes of other apps. Everything that expires
// reads one clock, which tests move forward instead of waiting. Safe from any thread.
class SimPassportState {
public:
    // Seconds since the epoch, plus whatever advanceSeconds added.
    int64_t nowSeconds() const;
    void advanceSeconds(int64_t seconds);

    // SMS codes, sent to a phone number or to a remote-login code; each is good once and for
    // smsLifetimeSeconds() after it was sent. A new code replaces the previous one.
    static constexpr int kDefaultSmsLifetimeSeconds = 300;
    void setSmsLifetimeSeconds(int seconds);
    int smsLifetimeSeconds() const;
    std::string issueSmsCode(const std::string& target);
    enum class SmsCheck { Accepted, Wrong, Expired };
    SmsCheck consumeSmsCode(const std::string& target, const std::string& code);
    // The code waiting for `target`; empty when none was sent or it expired.
    std::string lastSmsCode(const std::string& target) const;

    // Remote-login codes handed out with a 130014 refusal, and the uid they finish.
    std::string issueRemoteCode(const std::string& uid);
    std::optional<std::string> uidByRemoteCode(const std::string& code) const;

    // Phone binding: a code sent for binding opens the binding for the SMS lifetime; binding
    // then moves the number to the account, away from any account that had it.
    void openBinding(const std::string& uid, const std::string& phone);
    enum class BindResult { Bound, NotRequested, Expired };
    BindResult bindPhone(const std::string& uid, const std::string& phone);
    std::optional<std::string> boundPhone(const std::string& uid) const;
    std::optional<std::string> uidByBoundPhone(const std::string& phone) const;

    // A QR session walks issued -> waiting (first poll) -> scanned (the app read it) ->
    // confirmed (the anchor agreed in the app); the poll after the confirmation logs in and
    // ends the session, which is then unknown. Any state before that turns expired when the
    // lifetime runs out or on demand.
    enum class QrState { Unknown, Issued, Waiting, Scanned, Confirmed, Expired };
    static constexpr int kDefaultQrLifetimeSeconds = 120;
    void setQrLifetimeSeconds(int seconds);
    int qrLifetimeSeconds() const;
    std::string issueQrCode();
    QrState qrState(const std::string& code) const;
    // A login's look at the session: moves issued to waiting, and ends a confirmed session,
    // handing out the account that confirmed it.
    QrState pollQr(const std::string& code, std::string* accountName);
    // Each returns the state after the step; a step from the wrong state changes nothing.
    QrState scanQr(const std::string& code, const std::string& accountName);
    QrState confirmQr(const std::string& code);
    QrState expireQr(const std::string& code);

    // Ports that the other apps of the platform listen on, as "port" lists them (entries may be
    // anything JSON allows, for tests of the client's filter).
    void setAuthPorts(const QJsonArray& ports);
    QJsonArray authPorts() const;

    // Authorisation codes stand for a long token for authCodeLifetimeSeconds().
    static constexpr int kDefaultAuthCodeLifetimeSeconds = 300;
    void setAuthCodeLifetimeSeconds(int seconds);
    int authCodeLifetimeSeconds() const;
    std::string issueAuthCode(const std::string& longToken, const std::string& referer);
    // The long token behind an unexpired code.
    std::optional<std::string> longTokenByAuthCode(const std::string& code) const;
    // The referer the code was asked for with, as sent.
    std::string refererOfAuthCode(const std::string& code) const;

    static const char* qrStateName(QrState state);

private:
    struct Expiring {
        std::string value;
        int64_t expiresAt = 0;
    };
    struct QrSession {
        QrState state = QrState::Issued;
        std::string accountName;
        int64_t expiresAt = 0;
    };
    struct AuthCode {
        std::string longToken;
        std::string referer;
        int64_t expiresAt = 0;
    };
    int64_t nowLocked() const;
    std::string nextCode(const char* prefix, int digits);
    QrState currentLocked(const std::string& code) const;

    mutable std::mutex mutex_;
    int64_t offset_ = 0;
    uint64_t counter_ = 0;
    int smsLifetime_ = kDefaultSmsLifetimeSeconds;
    int qrLifetime_ = kDefaultQrLifetimeSeconds;
    int authCodeLifetime_ = kDefaultAuthCodeLifetimeSeconds;
    std::map<std::string, Expiring> smsCodes_;        // target -> code
    std::map<std::string, std::string> remoteCodes_;  // remote code -> uid
    std::map<std::string, Expiring> openBindings_;    // uid -> phone
    std::map<std::string, std::string> boundPhones_;  // uid -> phone
    std::map<std::string, QrSession> qrSessions_;     // code -> session
    std::map<std::string, AuthCode> authCodes_;       // code -> grant
    QJsonArray authPorts_{8000, 8001};
};

}  // namespace tolvane::sim

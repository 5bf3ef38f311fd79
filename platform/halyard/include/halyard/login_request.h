#pragma once

#include <QObject>
#include <QString>
#include <map>
#include <string>

#include "halyard/login_records.h"

using ExtraParams = std::map<std::string, std::string>;

// Synchronous requests to the passport service of the environment that default.data selects.
// Every call blocks for at most its time-out (milliseconds) and returns false only when no
// HTTP answer came; otherwise it returns true and reports the service's verdict through
// errorCode (0 success) and message, filling the records from the reply.
class LoginRequest : public QObject {
    Q_OBJECT

public:
    explicit LoginRequest(QObject* parent = nullptr);
    ~LoginRequest() override;

    bool syncLoginByName(const QString& name, const QString& password, ExtraParams extraParams,
                         int& errorCode, QString& message, LoginInfo& info, RemoteLoginInfo& remote,
                         bool newGeneration, int timeoutMs);
    bool syncLoginByPhone(const QString& phone, const QString& secret, const QString& areaCode,
                          ExtraParams extraParams, int& errorCode, QString& message,
                          LoginInfo& info, RemoteLoginInfo& remote, bool newGeneration,
                          int timeoutMs);
    // Phone and SMS code only.
    bool syncLoginByPhone(const QString& phone, const QString& captcha, const QString& areaCode,
                          int& errorCode, QString& message, LoginInfo& info,
                          RemoteLoginInfo& remote, int timeoutMs);
    bool syncLoginByToken(QString longToken, int& errorCode, QString& message, LoginInfo& info,
                          RemoteLoginInfo& remote, int timeoutMs);
    bool syncRemoteLogin(const QString& remoteCode, const QString& captcha, int& errorCode,
                         QString& message, LoginInfo& info, RemoteLoginInfo& remote, int timeoutMs);
    bool syncGetLoginQrCode(int& errorCode, QString& message, QRcodeLoginInfo& qrCode,
                            int timeoutMs);
    bool syncLoginByQrCode(const QString& code, int& errorCode, QString& message, LoginInfo& info,
                           RemoteLoginInfo& remote, int timeoutMs);
    // Sends an SMS code to a phone number, or to the account behind a remote-login code.
    bool syncSendVertifyCode(const QString& target, int& errorCode, QString& message,
                             int timeoutMs);
    bool syncSendPhoneVertifyCode(const QString& phone, const QString& areaCode,
                                  ExtraParams extraParams, int& errorCode, QString& message,
                                  int timeoutMs);

    // The closed library's client-event report, whose request this library does not know: it
    // sends nothing and returns -1, unsupported.
    int reportClientEvent(const QString& event, const QString& detail, int value);
};

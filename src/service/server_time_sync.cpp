// The platform's clock: every signed request carries it, so the service keeps an offset.
#include <QDateTime>
#include <QJsonObject>
#include <QNetworkRequest>
#include <QTimer>
#include <QUrl>

#include "net/easy_net_manager.h"
#include "net/server_time.h"
#include "net/session_text.h"
#include "parse/data_parser.h"
#include "parse/reply_texts.h"
#include "log/log_writer.h"
#include "service/vx_net_service_imp.h"

namespace {

constexpr int64_t kNotSynchronised = -65535;

int64_t localSeconds() {
    return QDateTime::currentMSecsSinceEpoch() / 1000;
}

}  // namespace

int DataParser::parseServerTimeResult(const QByteArray& bytes, int& serverTime) {
    writeParseBanner("parseServerTimeResult");
    QJsonObject root;
    const int code =
        parseReplyEnvelope(bytes, root, QStringLiteral("error"), QStringLiteral("data"));
    if (code != 0) {
        tolvane::log::writeLine(tolvane::log::kMainLog,
                                QStringLiteral("ServerTime error:") + QString::fromUtf8(bytes));
        return mapServerErrorCode(code);
    }
    serverTime = readInt(root, QStringLiteral("data"), -1);
    if (serverTime < 0) {
        tolvane::log::writeLine(tolvane::log::kMainLog, QStringLiteral("server time return error"));
    }
    return 0;
}

void VxNetServiceImp::getServerTime(int timeoutMs) {
    logBanner("getServerTime");
    const QUrl url(QString::fromStdString(endpoints_.host(
                       static_cast<int>(tolvane::net::HostKind::ContentApi), environment_)) +
                   QStringLiteral("/api/v1/timestamp"));
    requestLog_.write(QStringLiteral("get url: %1").arg(url.path()));
    QNetworkRequest request(url);
    request.setRawHeader("User-Device", tolvane::net::userDeviceValue(deviceId_, clientVersion_));
    qtClient_->getAsync(
        request, this, [this](const QByteArray& reply) { onServerTimeReply(reply); }, timeoutMs);
}

void VxNetServiceImp::onServerTimeReply(const QByteArray& reply) {
    requestLog_.write(QStringLiteral("resData size: %1,   %2  ......")
                          .arg(reply.size())
                          .arg(QString::fromUtf8(reply.left(20))));
    int serverTime = -1;
    if (reply.isEmpty()) {
        // Only the parser's message: a retry must never overwrite a login's message.
        parser_.setLastErrorMessage(tolvane::kNetworkFailureStoredText);
    } else {
        parser_.parseServerTimeResult(reply, serverTime);
    }
    if (serverTime >= 0) {
        serverTimeOffset_ = serverTime - localSeconds();
        return;
    }
    int& failures = tolvane::net::serverTimeFailureCount();
    const int failuresBefore = failures++;
    if (failuresBefore > tolvane::net::kServerTimeFailuresBeforeFallback) {
        tolvane::log::writeLine(tolvane::log::kMainLog,
                                QStringLiteral("Multiple requests for server time failed."));
        serverTimeOffset_ = 0;
    }
    // The service is the timer's context, so a retry never reaches a destroyed service.
    QTimer::singleShot(tolvane::net::kServerTimeRetryDelayMs, this,
                       [this] { getServerTime(1000); });
}

void VxNetServiceImp::sltInitServerTime() {
    logBanner("sltInitServerTime");
    getServerTime(1000);
}

// slot 45
int64_t VxNetServiceImp::getServerTime() {
    return serverTimeOffset_ == kNotSynchronised ? localSeconds()
                                                 : localSeconds() + serverTimeOffset_;
}

// slot 86
void VxNetServiceImp::startServerTimeSync() {
    getServerTime(3000);
}

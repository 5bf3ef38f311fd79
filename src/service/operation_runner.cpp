// The one way the service's HTTP operations are sent, parsed and logged.
#include <QNetworkRequest>
#include <QUrl>

#include "net/easy_net_manager.h"
#include "net/form_part.h"
#include "net/operation_request.h"
#include "net/session_text.h"
#include "net/vx_net_request.h"
#include "parse/data_parser.h"
#include "parse/reply_texts.h"
#include "parse/result_codes.h"
#include "log/log_writer.h"
#include "service/vx_net_service_imp.h"

namespace {

void logReplyText(const QByteArray& reply) {
    tolvane::log::writeLine(tolvane::log::kMainLog,
                            QStringLiteral("result data : %1").arg(QString::fromUtf8(reply)));
}

void logRefusedReply(const tolvane::net::OperationRow& row,
                     const tolvane::net::PreparedRequest& request, const QByteArray& reply) {
    using tolvane::net::FailureLog;
    if (row.failureLog != FailureLog::ReplyOnly) {
        const QString where = row.failureLog == FailureLog::PathAndReply
                                  ? QString::fromLatin1(row.path)
                                  : QString::fromStdString(tolvane::net::sentUrl(request));
        tolvane::log::writeLine(tolvane::log::kMainLog, QStringLiteral("error Url: %1").arg(where));
    }
    logReplyText(reply);
}

}  // namespace

int32_t VxNetServiceImp::runOperation(const tolvane::net::OperationRow& row, const ParamList& items,
                                      std::string* message, const ReplyParser& parse,
                                      QByteArray* reply, const QStringList& files,
                                      const QString& fileField, const ParamList& extraHeaders) {
    if (row.fixedBanner != nullptr) {
        tolvane::log::writeLine(tolvane::log::kMainLog, QString::fromLatin1(row.fixedBanner));
    } else {
        logBanner(row.name);
    }
    // Base-address requests use the environment the request client was built with.
    const int environment = row.onHostTable ? environment_ : request_->environment();
    const tolvane::net::PreparedRequest request = tolvane::net::prepareOperation(
        row, items, commonValues(), endpoints_, environment, extraHeaders);

    const bool upload = row.method == tolvane::net::HttpMethod::MultipartPost;
    // An upload that never went out leaves the caller's reply as it was.
    QByteArray body = upload && reply != nullptr ? *reply : QByteArray();
    const bool answered = upload ? sendUpload(request, files, fileField, row.timeoutMs, body)
                                 : request_->sendPrepared(body, request, row.timeoutMs);
    if (!answered) {
        if (row.logReplyWithoutAnswer) {
            logReplyText(body);
        }
        if (message != nullptr) {
            *message = tolvane::kNetworkFailureText;
        }
        if (reply != nullptr) {
            *reply = body;
        }
        return tolvane::kNoAnswer;
    }
    int32_t result = 0;
    if (parse) {
        result = parse(body);
    } else {
        result = parser_.parseCodeResult(body, QStringLiteral("error"),
                                         QString::fromLatin1(row.messageKey));
        if (message != nullptr) {
            *message = parser_.lastErrorMessage();
        }
    }
    if (result != 0) {
        logRefusedReply(row, request, body);
    }
    if (reply != nullptr) {
        *reply = std::move(body);
    }
    return row.sessionExpiryHook ? afterSessionCheck(result) : result;
}

bool VxNetServiceImp::sendUpload(const tolvane::net::PreparedRequest& request,
                                 const QStringList& files, const QString& fileField, int timeoutMs,
                                 QByteArray& body) {
    const QString url = QString::fromStdString(tolvane::net::sentUrl(request));
    requestLog_.write(QStringLiteral("post image url: %1").arg(url));
    QNetworkRequest upload(QUrl::fromEncoded(url.toUtf8()));
    upload.setRawHeader("User-Device", tolvane::net::userDeviceValue(deviceId_, clientVersion_));
    for (const auto& [name, value] : request.headers) {
        upload.setRawHeader(name.toUtf8(), value.toUtf8());
    }
    std::vector<tolvane::net::FormPart> parts;
    for (const auto& [name, value] : request.form) {
        parts.push_back(tolvane::net::FormPart::text(name, value));
    }
    for (const QString& file : files) {
        parts.push_back(tolvane::net::FormPart::file(fileField, file));
    }
    return qtClient_->postMultipart(upload, parts, body, timeoutMs);
}

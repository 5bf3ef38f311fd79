// The anchor's feedback report: text items and screenshots in one multipart upload.
#include "parse/result_codes.h"
#include "service/vx_net_service_imp.h"

namespace {

using tolvane::net::HostKind;
using tolvane::net::HttpMethod;

// The platform signs this upload over a name one letter shorter than its path.
const tolvane::net::OperationRow& kReportFeedback = tolvane::net::registerOperation(
    hostRow("reportFeedback", HttpMethod::MultipartPost, HostKind::ContentApi,
            "/api/v1/report_message", "api/v1/report_messag")
        .withFixedBanner("reportFeedback-----------------"));

QString text(const std::string& value) {
    return QString::fromStdString(value);
}

}  // namespace

// slot 76
int32_t VxNetServiceImp::reportFeedback(const std::string& title, const std::string& content,
                                        const FeedbackRecord& feedback,
                                        const std::vector<std::string>& imagePaths,
                                        std::string& reply) {
    const ParamList items{{QStringLiteral("token"), text(sessionToken())},
                          {QStringLiteral("partner"), text(feedback.partner)},
                          {QStringLiteral("type"), text(feedback.type)},
                          {QStringLiteral("ua"), text(feedback.ua)},
                          {QStringLiteral("uid"), text(feedback.uid)},
                          {QStringLiteral("version"), text(feedback.version)},
                          {QStringLiteral("title"), text(title)},
                          {QStringLiteral("content"), text(content)}};
    QStringList images;
    for (const std::string& path : imagePaths) {
        images << QString::fromStdString(path);
    }
    // The reply is handed over unread; an upload that never went out leaves it as it was.
    QByteArray body = QByteArray::fromStdString(reply);
    const int32_t result = runOperation(
        kReportFeedback, items, nullptr, [](const QByteArray&) { return 0; }, &body, images,
        QStringLiteral("feed_img"));
    reply = body.toStdString();
    return result == 0 ? 0 : tolvane::kNoAnswer;
}

// The categories whose rooms may show emotion effects, fetched at each barrage start-up.
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>
#include <QUrlQuery>

#include "net/vx_net_request.h"
#include "parse/data_parser.h"
#include "service/log_writer.h"
#include "service/vx_net_service_imp.h"

namespace {

constexpr int kWebConfigHost = 4;
constexpr int kRequestTimeoutMs = 30000;
constexpr int kNoAnswer = 210;

}  // namespace

int DataParser::parseEmotionSeiyClassifyList(const QByteArray& bytes) {
    writeParseBanner("parseEmotionSeiyClassifyList");
    const QByteArray unwrapped = unwrapConfigCallback(bytes);
    const QJsonDocument document = QJsonDocument::fromJson(unwrapped);
    if (!document.isObject()) {
        tolvane::log::writeLine(tolvane::log::kMainLog, QStringLiteral("parse data failed!"));
        tolvane::log::writeLine(tolvane::log::kMainLog,
                                QStringLiteral("srcData: %1").arg(QString::fromUtf8(unwrapped)));
        return 1;
    }
    QJsonObject data;
    readObject(document.object(), QStringLiteral("data"), data);
    QJsonArray ids;
    readArray(data, QStringLiteral("white_cate2_list"), ids);
    std::vector<CategoryNode>& list = state_.emotionWhiteList;
    list.clear();
    for (const QJsonValue& id : qAsConst(ids)) {
        CategoryNode node;
        node.id = id.toInt(0);
        list.push_back(std::move(node));
    }
    return 0;
}

int32_t VxNetServiceImp::requestEmotionSeiyClassifyList() {
    logBanner("requestEmotionSeiyClassifyList");
    const QUrl url(QString::fromStdString(endpoints_.host(kWebConfigHost, environment_)) +
                   QStringLiteral("/resource/common/emotion_w.json"));
    QByteArray reply;
    if (!request_->cprSyncGet(reply, url, QUrlQuery(), ParamList(), kRequestTimeoutMs)) {
        return kNoAnswer;
    }
    const int32_t result = parser_.parseEmotionSeiyClassifyList(reply);
    if (result != 0) {
        tolvane::log::writeLine(tolvane::log::kMainLog,
                                QStringLiteral("error Url: %1").arg(url.toString()));
        tolvane::log::writeLine(tolvane::log::kMainLog,
                                QStringLiteral("result data : %1").arg(QString::fromUtf8(reply)));
    }
    return result;
}

// slot 67
void VxNetServiceImp::getStoredList(std::vector<CategoryNode>& emotionWhiteList) {
    emotionWhiteList = parser_.emotionWhiteList();
}

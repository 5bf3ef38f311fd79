// The categories whose rooms may show emotion effects, fetched at each barrage start-up.
#include <QJsonArray>
#include <QJsonObject>
#include "parse/data_parser.h"
#include "service/vx_net_service_imp.h"

namespace {

using tolvane::net::HostKind;
using tolvane::net::HttpMethod;

// The configuration service's files are public: no signature, no common items.
const tolvane::net::OperationRow& kEmotionList = tolvane::net::registerOperation(
    hostRow("requestEmotionSeiyClassifyList", HttpMethod::Get, HostKind::WebConfig,
            "/resource/common/emotion_w.json", nullptr));

}  // namespace

int DataParser::parseEmotionSeiyClassifyList(const QByteArray& bytes) {
    QJsonObject data;
    if (const int result = parseConfigReply("parseEmotionSeiyClassifyList", bytes, data);
        result != 0) {
        return result;  // the list stays as the last good file left it
    }
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
    return runOperation(kEmotionList, ParamList(), nullptr, [this](const QByteArray& reply) {
        return parser_.parseEmotionSeiyClassifyList(reply);
    });
}

// slot 67
void VxNetServiceImp::getStoredList(std::vector<CategoryNode>& emotionWhiteList) {
    emotionWhiteList = parser_.emotionWhiteList();
}

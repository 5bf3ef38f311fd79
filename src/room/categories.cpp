// Categories and tags the anchor picks before going live, and the category last set.
#include <QJsonArray>
#include <QJsonObject>

#include "parse/data_parser.h"
#include "service/vx_net_service_imp.h"

namespace {

// Calls `visit` with each object of the array under `key`; other elements are skipped.
template <typename Visit>
void forEachCategoryEntry(const QJsonObject& parent, const char* key, Visit visit) {
    QJsonArray entries;
    if (!DataParser::readArray(parent, QLatin1String(key), entries)) {
        return;
    }
    for (const QJsonValue& entry : qAsConst(entries)) {
        if (entry.isObject()) {
            visit(entry.toObject());
        }
    }
}

std::u16string categoryText(const QJsonObject& entry, const char* key) {
    return DataParser::readString(entry, QLatin1String(key), QString()).toStdU16String();
}

// A node of the category tree, whose ids the server sends as text or as numbers.
CategoryNode categoryTreeNode(const QJsonObject& entry, const char* idKey, const char* nameKey,
                              int32_t parentId) {
    CategoryNode node;
    node.name = categoryText(entry, nameKey);
    node.id = DataParser::readString(entry, QLatin1String(idKey), QString()).toInt(nullptr, 10);
    node.parentId = parentId;
    return node;
}

// A node of the suggestion and tag lists, whose ids are read as integers.
CategoryNode categoryListNode(const QJsonObject& entry, const char* idKey, const char* nameKey) {
    CategoryNode node;
    node.name = categoryText(entry, nameKey);
    node.id = DataParser::readInt(entry, QLatin1String(idKey), 0);
    return node;
}

}  // namespace

int DataParser::parseGetClassifyListResult(const QByteArray& bytes, std::string& message,
                                           std::vector<CategoryNode>& tree,
                                           std::vector<CategoryNode>& suggestions) {
    QJsonObject data;
    if (const int result = parseDataObject("parseGetClassifyListResult", bytes, data, &message);
        result != 0) {
        return result;
    }
    constexpr int32_t kTopLevelParent = -1;
    forEachCategoryEntry(data, "cate_list", [&tree](const QJsonObject& cate1) {
        CategoryNode level1 = categoryTreeNode(cate1, "cate_id", "cate_name", kTopLevelParent);
        forEachCategoryEntry(cate1, "cate2List", [&level1](const QJsonObject& cate2) {
            CategoryNode level2 = categoryTreeNode(cate2, "cate2_id", "cate2_name", level1.id);
            forEachCategoryEntry(cate2, "cate3List", [&level2](const QJsonObject& cate3) {
                level2.children.push_back(categoryTreeNode(cate3, "id", "name", level2.id));
            });
            level1.children.push_back(std::move(level2));
        });
        tree.push_back(std::move(level1));
    });
    forEachCategoryEntry(data, "cate_suggest", [&suggestions](const QJsonObject& suggestion) {
        CategoryNode node = categoryListNode(suggestion, "cid", "cname");
        forEachCategoryEntry(suggestion, "cate_list", [&node](const QJsonObject& cate2) {
            node.children.push_back(categoryListNode(cate2, "cate2_id", "cate2_name"));
        });
        suggestions.push_back(std::move(node));
    });
    return 0;
}

int DataParser::parseGetClassifyListExtResult(const QByteArray& bytes, std::string& message,
                                              std::vector<CategoryNode>& list) {
    QJsonObject root;
    QJsonArray entries;
    const int code = parseReplyData("parseGetClassifyListExtResult", bytes, QStringLiteral("msg"),
                                    root, entries);
    if (code != 0) {
        message = lastErrorMessage();
        return mapServerErrorCode(code);
    }
    for (const QJsonValue& entry : qAsConst(entries)) {
        if (!entry.isObject()) {
            continue;
        }
        const QJsonObject cate2 = entry.toObject();
        CategoryNode node = categoryListNode(cate2, "Cid2", "Cname2");
        node.parentId = readInt(cate2, QStringLiteral("Cid1"), 0);
        list.push_back(std::move(node));
    }
    return 0;
}

int DataParser::parseGetLiveTagsResult(const QByteArray& bytes, std::string& message,
                                       int32_t& hasIcon, std::string& tagGroupName,
                                       std::vector<CategoryNode>& tags) {
    QJsonObject data;
    if (const int result = parseDataObject("parseGetLiveTagsResult", bytes, data, &message);
        result != 0) {
        return result;
    }
    tagGroupName = readString(data, QStringLiteral("tagName"), QString()).toStdString();
    hasIcon = 0;
    forEachCategoryEntry(data, "tagList", [&](const QJsonObject& tag) {
        CategoryNode node = categoryListNode(tag, "tid", "tName");
        node.secondText = categoryText(tag, "tIcon");
        if (!node.secondText.empty()) {
            hasIcon = 1;
        }
        tags.push_back(std::move(node));
    });
    return 0;
}

void DataParser::setCurrentCategory(int32_t cid2, int32_t cid3) {
    state_.currentCid2 = cid2;
    state_.currentCid3 = cid3;
}

int32_t DataParser::currentCid2() const {
    return state_.currentCid2;
}

int32_t DataParser::currentCid3() const {
    return state_.currentCid3;
}

namespace {

using tolvane::net::HostKind;
using tolvane::net::HttpMethod;
using tolvane::net::registerOperation;

const tolvane::net::OperationRow& kClassifyInfo = registerOperation(
    hostRow("getClassifyInfo", HttpMethod::Post, HostKind::ContentApi,
            "/api/videoPartner/getAllCateInfo", "api/videoPartner/getAllCateInfo"));

// The web site signs this path with its leading slash, unlike every other operation.
const tolvane::net::OperationRow& kClassifyListExt =
    registerOperation(hostRow("getClassifyListExt", HttpMethod::Post, HostKind::WebSite,
                              "/api/videoPartner/join", "/api/videoPartner/join"));

const tolvane::net::OperationRow& kSetLiveClassify =
    registerOperation(hostRow("setLiveClassify", HttpMethod::Post, HostKind::Mobile2,
                              "/livenc/liveTool/updateCate", "livenc/liveTool/updateCate")
                          .messageIn("msg"));

const tolvane::net::OperationRow& kLiveTags =
    registerOperation(hostRow("getLiveTags", HttpMethod::Post, HostKind::ContentApi,
                              "/api/videoPartner/getCidTagList", "api/videoPartner/getCidTagList"));

const tolvane::net::OperationRow& kSetGameTag = registerOperation(
    hostRow("setGameTag", HttpMethod::Post, HostKind::ContentApi,
            "/api/videoPartner/updateCidTagInfo", "api/videoPartner/updateCidTagInfo"));

// Signed over the last path segment alone.
const tolvane::net::OperationRow& kClassifyIsVoice =
    registerOperation(hostRow("classifyIsVoice", HttpMethod::Post, HostKind::ContentApi,
                              "/api/v1/livingCheck", "livingCheck"));

const tolvane::net::OperationRow& kSubmitGameInfo =
    registerOperation(hostRow("submitGameInfoEx", HttpMethod::Post, HostKind::ContentApi,
                              "/api/v1/submitGameProcess", "submitGameProcess"));

const QString kTagCategoryType = QStringLiteral("2");

}  // namespace

// slot 48
int32_t VxNetServiceImp::getClassifyInfo(std::vector<CategoryNode>& tree,
                                         std::vector<CategoryNode>& suggestions,
                                         std::string& message) {
    const ParamList items{{QStringLiteral("room_id"), QString::number(getRoomId())},
                          {QStringLiteral("relate"), QStringLiteral("1")},
                          {QStringLiteral("isShowVertical"), QStringLiteral("0")},
                          {QStringLiteral("cate2_id"), QString::number(parser_.currentCid2())}};
    return runOperation(kClassifyInfo, items, &message, [&](const QByteArray& reply) {
        return parser_.parseGetClassifyListResult(reply, message, tree, suggestions);
    });
}

int32_t VxNetServiceImp::getClassifyListExt(std::vector<CategoryNode>& list, std::string& message) {
    const ParamList items{{QStringLiteral("rid"), QString::number(getRoomId())}};
    return runOperation(kClassifyListExt, items, &message, [&](const QByteArray& reply) {
        return parser_.parseGetClassifyListExtResult(reply, message, list);
    });
}

// slot 47
int32_t VxNetServiceImp::setLiveClassify(int32_t cid2, int32_t cid3, std::string& message) {
    const ParamList items{{QStringLiteral("token"), QString::fromStdString(sessionToken())},
                          {QStringLiteral("cid2"), QString::number(cid2)},
                          {QStringLiteral("cid3"), QString::number(cid3)}};
    const int32_t result = runOperation(kSetLiveClassify, items, &message);
    if (result == 0) {
        parser_.setCurrentCategory(cid2, cid3);
    }
    return result;
}

// slot 59
int32_t VxNetServiceImp::getLiveTags(bool& hasTags, int32_t& hasIcon, std::string& tagGroupName,
                                     std::vector<CategoryNode>& tags, std::string& message) {
    const ParamList items{{QStringLiteral("token"), QString::fromStdString(sessionToken())},
                          {QStringLiteral("cid"), QString::number(parser_.currentCid2())},
                          {QStringLiteral("ctype"), kTagCategoryType}};
    const int32_t result = runOperation(kLiveTags, items, &message, [&](const QByteArray& reply) {
        return parser_.parseGetLiveTagsResult(reply, message, hasIcon, tagGroupName, tags);
    });
    hasTags = !tags.empty();
    return result;
}

// slot 52
int32_t VxNetServiceImp::setGameTag(int32_t tid, std::string& message) {
    const ParamList items{{QStringLiteral("tid"), QString::number(tid)},
                          {QStringLiteral("token"), QString::fromStdString(sessionToken())},
                          {QStringLiteral("cid"), QString::number(parser_.currentCid2())},
                          {QStringLiteral("ctype"), kTagCategoryType}};
    return runOperation(kSetGameTag, items, &message);
}

// slot 41
int32_t VxNetServiceImp::classifyIsVoice(bool* isVoice, std::string& message) {
    if (isVoice == nullptr) {
        logBanner(kClassifyIsVoice.name);
        message = u8"参数错误";
        return 1;
    }
    const ParamList items{{QStringLiteral("token"), QString::fromStdString(sessionToken())},
                          {QStringLiteral("rid"), QString::number(getRoomId())}};
    // The server answers the question with its code: 0 means a voice category.
    const int32_t result = runOperation(kClassifyIsVoice, items, &message);
    *isVoice = result == 0;
    return result;
}

// slot 51
int32_t VxNetServiceImp::submitGameInfoEx(const GameProcessInfo& game, std::string& message) {
    const ParamList items{{QStringLiteral("token"), QString::fromStdString(sessionToken())},
                          {QStringLiteral("name"), QString::fromStdString(game.name)},
                          {QStringLiteral("process"), QString::fromStdString(game.process)},
                          {QStringLiteral("type"), QString::number(game.type)}};
    return runOperation(kSubmitGameInfo, items, &message);
}

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "parse/data_parser.h"

namespace {

void check(bool condition) {
    if (!condition) {
        std::abort();
    }
}

// Every reader over every key, down into nested objects and the objects inside arrays.
void readAll(const QJsonObject& object, int depth) {
    if (depth > 4) {
        return;
    }
    for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
        const QString key = it.key();
        DataParser::readString(object, key, QStringLiteral("7"));
        DataParser::readInt(object, key, 7);
        DataParser::readDouble(object, key, 7.5);
        QJsonObject nested;
        if (DataParser::readObject(object, key, nested)) {
            readAll(nested, depth + 1);
        }
        QJsonArray array;
        if (DataParser::readArray(object, key, array)) {
            for (const QJsonValue& element : array) {
                readAll(element.toObject(), depth + 1);
            }
        }
    }
}

void checkEnvelope(DataParser& parser, const QByteArray& bytes, const QString& codeKey,
                   const QString& messageKey) {
    QJsonObject root;
    const int code = parser.parseReplyEnvelope(bytes, root, codeKey, messageKey);
    check(!root.contains(codeKey));
    check(code == 0 ? parser.lastErrorMessage().empty() : !parser.lastErrorMessage().empty());
    const int mapped = DataParser::mapServerErrorCode(code);
    check(DataParser::mapServerErrorCode(mapped) == mapped);
    readAll(root, 0);
}

// The envelope, the configuration unwrap and the code-only replies.
void parseAsEnvelope(DataParser& parser, const QByteArray& bytes) {
    checkEnvelope(parser, bytes, QStringLiteral("error"), QStringLiteral("data"));
    checkEnvelope(parser, bytes, QStringLiteral("result"), QStringLiteral("msg"));

    const QByteArray unwrapped = DataParser::unwrapConfigCallback(bytes);
    check(unwrapped.size() < bytes.size() || bytes.isEmpty());
    check(unwrapped.isEmpty() || bytes.contains(unwrapped));
    checkEnvelope(parser, unwrapped, QStringLiteral("error"), QStringLiteral("data"));

    parser.parseCodeResult(bytes);
    parser.parseCodeResult(bytes, QStringLiteral("result"), QStringLiteral("data"));
    int value = 0;
    parser.parseIntValue(bytes, QStringLiteral("count"), value);
    if (bytes.size() >= static_cast<int>(sizeof(int))) {
        int code = 0;
        std::memcpy(&code, bytes.constData(), sizeof code);
        const int mapped = DataParser::parseCodeResult(code);
        check((mapped == 0) == (code == 0));
        check(DataParser::parseCodeResult(mapped) == mapped);
    }
}

// Every array handed out is freed, so a leak shows.
void parseAsPushLines(DataParser& parser, const QByteArray& bytes) {
    PushAddress* lines = nullptr;
    PushAddress* h265 = nullptr;
    int32_t count = 0, h265Count = 0;
    parser.parseAllRtmpAddressResult(bytes, lines, count, h265, h265Count);
    // An empty H.265 list is handed out as an array of size 0, so only "no array" fixes a count.
    check((lines != nullptr || count == 0) && (h265 != nullptr || h265Count == 0));
    delete[] lines;
    delete[] h265;

    std::string url;
    int32_t lineId = 0;
    if (parser.parseRtmpResult(bytes, url, lineId) == 0) {
        int32_t found = 0;
        check(parser.findPushLine(url, found) && found == lineId);
    }
}

void parseAsCategories(DataParser& parser, const QByteArray& bytes) {
    std::string message;
    std::vector<CategoryNode> tree, suggestions;
    parser.parseGetClassifyListResult(bytes, message, tree, suggestions);
    parser.parseGetClassifyListExtResult(bytes, message, tree);
    int32_t hasIcon = 0;
    std::string group;
    std::vector<CategoryNode> tags;
    parser.parseGetLiveTagsResult(bytes, message, hasIcon, group, tags);
    check(hasIcon == 0 || hasIcon == 1);
}

void parseAsAccount(DataParser& parser, const QByteArray& bytes) {
    std::string message, longToken;
    ShortTokenInfo token;
    parser.parseLoginResult(bytes, message, longToken, token);
    parser.parseUserInfoResult(bytes, message);
    int serverTime = 0;
    parser.parseServerTimeResult(bytes, serverTime);
}

void parseAsRoom(DataParser& parser, const QByteArray& bytes) {
    std::string message;
    QList<ServerAddress> servers;
    parser.parseRoomInfoResult(bytes, message, servers);
    const int roomServers = servers.size();
    parser.parseGatewayResult(bytes, message, servers);
    // Server lists are only ever appended to.
    check(servers.size() >= roomServers);
    bool live = false, showType = false;
    parser.parseIsRoomBroadcastingResult(bytes, live, showType);
    parser.parseEmotionSeiyClassifyList(bytes);
}

void parseAsAnchorQueries(DataParser& parser, const QByteArray& bytes) {
    bool inGuild = false;
    parser.parseCheckInGuildResult(bytes, inGuild);
    AnchorCardUser user;
    AnchorCardLevel level;
    parser.parseAnchorHeadHoverInfo(bytes, user, level);
    std::string remark, url;
    parser.parseCustomerServiceEntry(bytes, remark, url);
}

void parseAsRoomSettings(DataParser& parser, const QByteArray& bytes) {
    int32_t mask = 15;
    parser.parseWatermarkLocationResult(bytes, mask);
    check(mask >= 0 && mask <= 15);
    LiveRoomParameter parameter;
    parser.parseLiveRoomParamter(bytes, parameter);
    std::vector<BitrateConfig> configs;
    parser.parseIntelligentSettingConfigList(bytes, configs);
    parser.parseCreateLiveRoomResult(bytes);
    LivingStatistics statistics;
    parser.parseLivingStatisticalInfo(bytes, statistics);
}

using Parse = void (*)(DataParser&, const QByteArray&);
// The first input byte picks the family; seeds carry the byte of the reply they came from.
constexpr Parse kFamilies[] = {parseAsEnvelope,      parseAsAccount,   parseAsRoom,
                               parseAsAnchorQueries, parseAsPushLines, parseAsCategories,
                               parseAsRoomSettings};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1 || size > 1 << 20) {
        return 0;
    }
    const QByteArray bytes(reinterpret_cast<const char*>(data) + 1, int(size - 1));
    DataParser parser;
    kFamilies[data[0] % std::size(kFamilies)](parser, bytes);
    parser.reset();
    check(parser.lastErrorMessage().empty());
    check(parser.fmsValue().empty() && parser.referenceUrl().empty());
    return 0;
}

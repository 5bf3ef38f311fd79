// The anchor's room settings: video settings under review, watermark corners, bit-rate presets,
// creating the room, the reminder sent to followers, and the live show's statistics.
#include <QJsonArray>
#include <QJsonObject>
#include <algorithm>
#include <optional>

#include "parse/data_parser.h"
#include "parse/reply_texts.h"
#include "parse/result_codes.h"
#include "log/log_writer.h"
#include "service/vx_net_service_imp.h"

namespace {

// Every corner: what the host shows when the platform's answer says nothing usable.
constexpr int32_t kAllCorners = 15;
// Read for a missing review state, so that it falls to each table's "any other" row.
constexpr int kNoState = -1;

// The host's mask gives corner 3 the value 8 and corner 4 the value 4, out of number order.
int32_t cornerBit(const QJsonValue& corner) {
    if (!corner.isDouble()) {
        return 0;
    }
    switch (corner.toInt(0)) {
        case 1:
            return 1;
        case 2:
            return 2;
        case 3:
            return 8;
        case 4:
            return 4;
        default:
            return 0;
    }
}

// The platform's review states renumbered the way the host's settings panel counts them.
int32_t titleVerifyState(int serverState) {
    switch (serverState) {
        case 0:
            return 2;
        case 1:
            return 1;
        default:
            return 3;
    }
}

// A notice state the host does not know keeps what it showed before.
std::optional<int32_t> noticeState(int serverState) {
    switch (serverState) {
        case 0:
            return 1;
        case 1:
            return 2;
        case 2:
            return 3;
        case 3:
            return 0;
        default:
            return std::nullopt;
    }
}

int32_t coverState(int serverState) {
    switch (serverState) {
        case 0:
            return 1;
        case 1:
            return 2;
        case 2:
            return 3;
        default:
            return 0;
    }
}

std::u16string wideText(const QJsonObject& object, const char* key) {
    return DataParser::readString(object, QLatin1String(key), QString()).toStdU16String();
}

// Ids arrive as text or as numbers; the string reader turns both into base-10 text.
int32_t idValue(const QJsonObject& object, const char* key) {
    return DataParser::readString(object, QLatin1String(key), QString()).toInt(nullptr, 10);
}

int intValue(const QJsonObject& object, const char* key, int defaultValue) {
    return DataParser::readInt(object, QLatin1String(key), defaultValue);
}

bool isOne(const QJsonObject& object, const char* key) {
    return intValue(object, key, 0) == 1;
}

}  // namespace

int DataParser::parseWatermarkLocationResult(const QByteArray& bytes, int32_t& mask) {
    mask = kAllCorners;
    QJsonObject root;
    QJsonArray corners;
    const int code = parseReplyData("parseWatermarkLocationResult", bytes, QStringLiteral("data"),
                                    root, corners);
    if (code != 0) {
        return mapServerErrorCode(code);
    }
    mask = 0;
    for (const QJsonValue& corner : qAsConst(corners)) {
        mask |= cornerBit(corner);
    }
    return 0;
}

int DataParser::parseLiveRoomParamter(const QByteArray& bytes, LiveRoomParameter& parameter) {
    QJsonObject data;
    if (const int result = parseDataObject("parseLiveRoomParamter", bytes, data, nullptr);
        result != 0) {
        return result;
    }
    QJsonObject part;
    if (readObject(data, QStringLiteral("room_info"), part)) {
        parameter.roomId = idValue(part, "room_id");
        parameter.roomName = wideText(part, "room_name");
        parameter.cate2Id = idValue(part, "cate2_id");
        parameter.cate3Id = idValue(part, "cate3_id");
        parameter.categoryTime = intValue(part, "cate_time", 0);
    }
    if (readObject(data, QStringLiteral("room_verify"), part)) {
        parameter.newTitle = wideText(part, "new_title");
        parameter.titleVerifyState = titleVerifyState(intValue(part, "title_vertify", kNoState));
    }
    // Where both objects name a third level, the category object's counts.
    if (readObject(data, QStringLiteral("cate_info"), part)) {
        parameter.cate1Id = idValue(part, "cate1_id");
        parameter.cate3Id = idValue(part, "cate3_id");
        parameter.cate2Name = wideText(part, "cate2_name");
        parameter.cate3Name = wideText(part, "cate3_name");
    }
    if (readObject(data, QStringLiteral("notice_info"), part)) {
        parameter.lastNotice = wideText(part, "last_notice");
        parameter.newNotice = wideText(part, "new_notice");
        parameter.noticeState =
            noticeState(intValue(part, "new_status", kNoState)).value_or(parameter.noticeState);
        parameter.noticeAlways = isOne(part, "always");
    }
    if (readObject(data, QStringLiteral("cover_info"), part)) {
        parameter.coverSource =
            readString(part, QStringLiteral("cover_src"), QString()).toStdString();
        parameter.coverState = coverState(intValue(part, "cover_status", kNoState));
        parameter.coverMessage = wideText(part, "cover_msg");
        parameter.openCloseCover = isOne(part, "open_close_cover");
    }
    parameter.coverButtonType = isOne(data, "cover_button_type");
    // A room without a credit score is told apart from a score of 0.
    constexpr int32_t kNoCredit = -1;
    parameter.credit = readObject(data, QStringLiteral("credit_info"), part)
                           ? intValue(part, "credit", kNoCredit)
                           : kNoCredit;
    return 0;
}

int DataParser::parseIntelligentSettingConfigList(const QByteArray& bytes,
                                                  std::vector<BitrateConfig>& configs) {
    QJsonObject root;
    QJsonArray entries;
    const int code = parseReplyData("parseIntelligentSettingConfigList", bytes,
                                    QStringLiteral("data"), root, entries);
    if (code != 0) {
        return mapServerErrorCode(code);
    }
    static const QLatin1String kKeys[] = {QLatin1String("type"), QLatin1String("cate2_id"),
                                          QLatin1String("cate2_name"), QLatin1String("min"),
                                          QLatin1String("max")};
    for (const QJsonValue& entry : qAsConst(entries)) {
        // A non-object reads as an empty object and is skipped with the incomplete ones.
        const QJsonObject preset = entry.toObject();
        if (!std::all_of(std::begin(kKeys), std::end(kKeys),
                         [&preset](QLatin1String key) { return preset.contains(key); })) {
            continue;
        }
        BitrateConfig config;
        config.typeFlag = intValue(preset, "type", 0) != 1;
        config.cate2Id = intValue(preset, "cate2_id", 0);
        config.cate2Name =
            readString(preset, QStringLiteral("cate2_name"), QString()).toStdString();
        config.min = intValue(preset, "min", 0);
        config.max = intValue(preset, "max", 0);
        configs.push_back(std::move(config));
    }
    return 0;
}

int DataParser::parseCreateLiveRoomResult(const QByteArray& bytes) {
    writeParseBanner("parseCreateLiveRoomResult");
    QJsonObject root;
    const int code =
        parseReplyEnvelope(bytes, root, QStringLiteral("error"), QStringLiteral("data"));
    if (code != 0) {
        return mapServerErrorCode(code);
    }
    const QJsonValue roomId = root.value(QStringLiteral("data"));
    if (!roomId.isDouble() && !roomId.isString()) {
        state_.lastErrorMessage = tolvane::kReplyDataErrorText;
        return 1;
    }
    state_.roomInfo.roomId = readInt(root, QStringLiteral("data"), state_.roomInfo.roomId);
    return 0;
}

int DataParser::parseLivingStatisticalInfo(const QByteArray& bytes, LivingStatistics& statistics) {
    QJsonObject data;
    if (const int result = parseDataObject("parseLivingStatisticalInfo", bytes, data, nullptr);
        result != 0) {
        return result;
    }
    // Every figure travels as text; read as text, a number-valued one converts the same way.
    const auto figure = [&data](const char* key) {
        return readString(data, QLatin1String(key), QString());
    };
    statistics.mh = figure("mh").toLongLong(nullptr, 10);
    statistics.nac = figure("nac").toInt(nullptr, 10);
    statistics.nsuc = figure("nsuc").toInt(nullptr, 10);
    statistics.nsfi = figure("nsfi").toInt(nullptr, 10);
    statistics.nfbi = figure("nfbi").toInt(nullptr, 10);
    statistics.ld = figure("ld").toInt(nullptr, 10);
    statistics.bancount = figure("bancount").toInt(nullptr, 10);
    return 0;
}

namespace {

using tolvane::net::HostKind;
using tolvane::net::HttpMethod;
using tolvane::net::registerOperation;

// The corners are public: the request carries the room id and nothing else.
const tolvane::net::OperationRow& kWatermarkLocation = registerOperation(hostRow(
    "getWatermarkLocation", HttpMethod::Get, HostKind::ContentApi, "/api/v1/get_corner", nullptr));

const tolvane::net::OperationRow& kLiveRoomParameter = registerOperation(
    hostRow("getLiveRoomParameter", HttpMethod::Post, HostKind::ContentApi,
            "/api/videoPartner/getVideoSettingInfo", "api/videoPartner/getVideoSettingInfo"));

const tolvane::net::OperationRow& kIntelligentSettingConfig = registerOperation(
    hostRow("getIntelligentSettingConfig", HttpMethod::Get, HostKind::ContentApi,
            "/api/videoPartner/bitrate_config", "api/videoPartner/bitrate_config"));

const tolvane::net::OperationRow& kCreateLiveRoom = registerOperation(
    hostRow("createLiveRoom", HttpMethod::Post, HostKind::Mobile3,
            "/mgapi/livenc/anchor/createLiveRoom", "mgapi/livenc/anchor/createLiveRoom")
        .withClientSys());

const tolvane::net::OperationRow& kLivingStatistics =
    registerOperation(hostRow("getLivingStatisticalInfo", HttpMethod::Post, HostKind::ContentApi,
                              "/api/videoPartner/livinginfo", "livinginfo"));

const tolvane::net::OperationRow& kLiveRemind =
    registerOperation(hostRow("sendLiveRemindCustom", HttpMethod::Post, HostKind::WebSite,
                              "/api/applivecompanion/remind", "applivecompanion/remind"));

}  // namespace

// slot 38
int32_t VxNetServiceImp::getWatermarkLocation() {
    const ParamList items{{QStringLiteral("room_id"), QString::number(getRoomId())}};
    int32_t mask = kAllCorners;
    // A server code of 210 must not read as "no answer", so the answer itself is noted.
    bool answered = false;
    runOperation(kWatermarkLocation, items, nullptr, [&](const QByteArray& reply) {
        answered = true;
        return parser_.parseWatermarkLocationResult(reply, mask);
    });
    return answered ? mask : tolvane::kNoAnswer;
}

// slot 46
int32_t VxNetServiceImp::getLiveRoomParameter(LiveRoomParameter& parameter) {
    return runOperation(
        kLiveRoomParameter, {{QStringLiteral("token"), QString::fromStdString(sessionToken())}},
        nullptr,
        [&](const QByteArray& reply) { return parser_.parseLiveRoomParamter(reply, parameter); });
}

// slot 62
int32_t VxNetServiceImp::getIntelligentSettingConfig(std::vector<BitrateConfig>& configs) {
    return runOperation(kIntelligentSettingConfig, ParamList(), nullptr,
                        [&](const QByteArray& reply) {
                            return parser_.parseIntelligentSettingConfigList(reply, configs);
                        });
}

// slot 66
int32_t VxNetServiceImp::createLiveRoom(int32_t tagId, int32_t id) {
    const ParamList items{{QStringLiteral("token"), QString::fromStdString(sessionToken())},
                          {QStringLiteral("tag_id"), QString::number(tagId)},
                          {QStringLiteral("id"), QString::number(id)}};
    return runOperation(kCreateLiveRoom, items, nullptr, [&](const QByteArray& reply) {
        return parser_.parseCreateLiveRoomResult(reply);
    });
}

// slot 61
int32_t VxNetServiceImp::sendLiveRemindCustom(const std::string& title, std::string& message) {
    const ParamList items{{QStringLiteral("remind_title"), QString::fromStdString(title)},
                          {QStringLiteral("client_version"), QStringLiteral("1")},
                          {QStringLiteral("token"), QString::fromStdString(sessionToken())}};
    return runOperation(kLiveRemind, items, &message);
}

// slot 57
int32_t VxNetServiceImp::getLivingStatisticalInfo(LivingStatistics& statistics) {
    // Without a session there is no show to count; the platform would only refuse the request.
    if (tokenInfo_.shortToken.empty()) {
        logBanner(kLivingStatistics.name);
        tolvane::log::writeLine(tolvane::log::kMainLog,
                                QStringLiteral("getLivingStatisticalInfo:{token is empty}"));
        return tolvane::kNoSession;
    }
    const ParamList items{{QStringLiteral("token"), QString::fromStdString(sessionToken())},
                          {QStringLiteral("rid"), QString::number(getRoomId())}};
    return runOperation(kLivingStatistics, items, nullptr, [&](const QByteArray& reply) {
        return parser_.parseLivingStatisticalInfo(reply, statistics);
    });
}

// slot 43
double VxNetServiceImp::getLivingStatistic() {
    LivingStatistics statistics;
    return getLivingStatisticalInfo(statistics) == 0 ? static_cast<double>(statistics.mh) : 0.0;
}

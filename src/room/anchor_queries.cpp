// Small questions about the anchor: followers, guild, location, identity verification, the
// card the host shows over the anchor's avatar, and where customer service is reached.
#include <QJsonObject>

#include "parse/data_parser.h"
#include "service/vx_net_service_imp.h"

namespace {

std::string utf8Text(const QJsonObject& object, const char* key) {
    return DataParser::readString(object, QLatin1String(key), QString()).toStdString();
}

int32_t integer(const QJsonObject& object, const char* key) {
    return DataParser::readInt(object, QLatin1String(key), 0);
}

// The card's experience figures are fractional, and the host's record keeps them as floats.
float fraction(const QJsonObject& object, const char* key) {
    return static_cast<float>(DataParser::readDouble(object, QLatin1String(key), 0));
}

void readCardUser(const QJsonObject& userInfo, AnchorCardUser& user) {
    user.nickname = utf8Text(userInfo, "nickname");
    user.avatar = utf8Text(userInfo, "avatar");
    user.weight = utf8Text(userInfo, "weight");
    user.vipId = integer(userInfo, "vipId");
    user.roomId = integer(userInfo, "roomId");
    user.city = utf8Text(userInfo, "city");
    user.follow = utf8Text(userInfo, "follow");
    user.isOfficial = integer(userInfo, "isOfficial");
}

void readCardLevel(const QJsonObject& levelInfo, AnchorCardLevel& level) {
    level.level = utf8Text(levelInfo, "level");
    level.upgrade_exp = fraction(levelInfo, "upgrade_exp");
    level.min_exp = fraction(levelInfo, "min_exp");
    level.exp = fraction(levelInfo, "exp");
    level.isFull = integer(levelInfo, "isFull");
    level.levelIcon = utf8Text(levelInfo, "levelIcon");
    level.next_level = integer(levelInfo, "next_level");
    level.nextLevelIcon = utf8Text(levelInfo, "nextLevelIcon");
    level.progress = fraction(levelInfo, "progress");
}

}  // namespace

int DataParser::parseCheckInGuildResult(const QByteArray& bytes, bool& inGuild) {
    QJsonObject data;
    if (const int result = parseDataObject("parseCheckInGuildResult", bytes, data, nullptr);
        result != 0) {
        return result;
    }
    inGuild = readInt(data, QStringLiteral("in"), 0) == 1;
    return 0;
}

int DataParser::parseAnchorHeadHoverInfo(const QByteArray& bytes, AnchorCardUser& user,
                                         AnchorCardLevel& level) {
    QJsonObject data;
    if (const int result = parseDataObject("parseAnchorHeadHoverInfo", bytes, data, nullptr);
        result != 0) {
        return result;
    }
    QJsonObject part;
    if (readObject(data, QStringLiteral("userInfo"), part)) {
        readCardUser(part, user);
    }
    if (readObject(data, QStringLiteral("levelInfo"), part)) {
        readCardLevel(part, level);
    }
    return 0;
}

int DataParser::parseCustomerServiceEntry(const QByteArray& bytes, std::string& remark,
                                          std::string& url) {
    QJsonObject data;
    if (const int result = parseDataObject("parseCustomerServiceEntry", bytes, data, nullptr);
        result != 0) {
        return result;
    }
    remark = utf8Text(data, "remark");
    url = utf8Text(data, "url");
    return 0;
}

namespace {

using tolvane::net::HostKind;
using tolvane::net::HttpMethod;
using tolvane::net::registerOperation;

const tolvane::net::OperationRow& kFollowCount = registerOperation(
    hostRow("getFollowCnt", HttpMethod::Post, HostKind::ContentApi, "/api/v1/fans", "fans"));

const tolvane::net::OperationRow& kCheckInGuild =
    registerOperation(hostRow("checkInGuild", HttpMethod::Get, HostKind::ContentApi,
                              "/api/v1/checkAnchorInGuild", "checkAnchorInGuild"));

const tolvane::net::OperationRow& kAnchorLocation = registerOperation(
    hostRow("getAnchorLocation", HttpMethod::Post, HostKind::ContentApi,
            "/api/applivecompanion/getAnchorPoi", "applivecompanion/getAnchorPoi"));

const tolvane::net::OperationRow& kReportLocation = registerOperation(
    hostRow("reportAnchorLocation", HttpMethod::Post, HostKind::ContentApi,
            "/api/applivecompanion/createAnchorPoi", "applivecompanion/createAnchorPoi")
        .withClientSys());

const tolvane::net::OperationRow& kLiveAuthInfo = registerOperation(hostRow(
    "requestLiveAuthInfo", HttpMethod::Post, HostKind::ContentApi,
    "/member/panel/pc/ident/getIdentUrlForShow", "member/panel/pc/ident/getIdentUrlForShow"));

const tolvane::net::OperationRow& kHeadHoverInfo =
    registerOperation(hostRow("getAnchorHeadHoverInfo", HttpMethod::Post, HostKind::Mobile2,
                              "/livenc/livetool/getCardInfo", "livenc/livetool/getCardInfo")
                          .withClientSys());

// The customer-service host is public: nothing is signed and no session travels.
const tolvane::net::OperationRow& kCustomerServiceEntry =
    registerOperation(hostRow("getCustomerServiceEntry", HttpMethod::Get, HostKind::CustomerService,
                              "/japi/special", nullptr));

}  // namespace

int32_t VxNetServiceImp::runRawReplyOperation(const tolvane::net::OperationRow& row,
                                              const ParamList& items, std::string& reply) {
    QByteArray body;
    // The host reads these replies itself, so any answer at all is a success here.
    const int32_t result = runOperation(
        row, items, nullptr, [](const QByteArray&) { return 0; }, &body);
    reply = body.toStdString();
    return result;
}

// slot 42
int32_t VxNetServiceImp::getFollowCnt(int32_t& count) {
    const ParamList items{{QStringLiteral("token"), QString::fromStdString(sessionToken())},
                          {QStringLiteral("rid"), QString::number(getRoomId())}};
    return runOperation(kFollowCount, items, nullptr, [&](const QByteArray& reply) {
        return parser_.parseIntValue(reply, QStringLiteral("fans"), count);
    });
}

// slot 44
int32_t VxNetServiceImp::checkInGuild(bool& inGuild) {
    const ParamList items{{QStringLiteral("token"), QString::fromStdString(sessionToken())}};
    return runOperation(kCheckInGuild, items, nullptr, [&](const QByteArray& reply) {
        return parser_.parseCheckInGuildResult(reply, inGuild);
    });
}

// slot 78
int32_t VxNetServiceImp::getAnchorLocation(int32_t isAllowPoi, std::string& message) {
    const ParamList items{{QStringLiteral("token"), QString::fromStdString(sessionToken())},
                          {QStringLiteral("isAllowPoi"), QString::number(isAllowPoi)}};
    return runOperation(kAnchorLocation, items, &message);
}

// slot 79
int32_t VxNetServiceImp::reportAnchorLocation(const std::string& city, const std::string& longitude,
                                              const std::string& latitude, std::string& message) {
    const ParamList items{{QStringLiteral("token"), QString::fromStdString(sessionToken())},
                          {QStringLiteral("city"), QString::fromStdString(city)},
                          {QStringLiteral("longitude"), QString::fromStdString(longitude)},
                          {QStringLiteral("latitude"), QString::fromStdString(latitude)}};
    return runOperation(kReportLocation, items, &message);
}

// slot 80
int32_t VxNetServiceImp::requestLiveAuthInfo(std::string& reply) {
    return runRawReplyOperation(
        kLiveAuthInfo, {{QStringLiteral("token"), QString::fromStdString(sessionToken())}}, reply);
}

// slot 81
int32_t VxNetServiceImp::getAnchorHeadHoverInfo(AnchorCardUser& user, AnchorCardLevel& level) {
    const ParamList items{{QStringLiteral("token"), QString::fromStdString(sessionToken())}};
    return runOperation(kHeadHoverInfo, items, nullptr, [&](const QByteArray& reply) {
        return parser_.parseAnchorHeadHoverInfo(reply, user, level);
    });
}

// slot 69
int32_t VxNetServiceImp::getCustomerServiceEntry(const std::string& appCode, std::string& remark,
                                                 std::string& url) {
    const ParamList items{{QStringLiteral("appCode"), QString::fromStdString(appCode)}};
    return runOperation(kCustomerServiceEntry, items, nullptr, [&](const QByteArray& reply) {
        return parser_.parseCustomerServiceEntry(reply, remark, url);
    });
}

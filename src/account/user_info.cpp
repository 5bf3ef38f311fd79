// The anchor's profile: fetched after every login and on the host's request.
#include <QJsonObject>

#include "parse/data_parser.h"
#include "log/log_writer.h"
#include "service/vx_net_service_imp.h"

namespace {

using tolvane::net::HostKind;
using tolvane::net::HttpMethod;

const tolvane::net::OperationRow& kUserInfo = tolvane::net::registerOperation(
    hostRow("initUserInfo", HttpMethod::Post, HostKind::ContentApi, "/api/v1/my_info", "my_info"));

}  // namespace

int DataParser::parseUserInfoResult(const QByteArray& bytes, std::string& errorMessage) {
    QJsonObject data;
    if (const int result = parseDataObject("parseUserInfoResult", bytes, data, &errorMessage);
        result != 0) {
        return result;
    }
    auto text = [&data](const char* key) {
        return readString(data, QLatin1String(key), QString()).toStdString();
    };
    auto flag = [&data](const char* key) {
        return readString(data, QLatin1String(key), QString()).toInt() == 1;
    };
    UserProfile& profile = state_.profile;
    profile.nickname = text("nickname");
    profile.isOwnRoom = flag("is_own_room");
    profile.sex = readString(data, QStringLiteral("sex"), QString()).toInt();
    profile.phoneBound = flag("phone_status");
    profile.mobilePhone = text("mobile_phone");
    profile.ident = text("ident");
    // An identity that is verified but not to be shown still tells the host that it exists.
    if (profile.ident.empty() && text("ident_status") == "2") {
        profile.ident = "******";
    }
    QJsonObject avatar;
    if (readObject(data, QStringLiteral("avatar"), avatar)) {
        profile.avatarSmall = readString(avatar, QStringLiteral("small"), QString()).toStdString();
        profile.avatarMiddle =
            readString(avatar, QStringLiteral("middle"), QString()).toStdString();
        profile.avatarBig = readString(avatar, QStringLiteral("big"), QString()).toStdString();
    }
    return 0;
}

int32_t VxNetServiceImp::fetchUserInfo(const char* operation, std::string& errorMessage) {
    return runOperation(
        kUserInfo.named(operation),
        {{QStringLiteral("token"), QString::fromStdString(sessionToken())}}, &errorMessage,
        [&](const QByteArray& reply) { return parser_.parseUserInfoResult(reply, errorMessage); });
}

int32_t VxNetServiceImp::initUserInfo(std::string& errorMessage) {
    return fetchUserInfo("initUserInfo", errorMessage);
}

int32_t VxNetServiceImp::refreshUserInfoPrivate() {
    std::string discarded;
    return fetchUserInfo("refreshUserInfoPrivate", discarded);
}

int32_t VxNetServiceImp::afterSessionCheck(int32_t result) {
    constexpr int32_t kSessionExpired = 220;
    constexpr int32_t kSessionExpiredToo = 221;
    if (result == kSessionExpired || result == kSessionExpiredToo) {
        refreshUserInfoPrivate();
    }
    return result;
}

// slot 5
bool VxNetServiceImp::getAvatarBig(std::string& url) {
    url = parser_.userProfile().avatarBig;
    return true;
}

// slot 6
bool VxNetServiceImp::getAvatarMiddle(std::string& url) {
    url = parser_.userProfile().avatarMiddle;
    return true;
}

// slot 7
bool VxNetServiceImp::getAvatarSmall(std::string& url) {
    url = parser_.userProfile().avatarSmall;
    return true;
}

// slot 18
const char* VxNetServiceImp::getNickname() {
    return parser_.userProfile().nickname.c_str();
}

// slot 22
bool VxNetServiceImp::hasOwnRoom() {
    return parser_.userProfile().isOwnRoom;
}

// slot 55
int32_t VxNetServiceImp::getSex() {
    return parser_.userProfile().sex;
}

// slot 64
bool VxNetServiceImp::refreshUserInfo(std::string& errorMessage) {
    const int32_t result = initUserInfo(errorMessage);
    if (result != 0) {
        tolvane::log::writeLine(tolvane::log::kMainLog,
                                QStringLiteral("refreshUserInfo error: %1").arg(result));
        return false;
    }
    startBarrage();
    return true;
}

// slot 65
void VxNetServiceImp::getUserRecord(UserRecord& user) {
    user = parser_.userProfile();
    user.uid = tokenInfo_.uid;
}

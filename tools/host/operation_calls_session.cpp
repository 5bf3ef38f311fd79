// `tolvane-host call` entries for the session: the token set a login stored, the texts and flags
// it left behind, the user record's single fields, and logout.
#include "call_arguments.h"

namespace host_calls {

namespace {

QJsonObject tokenInfoObject(const ShortTokenInfo& info) {
    return {{"uid", text(info.uid)},         {"shortToken", text(info.shortToken)},
            {"bizType", info.bizType},       {"longTokenId", info.longTokenId},
            {"clientType", info.clientType}, {"createTime", text(info.createTime)},
            {"expireIn", info.expireIn}};
}

// The three avatar slots differ only in which address they copy.
CallRunner avatarCall(bool (ILiveencoderNetService::*read)(std::string&)) {
    return [read](ILiveencoderNetService& s, const QStringList&) {
        std::string url;
        const bool r = (s.*read)(url);
        return withOutputs(r, {{"url", text(url)}});
    };
}

}  // namespace

void addSessionCalls(const AddCall& add) {
    using S = ILiveencoderNetService;
    using A = const QStringList&;

    // A host that logged in elsewhere hands over its token set; the service then reads the user.
    add("login_third_party",
        "LONG_TOKEN UID SHORT_TOKEN [BIZ_TYPE LONG_TOKEN_ID CLIENT_TYPE CREATE_TIME EXPIRE_IN]",
        [](S& s, A a) {
            ShortTokenInfo info;
            info.uid = arg(a, 1);
            info.shortToken = arg(a, 2);
            info.bizType = intArg(a, 3);
            info.longTokenId = intArg(a, 4);
            info.clientType = intArg(a, 5);
            info.createTime = arg(a, 6);
            info.expireIn = intArg(a, 7);
            return resultOnly(s.login_third_party(arg(a, 0), info));
        });
    add("loginRequestCall", "FIRST SECOND VALUE", [](S& s, A a) {
        return resultOnly(s.loginRequestCall(arg(a, 0), arg(a, 1), intArg(a, 2)));
    });
    add("getLoginInfo", "", [](S& s, A) {
        ShortTokenInfo info;
        const int32_t r = s.getLoginInfo(info);
        return withOutputs(r, tokenInfoObject(info));
    });
    add("getSessionText", "", [](S& s, A) {
        std::string value;
        s.getSessionText(value);
        return withOutputs(QJsonValue(), {{"sessionText", text(value)}});
    });
    add("getLastLoginMessage", "", [](S& s, A) {
        std::string message;
        s.getLastLoginMessage(message);
        return withOutputs(QJsonValue(), {{"message", text(message)}});
    });
    add("getRemoteLoginInfo", "", [](S& s, A) {
        bool foreign = false;
        std::string hidePhone, code;
        s.getRemoteLoginInfo(foreign, hidePhone, code);
        return withOutputs(QJsonValue(), {{"isForeignTel", foreign},
                                          {"hidePhone", text(hidePhone)},
                                          {"remoteLoginCode", text(code)}});
    });
    add("logout", "", [](S& s, A) {
        s.logout();
        return resultOnly(QJsonValue());
    });
    add("getAvatarBig", "", avatarCall(&S::getAvatarBig));
    add("getAvatarMiddle", "", avatarCall(&S::getAvatarMiddle));
    add("getAvatarSmall", "", avatarCall(&S::getAvatarSmall));
    add("getNickname", "", [](S& s, A) {
        const char* nickname = s.getNickname();
        return resultOnly(nickname != nullptr ? QJsonValue(QString::fromUtf8(nickname))
                                              : QJsonValue());
    });
    add("hasOwnRoom", "", [](S& s, A) { return resultOnly(s.hasOwnRoom()); });
    add("getSex", "", [](S& s, A) { return resultOnly(s.getSex()); });
}

}  // namespace host_calls

#include "operation_calls.h"

#include <QJsonArray>

#include "call_arguments.h"

namespace {

using namespace host_calls;

QJsonObject loginOutputs(int32_t result, const std::string& longToken,
                         const std::string& errorMessage) {
    return withOutputs(result,
                       {{"longToken", text(longToken)}, {"errorMessage", text(errorMessage)}});
}

QJsonObject pushLine(const PushAddress& line) {
    return {{"url", text(line.url)}, {"id", line.id}};
}

QJsonArray pushArray(const PushAddress* addresses, int32_t count) {
    QJsonArray array;
    for (int32_t i = 0; addresses != nullptr && i < count; ++i) {
        array.append(pushLine(addresses[i]));
    }
    return array;
}

LoginCheckRequest checkRequest(const QStringList& args) {
    LoginCheckRequest request;
    request.name = arg(args, 0);
    request.secret = arg(args, 1);
    request.phoneText1 = arg(args, 2);
    request.phoneText3 = arg(args, 3);
    return request;
}

QVector<OperationCall> buildCalls() {
    using S = ILiveencoderNetService;
    using A = const QStringList&;
    QVector<OperationCall> calls;
    const AddCall add = [&calls](const char* name, const char* usage, CallRunner run) {
        calls.append({QString::fromLatin1(name), QString::fromLatin1(usage), std::move(run)});
    };

    add("login", "NAME PASSWORD", [](S& s, A a) {
        std::string error, token;
        const std::string name = arg(a, 0), password = arg(a, 1);
        const int32_t r = s.login(name.c_str(), password.c_str(), error, token);
        return loginOutputs(r, token, error);
    });
    add("loginByToken", "LONG_TOKEN", [](S& s, A a) {
        std::string token = arg(a, 0), error;
        const int32_t r = s.loginByToken(token, error);
        return loginOutputs(r, token, error);
    });
    add("loginByPhone", "PHONE SECRET AREA_CODE", [](S& s, A a) {
        std::string token, error;
        const int32_t r = s.loginByPhone(arg(a, 0), arg(a, 1), arg(a, 2), token, error);
        return loginOutputs(r, token, error);
    });
    add("loginByPhoneCaptcha", "PHONE CAPTCHA AREA_CODE", [](S& s, A a) {
        std::string token, error;
        const int32_t r = s.loginByPhoneCaptcha(arg(a, 0), arg(a, 1), arg(a, 2), token, error);
        return loginOutputs(r, token, error);
    });
    add("loginCheckNew", "NAME SECRET [PHONE AREA_CODE]", [](S& s, A a) {
        std::string token, error;
        const int32_t r = s.loginCheckNew(checkRequest(a), error, token);
        return loginOutputs(r, token, error);
    });
    add("remoteLogin", "REMOTE_CODE CAPTCHA", [](S& s, A a) {
        std::string token, error;
        const int32_t r = s.remoteLogin(arg(a, 0), arg(a, 1), token, error);
        return loginOutputs(r, token, error);
    });
    add("getToken", "", [](S& s, A) {
        std::string token;
        s.getToken(token);
        return withOutputs(QJsonValue(), {{"token", text(token)}});
    });
    add("getUserDevice", "", [](S& s, A) {
        std::string value;
        s.getUserDevice(value);
        return withOutputs(QJsonValue(), {{"userDevice", text(value)}});
    });
    add("getServerTime", "",
        [](S& s, A) { return resultOnly(QString::number(s.getServerTime())); });
    add("getUserRecord", "", [](S& s, A) {
        UserRecord user;
        s.getUserRecord(user);
        return withOutputs(QJsonValue(), {{"uid", text(user.uid)},
                                          {"nickname", text(user.nickname)},
                                          {"sex", user.sex},
                                          {"avatarBig", text(user.avatarBig)},
                                          {"avatarMiddle", text(user.avatarMiddle)},
                                          {"avatarSmall", text(user.avatarSmall)},
                                          {"isOwnRoom", user.isOwnRoom},
                                          {"phoneBound", user.phoneBound},
                                          {"mobilePhone", text(user.mobilePhone)},
                                          {"ident", text(user.ident)}});
    });
    add("refreshUserInfo", "", [](S& s, A) {
        std::string error;
        const bool r = s.refreshUserInfo(error);
        return withOutputs(r, {{"errorMessage", text(error)}});
    });
    add("getRoomRecord", "", [](S& s, A) {
        RoomSummary room;
        s.getRoomRecord(room);
        return withOutputs(QJsonValue(), {{"roomId", room.roomId},
                                          {"roomUrl", text(room.roomUrl)},
                                          {"roomName", text(room.roomName)},
                                          {"gameName", text(room.gameName)},
                                          {"childName", text(room.childName)},
                                          {"cateId", room.cateId}});
    });
    add("getRoomState", "", [](S& s, A) {
        bool live = false, showType = false;
        const int32_t r = s.getRoomState(live, showType);
        return withOutputs(r, {{"live", live}, {"showType", showType}});
    });
    add("refreshRoomInfo", "", [](S& s, A) {
        s.refreshRoomInfo();
        return resultOnly(QJsonValue());
    });
    add("startBarrage", "", [](S& s, A) { return resultOnly(s.startBarrage()); });
    add("get_rtmp_address", "", [](S& s, A) {
        std::string url;
        int32_t id = 0;
        const int32_t r = s.get_rtmp_address(url, id);
        return withOutputs(r, {{"url", text(url)}, {"id", id}});
    });
    add("get_all_rtmp_addresses", "", [](S& s, A) {
        PushAddress* lines = nullptr;
        PushAddress* h265 = nullptr;
        int32_t count = 0, h265Count = 0;
        const int32_t r = s.get_all_rtmp_addresses(lines, count, h265, h265Count);
        // With a refusal the main array holds the refusal's texts instead of lines.
        QJsonObject outputs{{"lines", pushArray(lines, count)},
                            {"count", count},
                            {"h265", pushArray(h265, h265Count)},
                            {"h265Count", h265Count}};
        s.freeArray(lines);
        s.freeArray(h265);
        return withOutputs(r, outputs);
    });
    add("getRtmpAddressList", "", [](S& s, A) {
        std::vector<PushAddress> lines;
        const bool r = s.getRtmpAddressList(lines);
        QJsonArray array;
        for (const PushAddress& line : lines) {
            array.append(pushLine(line));
        }
        return withOutputs(r, {{"lines", array}});
    });
    add("setLiveParameters", "CID2 CID3 MODULE_ID IS_AUDIO ROOM_LIVE_TYPE OBS RTC HDR",
        [](S& s, A a) {
            LiveParameters parameters;
            parameters.cid2 = intArg(a, 0);
            parameters.cid3 = intArg(a, 1);
            parameters.module_id = intArg(a, 2);
            parameters.is_audio = intArg(a, 3);
            parameters.room_live_type = intArg(a, 4);
            parameters.is_third_party_obs = boolArg(a, 5);
            parameters.is_rtc = boolArg(a, 6);
            parameters.is_hdr = boolArg(a, 7);
            return resultOnly(s.setLiveParameters(parameters));
        });
    add("open_live_room", "PUSH_URL",
        [](S& s, A a) { return resultOnly(s.open_live_room(arg(a, 0))); });
    add("stop_live_room", "", [](S& s, A) { return resultOnly(s.stop_live_room()); });
    add("getClassifyInfo", "", [](S& s, A) {
        std::vector<CategoryNode> tree, suggestions;
        std::string message;
        const int32_t r = s.getClassifyInfo(tree, suggestions, message);
        return withOutputs(r, {{"tree", nodeArray(tree)},
                               {"suggestions", nodeArray(suggestions)},
                               {"message", text(message)}});
    });
    add("setLiveClassify", "CID2 CID3", [](S& s, A a) {
        std::string message;
        const int32_t r = s.setLiveClassify(intArg(a, 0), intArg(a, 1), message);
        return withOutputs(r, {{"message", text(message)}});
    });
    add("getLiveTags", "", [](S& s, A) {
        bool hasTags = false;
        int32_t hasIcon = 0;
        std::string groupName, message;
        std::vector<CategoryNode> tags;
        const int32_t r = s.getLiveTags(hasTags, hasIcon, groupName, tags, message);
        return withOutputs(r, {{"hasTags", hasTags},
                               {"hasIcon", hasIcon},
                               {"tagGroupName", text(groupName)},
                               {"tags", nodeArray(tags)},
                               {"message", text(message)}});
    });
    add("setGameTag", "TID", [](S& s, A a) {
        std::string message;
        const int32_t r = s.setGameTag(intArg(a, 0), message);
        return withOutputs(r, {{"message", text(message)}});
    });
    add("classifyIsVoice", "", [](S& s, A) {
        bool isVoice = false;
        std::string message;
        const int32_t r = s.classifyIsVoice(&isVoice, message);
        return withOutputs(r, {{"isVoice", isVoice}, {"message", text(message)}});
    });
    add("submitGameInfoEx", "NAME PROCESS TYPE", [](S& s, A a) {
        GameProcessInfo game;
        game.name = arg(a, 0);
        game.process = arg(a, 1);
        game.type = intArg(a, 2);
        std::string message;
        const int32_t r = s.submitGameInfoEx(game, message);
        return withOutputs(r, {{"message", text(message)}});
    });
    add("isAvailable", "", [](S& s, A) { return resultOnly(s.isAvailable()); });
    add("getAppId", "", [](S& s, A) { return resultOnly(QString::fromUtf8(s.getAppId())); });
    add("getBizType", "", [](S& s, A) { return resultOnly(s.getBizType()); });
    add("getRoomId", "", [](S& s, A) { return resultOnly(s.getRoomId()); });
    addRoomSettingsCalls(add);
    addAnchorCalls(add);
    addAccountCodeCalls(add);
    addCatalogueCalls(add);
    addSessionCalls(add);
    addBarrageCalls(add);
    addServiceCalls(add);
    addRoomCalls(add);
    return calls;
}

}  // namespace

namespace host_calls {

QJsonArray nodeArray(const std::vector<CategoryNode>& nodes) {
    QJsonArray array;
    for (const CategoryNode& node : nodes) {
        array.append(QJsonObject{{"id", node.id},
                                 {"parentId", node.parentId},
                                 {"name", QString::fromStdU16String(node.name)},
                                 {"secondText", QString::fromStdU16String(node.secondText)},
                                 {"extraValue1", node.extraValue1},
                                 {"extraValue2", node.extraValue2},
                                 {"children", nodeArray(node.children)}});
    }
    return array;
}

}  // namespace host_calls

const QVector<OperationCall>& operationCalls() {
    static const QVector<OperationCall> calls = buildCalls();
    return calls;
}

const OperationCall* findOperation(const QString& name) {
    for (const OperationCall& call : operationCalls()) {
        if (call.name == name) {
            return &call;
        }
    }
    return nullptr;
}

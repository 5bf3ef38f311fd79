// Replies about the anchor's room: its information, the barrage gateway and its live state.
#include <QHostAddress>
#include <QJsonArray>
#include <QJsonObject>

#include "parse/data_parser.h"
#include "parse/reply_texts.h"
#include "log/log_writer.h"

namespace {

void logInvalidServer(const QString& ip, const QString& port) {
    tolvane::log::writeLine(tolvane::log::kMainLog,
                            QStringLiteral("invalid IP:%1  port:%2").arg(ip, port));
}

bool isHostAddress(const QString& ip) {
    QHostAddress address;
    return address.setAddress(ip);
}

// The host works with 8-bit texts in the local code page, which is UTF-8 on this platform.
std::string localText(const QJsonObject& object, const char* key) {
    return DataParser::readString(object, QLatin1String(key), QString()).toStdString();
}

}  // namespace

int DataParser::parseRoomInfoResult(const QByteArray& bytes, std::string& errorMessage,
                                    QList<ServerAddress>& servers) {
    QJsonObject data;
    if (const int result = parseDataObject("parseRoomInfoResult", bytes, data, &errorMessage);
        result != 0) {
        return result;
    }

    RoomInfo& room = state_.roomInfo;
    room.online = readInt(data, QStringLiteral("online"), 0);
    room.roomName = localText(data, "room_name");
    room.gameName = localText(data, "game_name");
    room.cateId = readString(data, QStringLiteral("cate_id"), QString()).toInt(nullptr, 10);
    room.childName = localText(data, "child_name");
    room.ownerWeight = localText(data, "owner_weight");

    QJsonArray list;
    if (readArray(data, QStringLiteral("servers"), list)) {
        for (const QJsonValue& entry : qAsConst(list)) {
            if (!entry.isObject()) {
                continue;
            }
            const QJsonObject server = entry.toObject();
            const QString ip = readString(server, QStringLiteral("ip"), QString()).trimmed();
            const QString port = readString(server, QStringLiteral("port"), QString());
            if (ip.isEmpty() || port.isEmpty()) {
                continue;
            }
            if (isHostAddress(ip)) {
                servers.append(ServerAddress{ip, port.toInt(nullptr, 10)});
            } else {
                logInvalidServer(ip, port);
            }
        }
    }

    room.roomId = readInt(data, QStringLiteral("room_id"), -1);
    room.vipId = readInt(data, QStringLiteral("vipId"), 0);
    QJsonObject level;
    if (readObject(data, QStringLiteral("anchor_level"), level)) {
        room.anchorLevel =
            readString(level, QStringLiteral("level"), QStringLiteral("0")).toInt(nullptr, 10);
    }
    return 0;
}

int DataParser::parseGatewayResult(const QByteArray& bytes, std::string& errorMessage,
                                   QList<ServerAddress>& servers) {
    QJsonObject data;
    if (const int result = parseDataObject("parseGatewayResult", bytes, data, &errorMessage);
        result != 0) {
        return result;
    }
    QJsonArray list;
    if (!readArray(data, QStringLiteral("iplist"), list)) {
        return 0;
    }
    for (const QJsonValue& entry : qAsConst(list)) {
        if (!entry.isObject()) {
            continue;
        }
        const QJsonObject server = entry.toObject();
        const QString ip = readString(server, QStringLiteral("ip"), QString()).trimmed();
        const int port = readInt(server, QStringLiteral("port"), 0);
        // Unlike the room's own list, the gateway states its ports as numbers.
        if (ip.isEmpty() || port < 1) {
            continue;
        }
        if (isHostAddress(ip)) {
            servers.append(ServerAddress{ip, port});
        } else {
            logInvalidServer(ip, QString::number(port));
        }
    }
    return 0;
}

int DataParser::parseIsRoomBroadcastingResult(const QByteArray& bytes, bool& live, bool& showType) {
    QJsonObject data;
    if (const int result = parseDataObject("parseIsRoomBroadcastingResult", bytes, data, nullptr);
        result != 0) {
        return result;
    }
    constexpr int kLive = 1;
    constexpr int kShowTypeFlagged = 3;
    live = readString(data, QStringLiteral("show_status"), QString()).toInt(nullptr, 10) == kLive;
    showType = readInt(data, QStringLiteral("roomShowType"), 0) == kShowTypeFlagged;
    return 0;
}

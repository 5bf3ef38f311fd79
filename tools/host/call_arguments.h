#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QStringList>
#include <cstdint>
#include <functional>
#include <string>

#include "tolvane/i_liveencoder_net_service.h"

// What every `tolvane-host call` entry shares: reading its text arguments and shaping its JSON.
namespace host_calls {

// The result code of an operation the network never answered.
constexpr int32_t kNoAnswer = 210;

using CallRunner = std::function<QJsonObject(ILiveencoderNetService&, const QStringList&)>;
// Registers one entry: its name, the arguments for the help text, and how to run it.
using AddCall = std::function<void(const char* name, const char* usage, CallRunner run)>;

inline QString text(const std::string& value) {
    return QString::fromStdString(value);
}

inline QString text(const std::u16string& value) {
    return QString::fromStdU16String(value);
}

// A missing argument reads as empty or zero, so that the module sees what a careless host sends.
inline std::string arg(const QStringList& args, int index) {
    return index < args.size() ? args.at(index).toStdString() : std::string();
}

inline int32_t intArg(const QStringList& args, int index) {
    return index < args.size() ? args.at(index).toInt() : 0;
}

inline bool boolArg(const QStringList& args, int index) {
    const QString value = args.value(index);
    return value == QStringLiteral("1") ||
           value.compare(QStringLiteral("true"), Qt::CaseInsensitive) == 0;
}

inline QJsonObject resultOnly(const QJsonValue& result) {
    return {{"result", result}};
}

inline QJsonObject withOutputs(const QJsonValue& result, const QJsonObject& outputs) {
    return {{"result", result}, {"outputs", outputs}};
}

// A category or tag tree, children nested (operation_calls.cpp).
QJsonArray nodeArray(const std::vector<CategoryNode>& nodes);

// operation_calls_room_settings.cpp: the room's settings, presets, reminder and statistics.
void addRoomSettingsCalls(const AddCall& add);
// operation_calls_anchor.cpp: the anchor's queries, black list, customer service and feedback.
void addAnchorCalls(const AddCall& add);
// operation_calls_account_codes.cpp: SMS codes, phone binding, QR login, app authorisation.
void addAccountCodeCalls(const AddCall& add);
// operation_calls_catalogue.cpp: the gift and resource catalogue (slots 26, 49 and 94).
void addCatalogueCalls(const AddCall& add);
// operation_calls_session.cpp: the session record, the user record's fields, logout.
void addSessionCalls(const AddCall& add);
// operation_calls_barrage.cpp: sending on the barrage connection and what it last reported.
void addBarrageCalls(const AddCall& add);
// operation_calls_service.cpp: the service's life, its settings and host-composed requests.
void addServiceCalls(const AddCall& add);
// operation_calls_room.cpp: the room record's fields, its address and stored lists.
void addRoomCalls(const AddCall& add);

}  // namespace host_calls

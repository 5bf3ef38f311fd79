#include "outgoing_messages.h"

#include <initializer_list>
#include <utility>

#include "vxencoder/vx_encoder.h"
#include "vxencoder/vx_frame.h"
#include "vxencoder/vx_wire_names.h"

namespace corvid {

namespace {

using Item = std::pair<const char*, std::string>;

std::string encode(std::initializer_list<Item> items) {
    // One byte more than a frame's payload for the encoder's NUL.
    vxEncoder encoder(vxframe::kDefaultMaxPayload + 1);
    for (const Item& item : items) {
        encoder.AddItem(item.first, item.second.c_str());
    }
    return encoder.GetResult();
}

}  // namespace

std::string buildLoginMessage(const LoginValues& v) {
    return encode({{vxwire::kType, vxwire::kLogin},
                   {vxwire::kLoginText1, v.loginText1},
                   {vxwire::kLoginNumber, std::to_string(v.loginNumber)},
                   {vxwire::kLoginText2, v.loginText2},
                   {vxwire::kClientType, std::to_string(v.clientType)},
                   {vxwire::kRoomId, std::to_string(v.roomId)},
                   {vxwire::kExtra, v.extraText},
                   {vxwire::kLoginMode, std::to_string(v.loginMode)},
                   {vxwire::kParamText, v.parameterText},
                   {vxwire::kParamNumber, std::to_string(v.parameterNumber)},
                   {vxwire::kParamText2, v.parameterText2}});
}

std::string buildKeepAliveMessage(int32_t tick) {
    return encode({{vxwire::kType, vxwire::kKeepAlive}, {vxwire::kTick, std::to_string(tick)}});
}

std::string buildChatMessage(const char* text) {
    return encode({{vxwire::kType, vxwire::kChat}, {vxwire::kText, text}});
}

std::string buildRoomTextMessage(const char* text) {
    return encode({{vxwire::kType, vxwire::kRoomText}, {vxwire::kText, text}});
}

std::string buildGiftMessage(const int32_t (&values)[6], const char* extraText) {
    return encode({{vxwire::kType, vxwire::kGiftSend},
                   {vxwire::kGiftArgs[0], std::to_string(values[0])},
                   {vxwire::kGiftArgs[1], std::to_string(values[1])},
                   {vxwire::kGiftArgs[2], std::to_string(values[2])},
                   {vxwire::kGiftArgs[3], std::to_string(values[3])},
                   {vxwire::kGiftArgs[4], std::to_string(values[4])},
                   {vxwire::kGiftArgs[5], std::to_string(values[5])},
                   {vxwire::kGiftArgs[6], extraText}});
}

std::string buildMemberInfoRequest(int32_t roomId) {
    return encode(
        {{vxwire::kType, vxwire::kMemberInfo}, {vxwire::kRoomId, std::to_string(roomId)}});
}

}  // namespace corvid

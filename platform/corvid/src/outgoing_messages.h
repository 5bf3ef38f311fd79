#pragma once

#include <cstdint>
#include <string>

// The texts the client itself sends. Each builder returns an empty text when the result
// would not fit in one frame.
namespace corvid {

struct LoginValues {
    std::string loginText1;
    int32_t loginNumber = 0;
    std::string loginText2;
    int32_t clientType = 0;
    int32_t roomId = 0;
    std::string extraText;
    int32_t loginMode = 0;
    std::string parameterText;
    int32_t parameterNumber = 0;
    std::string parameterText2;
};

std::string buildLoginMessage(const LoginValues& values);
std::string buildKeepAliveMessage(int32_t tick);
std::string buildChatMessage(const char* text);
std::string buildRoomTextMessage(const char* text);
std::string buildGiftMessage(const int32_t (&values)[6], const char* extraText);
std::string buildMemberInfoRequest(int32_t roomId);

}  // namespace corvid

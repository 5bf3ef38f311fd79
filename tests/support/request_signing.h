#pragma once

#include <string>

#include "halyard/auth_code.h"

// The signing library's code for a text, released at once; empty when the library gives none.
inline std::string authCode(const std::string& text, bool live = false) {
    char* code = live ? GenerateAuthCodeLive(text.c_str()) : GenerateAuthCode(text.c_str());
    std::string result = code != nullptr ? code : "";
    FreeAuthCode(code);
    return result;
}

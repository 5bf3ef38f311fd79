#include "vx_escape.h"

namespace vxescape {

namespace {

bool needsEscape(char c) {
    return c == kEscape || c == kAssign || c == kEnd;
}

}  // namespace

std::size_t escapedLength(std::string_view text) {
    std::size_t length = text.size();
    for (char c : text) {
        if (needsEscape(c)) {
            ++length;
        }
    }
    return length;
}

char* escapeInto(std::string_view text, char* out) {
    for (char c : text) {
        if (c == kEscape) {
            *out++ = kEscape;
            *out++ = kEscape;
        } else if (c == kAssign) {
            *out++ = kEscape;
            *out++ = 'e';
        } else if (c == kEnd) {
            *out++ = kEscape;
            *out++ = 's';
        } else {
            *out++ = c;
        }
    }
    return out;
}

bool unescape(std::string_view text, std::string& out) {
    // Most items carry no escape at all; copy them whole.
    if (text.find(kEscape) == std::string_view::npos) {
        out.assign(text.data(), text.size());
        return true;
    }
    out.clear();
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c != kEscape) {
            out.push_back(c);
            continue;
        }
        if (++i == text.size()) {
            return false;
        }
        switch (text[i]) {
            case kEscape:
                out.push_back(kEscape);
                break;
            case 'e':
                out.push_back(kAssign);
                break;
            case 's':
                out.push_back(kEnd);
                break;
            default:
                return false;
        }
    }
    return true;
}

}  // namespace vxescape

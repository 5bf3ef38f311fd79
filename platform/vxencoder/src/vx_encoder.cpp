#include "vxencoder/vx_encoder.h"

#include <cstring>
#include <string_view>

#include "vx_escape.h"

vxEncoder::vxEncoder(std::size_t bufferSize)
    : buffer_(bufferSize > 0 ? new char[bufferSize] : nullptr), capacity_(bufferSize) {
    if (buffer_) {
        buffer_[0] = '\0';
    }
}

vxEncoder::~vxEncoder() = default;

bool vxEncoder::AddItem(const char* key, const char* value) {
    if (failed_) {
        return false;
    }
    if (key == nullptr || value == nullptr || *key == '\0') {
        failed_ = true;
        return false;
    }
    const std::string_view keyText(key);
    const std::string_view valueText(value);
    const std::size_t keyLength = vxescape::escapedLength(keyText);
    const std::size_t valueLength = vxescape::escapedLength(valueText);
    // Each term is bounded by the input lengths, so the sum can't wrap on a 64-bit size_t.
    const std::size_t needed = keyLength + 1 + valueLength + 1;
    // The terminating NUL must still fit after the item.
    if (capacity_ == 0 || needed > capacity_ - 1 - length_) {
        failed_ = true;
        return false;
    }
    char* out = buffer_.get() + length_;
    out = vxescape::escapeInto(keyText, out);
    *out++ = vxescape::kAssign;
    out = vxescape::escapeInto(valueText, out);
    *out++ = vxescape::kEnd;
    *out = '\0';
    length_ += needed;
    return true;
}

const char* vxEncoder::GetResult() const {
    if (failed_ || !buffer_) {
        return "";
    }
    return buffer_.get();
}

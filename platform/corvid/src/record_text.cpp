#include "record_text.h"

#include <cstring>

namespace corvid {

namespace {

bool isContinuationByte(char c) {
    return (static_cast<unsigned char>(c) & 0xC0u) == 0x80u;
}

}  // namespace

void copyRecordText(std::string_view text, char* field, std::size_t fieldSize) {
    if (fieldSize == 0) {
        return;
    }
    std::size_t length = text.size();
    if (length > fieldSize - 1) {
        length = fieldSize - 1;
        // Back off over continuation bytes and the lead byte whose character was cut.
        if (isContinuationByte(text[length])) {
            while (length > 0 && isContinuationByte(text[length])) {
                --length;
            }
        }
    }
    if (length > 0) {
        std::memcpy(field, text.data(), length);
    }
    std::memset(field + length, 0, fieldSize - length);
}

}  // namespace corvid

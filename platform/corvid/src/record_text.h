#pragma once

#include <cstddef>
#include <string_view>

namespace corvid {

// Copies text into a field of fieldSize bytes, NUL-terminated, cutting it at the last whole
// UTF-8 character that fits so a reader never meets half a character; the rest is zeroed.
void copyRecordText(std::string_view text, char* field, std::size_t fieldSize);

}  // namespace corvid

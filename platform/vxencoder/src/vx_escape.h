#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// The escaping of keys and values: "\" -> "\\", "=" -> "\e", ";" -> "\s". Escaped text holds no
// raw "=" or ";", so a reader can split items before it unescapes them.
namespace vxescape {

constexpr char kEscape = '\\';
constexpr char kAssign = '=';
constexpr char kEnd = ';';

// Length of text once escaped.
std::size_t escapedLength(std::string_view text);

// Writes the escaped text to out, which must hold escapedLength(text) bytes; returns the end.
char* escapeInto(std::string_view text, char* out);

// Undoes the escaping; false on a dangling "\" or an unknown escape.
bool unescape(std::string_view text, std::string& out);

}  // namespace vxescape

#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

struct vxItem {
    std::string key;
    std::string value;
};

// One item of a text as it stands, before unescaping; the flags say whether the key or the
// value holds an escape at all (most hold none, and can be used as they are).
struct vxRawItem {
    std::string_view key;
    std::string_view value;
    bool keyEscaped = false;
    bool valueEscaped = false;
};

// Reads a barrage text written by vxEncoder back into its items. Parsing is all or nothing:
// a stray escape, an item without "=", an empty key or text after the last ";" rejects the
// whole text, so a half-read message never reaches a caller.
class vxDecoder {
public:
    // Replaces the current items with those of text; false (and no items) when malformed.
    bool Parse(std::string_view text);

    const std::vector<vxItem>& Items() const { return items_; }

    // The value of the text's first item when its key is `key`, without decoding the rest;
    // false when the first item is another key or malformed.
    static bool PeekFirst(std::string_view text, std::string_view key, std::string& value);

    // Walks text item by item without copying anything, for readers that want a few items of
    // every message: visit(const vxRawItem&) is called for each in order. Refuses exactly the
    // texts Parse refuses, but items before the fault have been visited by then.
    template <typename Visit>
    static bool Scan(std::string_view text, Visit&& visit);

    // Undoes the escaping of a raw key or value; false when it is malformed.
    static bool Unescape(std::string_view raw, std::string& out);
    // Whether every escape in a raw key or value is one Unescape accepts.
    static bool WellEscaped(std::string_view raw);

    // The value of the first item with this key, or null.
    const std::string* Find(std::string_view key) const;

    // The value of key read as a whole decimal number in range; false when absent or not one.
    bool GetInt32(std::string_view key, int32_t& out) const;
    bool GetInt64(std::string_view key, int64_t& out) const;
    // A finite decimal number (locale-independent); false otherwise.
    bool GetDouble(std::string_view key, double& out) const;
    // The value of key, or an empty text when absent.
    std::string GetText(std::string_view key) const;

private:
    std::vector<vxItem> items_;
};

namespace vxscan {

// Whether a raw span holds "=" or "\": a byte loop for the short spans that most keys and
// header values are, where a library call would cost more than the search.
inline void find(std::string_view span, bool& assign, bool& escape) {
    if (span.size() <= 16) {
        for (const char c : span) {
            assign |= c == '=';
            escape |= c == '\\';
        }
        return;
    }
    assign = std::memchr(span.data(), '=', span.size()) != nullptr;
    escape = std::memchr(span.data(), '\\', span.size()) != nullptr;
}

// Whether a raw span holds c, with the same byte loop for short spans.
inline bool contains(std::string_view span, char c) {
    if (span.size() <= 16) {
        bool found = false;
        for (const char each : span) {
            found |= each == c;
        }
        return found;
    }
    return std::memchr(span.data(), c, span.size()) != nullptr;
}

}  // namespace vxscan

template <typename Visit>
bool vxDecoder::Scan(std::string_view text, Visit&& visit) {
    // Items are split at the raw ";" and "=" first, since escaped text holds neither; only a
    // key or value that holds a "\" is then read escape by escape.
    const char* const base = text.data();
    // Most texts hold no escape at all: one search of the whole text spares every key and
    // value its own.
    const bool anyEscape = !text.empty() && std::memchr(base, '\\', text.size()) != nullptr;
    std::size_t start = 0;
    while (start < text.size()) {
        const char* end =
            static_cast<const char*>(std::memchr(base + start, ';', text.size() - start));
        if (end == nullptr) {
            return false;
        }
        const std::size_t length = static_cast<std::size_t>(end - base) - start;
        const char* assign = static_cast<const char*>(std::memchr(base + start, '=', length));
        if (assign == nullptr || assign == base + start) {
            return false;
        }
        vxRawItem item;
        item.key = text.substr(start, static_cast<std::size_t>(assign - base) - start);
        item.value = std::string_view(assign + 1, static_cast<std::size_t>(end - assign - 1));
        bool keyAssign = false;
        bool valueAssign = false;
        if (anyEscape) {
            vxscan::find(item.key, keyAssign, item.keyEscaped);
            vxscan::find(item.value, valueAssign, item.valueEscaped);
        } else {
            valueAssign = vxscan::contains(item.value, '=');
        }
        if (valueAssign || (item.keyEscaped && !WellEscaped(item.key)) ||
            (item.valueEscaped && !WellEscaped(item.value))) {
            return false;
        }
        visit(static_cast<const vxRawItem&>(item));
        start = static_cast<std::size_t>(end - base) + 1;
    }
    return true;
}

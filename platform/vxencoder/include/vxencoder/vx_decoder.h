#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#if defined(_MSC_VER)
#include <intrin.h>
#endif

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

// Texts are read this many bytes at a time.
constexpr std::size_t kChunk = 512;
constexpr std::size_t kChunkWords = kChunk / 64;

// Marks every ";", "=" and "\" among the first size (at most kChunk) bytes: bit i % 64 of
// marks[i / 64] is byte i. The last word's bits past size are clear; later words are untouched.
void mark(const char* bytes, std::size_t size, uint64_t (&marks)[kChunkWords]);

// The index of the lowest set bit of a word that has one.
inline std::size_t lowestBit(uint64_t bits) {
#if defined(_MSC_VER)
    unsigned long index = 0;
    _BitScanForward64(&index, bits);
    return index;
#else
    return static_cast<std::size_t>(__builtin_ctzll(bits));
#endif
}

}  // namespace vxscan

template <typename Visit>
bool vxDecoder::Scan(std::string_view text, Visit&& visit) {
    // One pass marks the separators and escapes, a block of bytes at a time; the walk then
    // stops only at those bytes, instead of searching the text again for each separator.
    constexpr std::size_t kNone = std::string_view::npos;
    const char* const base = text.data();
    const std::size_t size = text.size();
    std::size_t itemStart = 0;
    std::size_t assign = kNone;
    bool keyEscaped = false;
    bool valueEscaped = false;
    uint64_t marks[vxscan::kChunkWords];
    for (std::size_t chunk = 0; chunk < size; chunk += vxscan::kChunk) {
        const std::size_t length = size - chunk < vxscan::kChunk ? size - chunk : vxscan::kChunk;
        vxscan::mark(base + chunk, length, marks);
        for (std::size_t word = 0; word * 64 < length; ++word) {
            for (uint64_t bits = marks[word]; bits != 0; bits &= bits - 1) {
                const std::size_t at = chunk + word * 64 + vxscan::lowestBit(bits);
                const char c = base[at];
                if (c == '\\') {
                    (assign == kNone ? keyEscaped : valueEscaped) = true;
                } else if (c == '=') {
                    // An empty key, or a second "=" in one item.
                    if (assign != kNone || at == itemStart) {
                        return false;
                    }
                    assign = at;
                } else {
                    if (assign == kNone) {
                        return false;
                    }
                    vxRawItem item;
                    item.key = std::string_view(base + itemStart, assign - itemStart);
                    item.value = std::string_view(base + assign + 1, at - assign - 1);
                    item.keyEscaped = keyEscaped;
                    item.valueEscaped = valueEscaped;
                    if ((keyEscaped && !WellEscaped(item.key)) ||
                        (valueEscaped && !WellEscaped(item.value))) {
                        return false;
                    }
                    visit(static_cast<const vxRawItem&>(item));
                    itemStart = at + 1;
                    assign = kNone;
                    keyEscaped = false;
                    valueEscaped = false;
                }
            }
        }
    }
    // Text after the last ";" is an item without its end.
    return itemStart == size;
}

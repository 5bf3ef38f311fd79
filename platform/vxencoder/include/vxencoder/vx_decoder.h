#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct vxItem {
    std::string key;
    std::string value;
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

#include "vxencoder/vx_decoder.h"

#include <charconv>
#include <cmath>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "vx_escape.h"

bool vxDecoder::Parse(std::string_view text) {
    // Items are decoded in place, reusing the previous message's storage; a malformed text
    // leaves no items at all.
    std::size_t count = 0;
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = text.find(vxescape::kEnd, start);
        const std::string_view item =
            end == std::string_view::npos ? std::string_view() : text.substr(start, end - start);
        const std::size_t assign = item.find(vxescape::kAssign);
        if (end == std::string_view::npos || assign == std::string_view::npos || assign == 0 ||
            item.find(vxescape::kAssign, assign + 1) != std::string_view::npos) {
            items_.clear();
            return false;
        }
        if (count == items_.size()) {
            items_.emplace_back();
        }
        vxItem& decoded = items_[count++];
        if (!vxescape::unescape(item.substr(0, assign), decoded.key) ||
            !vxescape::unescape(item.substr(assign + 1), decoded.value)) {
            items_.clear();
            return false;
        }
        start = end + 1;
    }
    items_.resize(count);
    return true;
}

bool vxDecoder::PeekFirst(std::string_view text, std::string_view key, std::string& value) {
    const std::size_t end = text.find(vxescape::kEnd);
    if (end == std::string_view::npos || text.size() <= key.size() ||
        text.compare(0, key.size(), key) != 0 || text[key.size()] != vxescape::kAssign) {
        return false;
    }
    const std::string_view raw = text.substr(key.size() + 1, end - key.size() - 1);
    return raw.find(vxescape::kAssign) == std::string_view::npos && vxescape::unescape(raw, value);
}

bool vxDecoder::Unescape(std::string_view raw, std::string& out) {
    return vxescape::unescape(raw, out);
}

bool vxDecoder::WellEscaped(std::string_view raw) {
    for (std::size_t i = 0; i < raw.size(); ++i) {
        if (raw[i] != vxescape::kEscape) {
            continue;
        }
        if (++i == raw.size()) {
            return false;
        }
        const char next = raw[i];
        if (next != vxescape::kEscape && next != 'e' && next != 's') {
            return false;
        }
    }
    return true;
}

namespace {

#if defined(__SSE2__)
// The marks of 16 bytes, one bit a byte.
uint64_t marksOf16(const char* bytes) {
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
    const __m128i hits =
        _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(b, _mm_set1_epi8(vxescape::kEnd)),
                                  _mm_cmpeq_epi8(b, _mm_set1_epi8(vxescape::kAssign))),
                     _mm_cmpeq_epi8(b, _mm_set1_epi8(vxescape::kEscape)));
    return static_cast<uint32_t>(_mm_movemask_epi8(hits));
}
#endif

// The marks of 64 bytes, one bit a byte.
uint64_t marksOf64(const char* bytes) {
#if defined(__SSE2__)
    return marksOf16(bytes) | marksOf16(bytes + 16) << 16 | marksOf16(bytes + 32) << 32 |
           marksOf16(bytes + 48) << 48;
#else
    uint64_t marks = 0;
    for (int i = 0; i < 64; ++i) {
        const char c = bytes[i];
        const bool hit = c == vxescape::kEnd || c == vxescape::kAssign || c == vxescape::kEscape;
        marks |= static_cast<uint64_t>(hit) << i;
    }
    return marks;
#endif
}

}  // namespace

void vxscan::mark(const char* bytes, std::size_t size, uint64_t (&marks)[kChunkWords]) {
    std::size_t word = 0;
    for (; (word + 1) * 64 <= size; ++word) {
        marks[word] = marksOf64(bytes + word * 64);
    }
    const std::size_t left = size - word * 64;
    if (left == 0) {
        return;
    }
    if (word > 0) {
        // The last 64 bytes overlap bytes already marked; their bits are shifted out.
        marks[word] = marksOf64(bytes + size - 64) >> (64 - left);
        return;
    }
    // A text shorter than 64 bytes is read from a copy, never past its end; NUL is no mark.
    char copy[64] = {};
    std::memcpy(copy, bytes, left);
    marks[word] = marksOf64(copy);
}

const std::string* vxDecoder::Find(std::string_view key) const {
    for (const vxItem& item : items_) {
        if (item.key == key) {
            return &item.value;
        }
    }
    return nullptr;
}

namespace {

template <typename Integer>
bool readInteger(const std::string* value, Integer& out) {
    if (value == nullptr || value->empty()) {
        return false;
    }
    Integer parsed = 0;
    const char* first = value->data();
    const char* last = first + value->size();
    const auto result = std::from_chars(first, last, parsed);
    if (result.ec != std::errc() || result.ptr != last) {
        return false;
    }
    out = parsed;
    return true;
}

}  // namespace

bool vxDecoder::GetInt32(std::string_view key, int32_t& out) const {
    return readInteger(Find(key), out);
}

bool vxDecoder::GetInt64(std::string_view key, int64_t& out) const {
    return readInteger(Find(key), out);
}

bool vxDecoder::GetDouble(std::string_view key, double& out) const {
    const std::string* value = Find(key);
    if (value == nullptr || value->empty()) {
        return false;
    }
    double parsed = 0;
    const char* first = value->data();
    const char* last = first + value->size();
    const auto result = std::from_chars(first, last, parsed, std::chars_format::general);
    if (result.ec != std::errc() || result.ptr != last || !std::isfinite(parsed)) {
        return false;
    }
    out = parsed;
    return true;
}

std::string vxDecoder::GetText(std::string_view key) const {
    const std::string* value = Find(key);
    return value != nullptr ? *value : std::string();
}

#include "vx_message_decoder.h"

#include <charconv>
#include <cstring>
#include <iterator>
#include <limits>

#include "corvid/message_codes.h"
#include "record_text.h"
#include "vxencoder/vx_wire_names.h"

namespace corvid {

void VxMessageDecoder::destroy() {
    delete this;
}

bool VxMessageDecoder::parseAs(const char* message, std::string_view type) {
    if (message == nullptr || !items_.Parse(message) || items_.Items().empty()) {
        return false;
    }
    const vxItem& first = items_.Items().front();
    return first.key == vxwire::kType && first.value == type;
}

int32_t VxMessageDecoder::intOrZero(std::string_view key) const {
    int32_t value = 0;
    return items_.GetInt32(key, value) ? value : 0;
}

void VxMessageDecoder::copyText(std::string_view key, char* field, std::size_t size) const {
    const std::string* value = items_.Find(key);
    copyRecordText(value != nullptr ? std::string_view(*value) : std::string_view(), field, size);
}

bool VxMessageDecoder::decodeShowEnd(const char* message, int32_t* reason, double* banHours) {
    if (reason == nullptr || banHours == nullptr) {
        return false;
    }
    *reason = 0;
    *banHours = 0;
    int32_t parsedReason = 0;
    double parsedHours = 0;
    if (!parseAs(message, vxwire::kShowEnd) || !items_.GetInt32(vxwire::kReason, parsedReason)) {
        return false;
    }
    if (items_.Find(vxwire::kBanHours) != nullptr) {
        // A reader truncates the hours to a 32-bit integer, which must then be defined.
        constexpr double kLimit = std::numeric_limits<int32_t>::max();
        if (!items_.GetDouble(vxwire::kBanHours, parsedHours) || parsedHours > kLimit ||
            parsedHours < -kLimit) {
            return false;
        }
    }
    *reason = parsedReason;
    *banHours = parsedHours;
    return true;
}

bool VxMessageDecoder::decodeKeepAlive(const char* message, KeepAliveRecord* record) {
    if (record == nullptr) {
        return false;
    }
    *record = KeepAliveRecord{};
    KeepAliveRecord decoded{};
    if (!parseAs(message, vxwire::kKeepAlive) ||
        !items_.GetInt32(vxwire::kOnline, decoded.online) ||
        !items_.GetInt32(vxwire::kHot, decoded.hot)) {
        return false;
    }
    decoded.tick = intOrZero(vxwire::kTick);
    decoded.timestamp = intOrZero(vxwire::kTimestamp);
    *record = decoded;
    return true;
}

bool VxMessageDecoder::decodeMemberInfoReply(const char* message, MemberInfoRecord* record) {
    if (record == nullptr) {
        return false;
    }
    std::memset(record, 0, sizeof *record);
    int32_t memberCount = 0;
    if (!parseAs(message, vxwire::kMemberInfoReply) ||
        !items_.GetInt32(vxwire::kMemberCount, memberCount)) {
        return false;
    }
    record->roomId = intOrZero(vxwire::kRoomId);
    record->ownerId = intOrZero("ouid");
    record->level = intOrZero(vxwire::kLevel);
    record->fans = intOrZero("fans");
    record->followers = intOrZero("fl");
    record->memberCount = memberCount;
    copyText("rn", record->roomName, sizeof record->roomName);
    copyText("on", record->ownerName, sizeof record->ownerName);
    copyText("nt", record->notice, sizeof record->notice);
    return true;
}

bool VxMessageDecoder::decodeError(const char* message, int32_t* code) {
    if (code == nullptr) {
        return false;
    }
    *code = 0;
    int32_t parsed = 0;
    if (!parseAs(message, vxwire::kError) || !items_.GetInt32(vxwire::kCode, parsed)) {
        return false;
    }
    *code = parsed;
    return true;
}

bool VxMessageDecoder::decodeLoginReply(const char* message, LoginReplyRecord* record) {
    if (record == nullptr) {
        return false;
    }
    std::memset(record, 0, sizeof *record);
    if (!parseAs(message, vxwire::kLoginReply)) {
        return false;
    }
    record->result = intOrZero("ret");
    record->userId = intOrZero(vxwire::kUserId);
    record->roomId = intOrZero(vxwire::kRoomId);
    record->serverTime = intOrZero(vxwire::kTimestamp);
    record->keepAliveSeconds = intOrZero("kas");
    copyText("sid", record->session, sizeof record->session);
    copyText(vxwire::kNickname, record->nickname, sizeof record->nickname);
    copyText("sn", record->serverName, sizeof record->serverName);
    record->roomStatus = intOrZero("rs");
    record->level = intOrZero(vxwire::kLevel);
    return true;
}

bool VxMessageDecoder::decodeNoticeValue(const char* message, NoticeValueRecord* record) {
    if (record == nullptr) {
        return false;
    }
    *record = NoticeValueRecord{};
    int32_t value = 0;
    if (!parseAs(message, vxwire::kNobleCount) || !items_.GetInt32(vxwire::kNumber, value)) {
        return false;
    }
    record->roomId = intOrZero(vxwire::kRoomId);
    record->value = value;
    record->timestamp = intOrZero(vxwire::kTimestamp);
    return true;
}

bool VxMessageDecoder::decodeFansBrand(const char* message, FansBrandRecord* record) {
    if (record == nullptr) {
        return false;
    }
    std::memset(record, 0, sizeof *record);
    if (!parseAs(message, vxwire::kFansBrand) || items_.Find(vxwire::kBrand) == nullptr) {
        return false;
    }
    record->roomId = intOrZero(vxwire::kRoomId);
    copyText(vxwire::kBrand, record->brand, sizeof record->brand);
    return true;
}

bool VxMessageDecoder::rawEquals(std::string_view raw, bool escaped, std::string_view plain) {
    if (!escaped) {
        return raw == plain;
    }
    return vxDecoder::Unescape(raw, scratch_) && scratch_ == plain;
}

int32_t VxMessageDecoder::rawInt32OrZero(std::string_view raw, bool escaped) {
    if (escaped) {
        if (!vxDecoder::Unescape(raw, scratch_)) {
            return 0;
        }
        raw = scratch_;
    }
    // Five numbers a message: a digit loop with one range check at the end costs a third of
    // std::from_chars, which checks every digit; it reads what from_chars reads (an optional
    // "-", then digits only), and leaves the rare long texts to it.
    const bool negative = !raw.empty() && raw.front() == '-';
    const std::string_view digits = negative ? raw.substr(1) : raw;
    constexpr std::size_t kMaxLoopDigits = 18;  // any such number fits in 64 bits
    if (digits.size() > kMaxLoopDigits) {
        int32_t value = 0;
        const char* last = raw.data() + raw.size();
        const auto result = std::from_chars(raw.data(), last, value);
        return result.ec == std::errc() && result.ptr == last ? value : 0;
    }
    int64_t value = 0;
    for (const char c : digits) {
        const unsigned digit = static_cast<unsigned char>(c) - static_cast<unsigned>('0');
        if (digit > 9) {
            return 0;
        }
        value = value * 10 + digit;
    }
    value = negative ? -value : value;
    const bool inRange = !digits.empty() && value >= std::numeric_limits<int32_t>::min() &&
                         value <= std::numeric_limits<int32_t>::max();
    return inRange ? static_cast<int32_t>(value) : 0;
}

namespace {

// The header field a key fills, in the order of classify's field list, or -1. Every item of
// every message asks, so the few header keys are told apart by length and bytes, not by a
// string compare each.
int headerFieldIndex(std::string_view key) {
    static_assert(std::string_view(vxwire::kSequence) == "seq" &&
                      std::string_view(vxwire::kRoomId) == "rid" &&
                      std::string_view(vxwire::kUserId) == "uid" &&
                      std::string_view(vxwire::kTimestamp) == "ts" &&
                      std::string_view(vxwire::kLevel) == "lv",
                  "the header keys changed");
    if (key.size() == 2) {
        if (key[0] == 't' && key[1] == 's') {
            return 3;
        }
        return key[0] == 'l' && key[1] == 'v' ? 4 : -1;
    }
    if (key.size() != 3) {
        return -1;
    }
    const char a = key[0], b = key[1], c = key[2];
    if (a == 's' && b == 'e' && c == 'q') {
        return 0;
    }
    if (b != 'i' || c != 'd') {
        return -1;
    }
    return a == 'r' ? 1 : (a == 'u' ? 2 : -1);
}

}  // namespace

int32_t VxMessageDecoder::classify(const char* message, MessageHeader* header) {
    if (header == nullptr) {
        return kMessageTypeInvalid;
    }
    std::memset(header, 0, sizeof *header);
    if (message == nullptr) {
        return kMessageTypeInvalid;
    }
    // Every message is classified, so this reads the text in place in one pass instead of
    // decoding every item into the item list.
    int32_t* const fields[] = {&header->sequence, &header->roomId, &header->userId,
                               &header->timestamp, &header->level};
    const std::string_view text(message);
    std::size_t count = 0;
    unsigned found = 0;
    bool typed = false;
    vxRawItem typeItem;
    const bool wellFormed = vxDecoder::Scan(text, [&](const vxRawItem& item) {
        if (count++ == 0) {
            typed = rawEquals(item.key, item.keyEscaped, vxwire::kType);
            typeItem = item;
            return;
        }
        std::string_view key = item.key;
        if (item.keyEscaped) {
            if (!vxDecoder::Unescape(key, scratch_)) {
                return;
            }
            key = scratch_;
        }
        // The first occurrence of a key counts, as in vxDecoder::Find.
        const int i = headerFieldIndex(key);
        if (i >= 0 && (found & (1u << i)) == 0) {
            found |= 1u << i;
            *fields[i] = rawInt32OrZero(item.value, item.valueEscaped);
        }
    });
    if (!wellFormed || !typed) {
        std::memset(header, 0, sizeof *header);
        return kMessageTypeInvalid;
    }
    std::string_view type = typeItem.value;
    if (typeItem.valueEscaped) {
        vxDecoder::Unescape(type, scratch_);
        type = scratch_;
    }
    constexpr std::size_t kMax = std::numeric_limits<int32_t>::max();
    header->itemCount = static_cast<int32_t>(count < kMax ? count : kMax);
    copyRecordText(type, header->typeName, sizeof header->typeName);
    header->textLength = static_cast<int32_t>(text.size() < kMax ? text.size() : kMax);
    return messageTypeCode(type);
}

}  // namespace corvid

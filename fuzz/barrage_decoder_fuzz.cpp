// Arbitrary bytes for everything that reads a received barrage text.
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "corvid/message_client_system.h"
#include "corvid/message_codes.h"
#include "vxencoder/vx_decoder.h"

namespace {

MessageDecoder* decoder() {
    static MessageDecoder* instance = [] {
        StartupMessageClientSystem();
        return CreateVxMessageDecoder();
    }();
    return instance;
}

int32_t wholeInt32OrZero(const std::string* text) {
    int32_t value = 0;
    if (text == nullptr) {
        return 0;
    }
    const char* last = text->data() + text->size();
    const auto result = std::from_chars(text->data(), last, value);
    return result.ec == std::errc() && result.ptr == last ? value : 0;
}

// classify reads the text in place; the reference here reads it through the full parse of the
// same text (cut at its first NUL, as the decoder sees it).
void checkClassify(const char* message, int32_t code, const MessageHeader& header) {
    vxDecoder items;
    const bool parsed = items.Parse(message);
    const bool typed = parsed && !items.Items().empty() && items.Items().front().key == "type";
    if (!typed) {
        if (code != kMessageTypeInvalid || header.itemCount != 0) {
            __builtin_trap();
        }
        return;
    }
    const std::string& type = items.Items().front().value;
    if (code != messageTypeCode(type) ||
        header.itemCount != static_cast<int32_t>(items.Items().size()) ||
        header.sequence != wholeInt32OrZero(items.Find("seq")) ||
        header.roomId != wholeInt32OrZero(items.Find("rid")) ||
        header.userId != wholeInt32OrZero(items.Find("uid")) ||
        header.timestamp != wholeInt32OrZero(items.Find("ts")) ||
        header.level != wholeInt32OrZero(items.Find("lv")) ||
        header.textLength != static_cast<int32_t>(std::strlen(message))) {
        __builtin_trap();
    }
    // The type name is cut to its field at a character boundary, never changed.
    const std::size_t kept = strnlen(header.typeName, sizeof header.typeName);
    if (type.compare(0, kept, header.typeName, kept) != 0 ||
        (type.size() < sizeof header.typeName && kept != type.size())) {
        __builtin_trap();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const char* bytes = reinterpret_cast<const char*>(data);

    // The message decoder sees texts as the client delivers them: NUL-terminated.
    const std::string text(bytes, size);
    const char* message = text.c_str();
    vxDecoder items;
    const bool parsed = items.Parse(text);
    // The in-place scan classify uses must accept and split exactly as the full parse does.
    std::size_t scanned = 0;
    const bool scannedOk = vxDecoder::Scan(text, [&](const vxRawItem&) { ++scanned; });
    if (scannedOk != parsed || (parsed && scanned != items.Items().size())) {
        __builtin_trap();
    }
    std::string first;
    // The quick look at the type must agree with a full parse whenever that succeeds.
    if (parsed && !items.Items().empty() && items.Items().front().key == "type" &&
        (!vxDecoder::PeekFirst(text, "type", first) || first != items.Items().front().value)) {
        __builtin_trap();
    }

    MessageDecoder* d = decoder();
    MessageHeader header;
    const int32_t code32 = d->classify(message, &header);
    checkClassify(message, code32, header);
    int32_t reason = 0;
    double hours = 0;
    d->decodeShowEnd(message, &reason, &hours);
    KeepAliveRecord keepAlive;
    d->decodeKeepAlive(message, &keepAlive);
    MemberInfoRecord member;
    d->decodeMemberInfoReply(message, &member);
    int32_t code = 0;
    d->decodeError(message, &code);
    LoginReplyRecord login;
    d->decodeLoginReply(message, &login);
    NoticeValueRecord notice;
    d->decodeNoticeValue(message, &notice);
    FansBrandRecord brand;
    d->decodeFansBrand(message, &brand);
    // Every text field must still end inside its record.
    if (header.typeName[sizeof header.typeName - 1] != '\0' ||
        brand.brand[sizeof brand.brand - 1] != '\0' ||
        member.notice[sizeof member.notice - 1] != '\0') {
        __builtin_trap();
    }
    return 0;
}

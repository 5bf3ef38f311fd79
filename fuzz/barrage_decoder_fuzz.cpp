// Feeds arbitrary bytes to everything that reads a received barrage text: the key/value
// decoder and every operation of the message decoder.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "corvid/message_client_system.h"
#include "vxencoder/vx_decoder.h"

namespace {

MessageDecoder* decoder() {
    static MessageDecoder* instance = [] {
        StartupMessageClientSystem();
        return CreateVxMessageDecoder();
    }();
    return instance;
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
    d->classify(message, &header);
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

// Feeds arbitrary bytes to everything that reads what a barrage server sends: the frame
// reader, the barrage text decoder and every operation of the message decoder.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "corvid/message_client_system.h"
#include "vxencoder/vx_decoder.h"
#include "vxencoder/vx_frame.h"

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

    // The stream cut at an input-chosen point, so partial headers and payloads are reached.
    vxFrameReader reader(1024);
    std::vector<std::string> payloads;
    const std::size_t cut = size > 0 ? data[0] % (size + 1) : 0;
    reader.Feed(bytes, cut, payloads);
    reader.Feed(bytes + cut, size - cut, payloads);

    // The message decoder sees texts as the client delivers them: NUL-terminated.
    const std::string text(bytes, size);
    const char* message = text.c_str();
    vxDecoder items;
    items.Parse(text);

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

#pragma once

#include <string>
#include <string_view>

#include "corvid/message_decoder.h"
#include "vxencoder/vx_decoder.h"

namespace corvid {

// The decoder handed out by CreateVxMessageDecoder. It keeps no state between calls apart
// from a scratch item list, so one object serves one thread at a time.
class VxMessageDecoder final : public MessageDecoder {
public:
    void destroy() override;
    bool decodeShowEnd(const char* message, int32_t* reason, double* banHours) override;
    bool decodeKeepAlive(const char* message, KeepAliveRecord* record) override;
    bool decodeMemberInfoReply(const char* message, MemberInfoRecord* record) override;
    bool decodeError(const char* message, int32_t* code) override;
    bool decodeLoginReply(const char* message, LoginReplyRecord* record) override;
    bool decodeNoticeValue(const char* message, NoticeValueRecord* record) override;
    bool decodeFansBrand(const char* message, FansBrandRecord* record) override;
    int32_t classify(const char* message, MessageHeader* header) override;

private:
    ~VxMessageDecoder() = default;

    // Parses message and checks that its first item is "type" with this value.
    bool parseAs(const char* message, std::string_view type);
    int32_t intOrZero(std::string_view key) const;
    void copyText(std::string_view key, char* field, std::size_t size) const;

    // Compare or read one raw item of classify, unescaping through scratch_ only if needed.
    bool rawEquals(std::string_view raw, bool escaped, std::string_view plain);
    int32_t rawInt32OrZero(std::string_view raw, bool escaped);

    vxDecoder items_;
    std::string scratch_;
};

}  // namespace corvid

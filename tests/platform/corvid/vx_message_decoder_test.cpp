#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "corvid/message_client_system.h"
#include "corvid/message_codes.h"
#include "vxencoder/vx_encoder.h"

namespace {

struct DecoderDeleter {
    void operator()(MessageDecoder* decoder) const {
        decoder->destroy();
        ShutdownMessageClientSystem();
    }
};

std::unique_ptr<MessageDecoder, DecoderDeleter> makeDecoder() {
    StartupMessageClientSystem();
    return std::unique_ptr<MessageDecoder, DecoderDeleter>(CreateVxMessageDecoder());
}

std::string encode(const std::vector<std::pair<std::string, std::string>>& items) {
    vxEncoder encoder(1 << 16);
    for (const auto& [key, value] : items) {
        encoder.AddItem(key.c_str(), value.c_str());
    }
    return encoder.GetResult();
}

TEST(VxMessageDecoder, ClassifiesByTypeNameAndFillsTheHeader) {
    auto decoder = makeDecoder();
    ASSERT_NE(decoder, nullptr);
    struct Case {
        std::string text;
        int32_t code;
    };
    const Case cases[] = {
        {"type=loginres;", kMessageTypeLoginReply},
        {"type=liveend;", kMessageTypeShowEnd},
        {"type=dayrk;", kMessageTypeDayRank},
        {"type=ru;", kMessageTypeUnknown},
        {"rid=1;type=chatmsg;", kMessageTypeInvalid},  // the type must come first
        {"type=chatmsg", kMessageTypeInvalid},         // unterminated
        {"", kMessageTypeInvalid},
        {"\x01\x02garbage", kMessageTypeInvalid},
        // Header items already read don't survive a fault later in the text.
        {"type=chatmsg;seq=5;rid=9;txt=\\x;", kMessageTypeInvalid},
        {"type=chatmsg;seq=5;rid=9;txt", kMessageTypeInvalid},
        {"typ\\e=chatmsg;", kMessageTypeInvalid},  // the key reads "typ=", not "type"
    };
    for (const Case& c : cases) {
        MessageHeader header;
        std::memset(&header, 0x5a, sizeof header);
        EXPECT_EQ(decoder->classify(c.text.c_str(), &header), c.code) << c.text;
        if (c.code == kMessageTypeInvalid) {
            const MessageHeader zero{};
            EXPECT_EQ(std::memcmp(&header, &zero, sizeof header), 0) << c.text;
        }
    }

    MessageHeader header{};
    const std::string chat = "type=chatmsg;seq=77;rid=1001;uid=42;ts=1700000000;lv=12;txt=hi;";
    ASSERT_EQ(decoder->classify(chat.c_str(), &header), kMessageTypeChat);
    EXPECT_EQ(header.sequence, 77);
    EXPECT_EQ(header.roomId, 1001);
    EXPECT_EQ(header.userId, 42);
    EXPECT_EQ(header.timestamp, 1700000000);
    EXPECT_EQ(header.level, 12);
    EXPECT_EQ(header.itemCount, 7);
    EXPECT_STREQ(header.typeName, "chatmsg");
    EXPECT_EQ(header.textLength, static_cast<int32_t>(chat.size()));

    // Escaped keys and values are read as what they stand for; the first of a key counts.
    const std::string escaped =
        encode({{"type", "fans;rk"}, {"s=q", "1"}, {"seq", "4\\2"}, {"rid", "7"}, {"rid", "8"}});
    ASSERT_EQ(decoder->classify(escaped.c_str(), &header), kMessageTypeUnknown);
    EXPECT_STREQ(header.typeName, "fans;rk");
    EXPECT_EQ(header.sequence, 0);  // "4\\2" is not a number
    EXPECT_EQ(header.roomId, 7);
    EXPECT_EQ(header.itemCount, 5);

    // A type name longer than its field is cut, NUL-terminated, and has no code.
    const std::string longName = "type=" + std::string(300, 'n') + ";seq=x;";
    ASSERT_EQ(decoder->classify(longName.c_str(), &header), kMessageTypeUnknown);
    EXPECT_EQ(std::strlen(header.typeName), sizeof header.typeName - 1);
    EXPECT_EQ(header.sequence, 0);  // not a number: left at zero
    EXPECT_EQ(decoder->classify(nullptr, &header), kMessageTypeInvalid);
    EXPECT_EQ(decoder->classify("type=a;", nullptr), kMessageTypeInvalid);

    // A header number is a whole 32-bit decimal with an optional "-", or zero.
    const std::pair<std::string, int32_t> numbers[] = {{"-2147483648", INT32_MIN},
                                                       {"2147483647", INT32_MAX},
                                                       {"2147483648", 0},
                                                       {"-2147483649", 0},
                                                       {"-0", 0},
                                                       {"-", 0},
                                                       {"+5", 0},
                                                       {"5 ", 0},
                                                       {"0000000000000000000042", 42},
                                                       {"99999999999999999999", 0}};
    for (const auto& [text, value] : numbers) {
        const std::string message = "type=chatmsg;seq=" + text + ";";
        ASSERT_EQ(decoder->classify(message.c_str(), &header), kMessageTypeChat) << text;
        EXPECT_EQ(header.sequence, value) << text;
    }
}

// Keep-alive, notice, brand, error and show-end values are shown arriving end to end in the
// barrage tests; these are the records and edges those tests do not reach.
TEST(VxMessageDecoder, DecodesEachRecord) {
    auto decoder = makeDecoder();
    MemberInfoRecord member{};
    EXPECT_TRUE(decoder->decodeMemberInfoReply(encode({{"type", "memberinfores"},
                                                       {"rid", "5"},
                                                       {"mc", "321"},
                                                       {"rn", "room"},
                                                       {"nt", std::string(5000, 'n')}})
                                                   .c_str(),
                                               &member));
    EXPECT_EQ(member.memberCount, 321);
    EXPECT_STREQ(member.roomName, "room");
    EXPECT_EQ(std::strlen(member.notice), sizeof member.notice - 1);

    int32_t code = 0;
    EXPECT_TRUE(decoder->decodeError("type=error;code=300060206;", &code));
    EXPECT_EQ(code, 300060206);

    LoginReplyRecord login{};
    EXPECT_TRUE(decoder->decodeLoginReply("type=loginres;uid=8;rid=1001;kas=45;sid=abc;", &login));
    EXPECT_EQ(login.userId, 8);
    EXPECT_EQ(login.keepAliveSeconds, 45);
    EXPECT_STREQ(login.session, "abc");

    int32_t reason = 0;
    double hours = 7;
    EXPECT_TRUE(decoder->decodeShowEnd("type=liveend;reason=1;", &reason, &hours));
    EXPECT_DOUBLE_EQ(hours, 0);
}

TEST(VxMessageDecoder, RefusesWrongTypesAndMissingItems) {
    auto decoder = makeDecoder();
    KeepAliveRecord keepAlive{};
    MemberInfoRecord member{};
    LoginReplyRecord login{};
    NoticeValueRecord notice{};
    FansBrandRecord brand{};
    int32_t code = 7;
    int32_t reason = 7;
    double hours = 7;
    const char* refused[] = {
        "type=keepalive;online=1;",      // keep-alive without "hot"
        "type=memberinfores;rid=1;",     // member information without "mc"
        "type=error;code=99999999999;",  // beyond 32 bits
        "type=noble_num_info;",
        "type=fansrk;rid=1;",               // no brand
        "type=liveend;bh=2;",               // no reason
        "type=liveend;reason=1;bh=1e300;",  // no 32-bit integer of hours
        "type=chatmsg;online=1;hot=2;mc=3;code=4;num=5;bn=6;reason=7;",
    };
    for (const char* text : refused) {
        EXPECT_FALSE(decoder->decodeKeepAlive(text, &keepAlive)) << text;
        EXPECT_FALSE(decoder->decodeMemberInfoReply(text, &member)) << text;
        EXPECT_FALSE(decoder->decodeError(text, &code)) << text;
        EXPECT_FALSE(decoder->decodeNoticeValue(text, &notice)) << text;
        EXPECT_FALSE(decoder->decodeFansBrand(text, &brand)) << text;
        EXPECT_FALSE(decoder->decodeShowEnd(text, &reason, &hours)) << text;
    }
    EXPECT_FALSE(decoder->decodeLoginReply("type=keepalive;", &login));
    EXPECT_FALSE(decoder->decodeLoginReply(nullptr, &login));
    EXPECT_FALSE(decoder->decodeError("type=error;code=1;", nullptr));
    EXPECT_EQ(code, 0);  // a failed decode leaves its output zeroed
    EXPECT_EQ(reason, 0);
}

TEST(VxMessageDecoder, CutsLongTextsAtCharacterBoundaries) {
    auto decoder = makeDecoder();
    struct Case {
        std::string brand;
        std::string expected;
    };
    const std::string han = "粉";  // three bytes in UTF-8
    const Case cases[] = {
        {std::string(63, 'a'), std::string(63, 'a')},
        {std::string(64, 'a'), std::string(63, 'a')},
        {std::string(62, 'a') + han, std::string(62, 'a')},  // would end mid-character
        {std::string(60, 'a') + han + "b", std::string(60, 'a') + han},
        {"", ""},
    };
    for (const Case& c : cases) {
        FansBrandRecord record;
        std::memset(&record, 0x5a, sizeof record);
        ASSERT_TRUE(decoder->decodeFansBrand(("type=fansrk;bn=" + c.brand + ";").c_str(), &record));
        EXPECT_EQ(std::string(record.brand), c.expected);
        for (std::size_t i = c.expected.size(); i < sizeof record.brand; ++i) {
            ASSERT_EQ(record.brand[i], '\0') << "byte " << i;
        }
    }
}

TEST(VxMessageDecoder, CodesAndNamesAgree) {
    for (int32_t code = -1; code <= 64; ++code) {
        if (const char* name = messageTypeName(code)) {
            EXPECT_EQ(messageTypeCode(name), code) << name;
        }
    }
}

}  // namespace

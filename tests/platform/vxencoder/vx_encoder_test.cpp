#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vxencoder/vx_decoder.h"
#include "vxencoder/vx_encoder.h"

namespace {

using Items = std::vector<std::pair<std::string, std::string>>;

// A written text must read back as its items, through Parse and through Scan alike; a failed
// encoder stays failed and shows no text at all.
TEST(VxEncoder, EscapesFitsOrFailsWhole) {
    struct Case {
        std::size_t bufferSize;
        std::vector<std::pair<const char*, const char*>> items;
        std::string encoded;  // empty: the encoder failed
    };
    const Case cases[] = {
        {64, {{"type", "get"}, {"msgtype", "dayrk"}, {"e", ""}}, "type=get;msgtype=dayrk;e=;"},
        {64, {{"a=b", "c;d"}}, "a\\eb=c\\sd;"},
        {64, {{"k", "\\"}, {"plain", "v"}}, "k=\\\\;plain=v;"},
        {64, {{"k", "\\e"}}, "k=\\\\e;"},  // an escape-looking value stays literal
        {64, {{"k", "=;\\=;\\"}}, "k=\\e\\s\\\\\\e\\s\\\\;"},
        {64, {{"list", "uid=1;nn=a\\eb;"}}, "list=uid\\e1\\snn\\ea\\\\eb\\s;"},  // nested text
        {8, {{"k", "vvvv"}}, "k=vvvv;"},  // exactly fills the buffer with its NUL
        {7, {{"k", "vvvv"}}, ""},
        {0, {{"k", ""}}, ""},
        {9, {{"k", "v;v;"}}, ""},  // escaping makes it 10 bytes
        {10, {{"k", "v;v;"}}, "k=v\\sv\\s;"},
        {16, {{"type", "sub"}, {"mt", "a-channel-name"}}, ""},  // the first item goes too
        {64, {{nullptr, "v"}}, ""},
        {64, {{"k", nullptr}}, ""},
        {64, {{"", "v"}}, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "row " << &c - cases);
        vxEncoder encoder(c.bufferSize);
        bool added = true;
        for (const auto& [key, value] : c.items) {
            added = encoder.AddItem(key, value) && added;
        }
        EXPECT_EQ(added, !c.encoded.empty());
        EXPECT_EQ(encoder.Failed(), c.encoded.empty());
        EXPECT_EQ(encoder.GetResult(), c.encoded);
        if (c.encoded.empty()) {
            EXPECT_FALSE(encoder.AddItem("a", "b"));
            EXPECT_STREQ(encoder.GetResult(), "");
            continue;
        }
        vxDecoder decoder;
        ASSERT_TRUE(decoder.Parse(c.encoded));
        Items parsed, scanned;
        for (const vxItem& item : decoder.Items()) {
            parsed.emplace_back(item.key, item.value);
        }
        EXPECT_TRUE(vxDecoder::Scan(c.encoded, [&](const vxRawItem& raw) {
            std::string key, value;
            EXPECT_TRUE(vxDecoder::Unescape(raw.key, key) && vxDecoder::Unescape(raw.value, value));
            EXPECT_EQ(raw.keyEscaped, raw.key.find('\\') != std::string_view::npos);
            EXPECT_EQ(raw.valueEscaped, raw.value.find('\\') != std::string_view::npos);
            scanned.emplace_back(key, value);
        }));
        EXPECT_EQ(parsed, Items(c.items.begin(), c.items.end()));
        EXPECT_EQ(scanned, parsed);
    }
}

TEST(VxDecoder, RejectsMalformedTextsWhole) {
    const char* malformed[] = {
        "type=get",          // unterminated item
        "type=get;msgtype",  // trailing text without ";"
        "=get;",             // empty key
        "a=b=c;",            // raw "=" in a value
        "k=\\;",             // escape cut by the end of the item
        "k=\\x;",            // unknown escape
    };
    for (const char* text : malformed) {
        vxDecoder decoder;
        ASSERT_TRUE(decoder.Parse("seen=1;"));
        EXPECT_FALSE(decoder.Parse(text)) << text;
        EXPECT_TRUE(decoder.Items().empty()) << text;
        // The in-place reader refuses exactly what Parse refuses.
        EXPECT_FALSE(vxDecoder::Scan(text, [](const vxRawItem&) {})) << text;
    }
    vxDecoder empty;
    EXPECT_TRUE(empty.Parse(""));
    EXPECT_TRUE(empty.Items().empty());
}

// Scan reads a text a block at a time: every separator, escape and fault must read the same
// wherever it falls against a block's or a chunk's edge, and Parse is the reference.
TEST(VxDecoder, ScanAgreesWithParseAtEveryOffset) {
    const std::string shapes[] = {
        "k=@;a=b;", "k=@\\e;a=b;", "k=@;\\s=v;", "k=@;a=b=c;", "k=@;a=b", "k=@;=b;", "k=@\\;",
    };
    for (const std::string& shape : shapes) {
        for (std::size_t pad = 0; pad < 600; ++pad) {
            std::string text = shape;
            text.replace(text.find('@'), 1, std::string(pad, 'x'));
            vxDecoder decoder;
            const bool parsed = decoder.Parse(text);
            Items expected, scanned;
            for (const vxItem& item : decoder.Items()) {
                expected.emplace_back(item.key, item.value);
            }
            const bool ok = vxDecoder::Scan(text, [&](const vxRawItem& raw) {
                std::string key, value;
                vxDecoder::Unescape(raw.key, key);
                vxDecoder::Unescape(raw.value, value);
                scanned.emplace_back(key, value);
            });
            ASSERT_EQ(ok, parsed) << text;
            if (parsed) {
                ASSERT_EQ(scanned, expected) << text;
            }
        }
    }
}

TEST(VxDecoder, ReadsNumbersStrictly) {
    vxDecoder decoder;
    ASSERT_TRUE(decoder.Parse("a=42;b=-7;c=2147483648;d=12x;e=;f=1.5;g=inf;h=nan;i=-2e3;a=9;"));
    struct Case {
        const char* key;
        std::optional<int32_t> asInt;  // none: refused
        std::optional<double> asDouble;
    };
    const Case cases[] = {
        {"a", 42, 42.0}, {"b", -7, -7.0},    {"c", {}, 2147483648.0},  // out of 32-bit range
        {"d", {}, {}},   {"e", {}, {}},      {"f", {}, 1.5},          {"g", {}, {}},
        {"h", {}, {}},   {"i", {}, -2000.0}, {"missing", {}, {}},
    };
    for (const Case& c : cases) {
        int32_t i = 0;
        double d = 0;
        EXPECT_EQ(decoder.GetInt32(c.key, i) ? std::optional(i) : std::nullopt, c.asInt) << c.key;
        EXPECT_EQ(decoder.GetDouble(c.key, d) ? std::optional(d) : std::nullopt, c.asDouble)
            << c.key;
    }
    int64_t wide = 0;
    EXPECT_TRUE(decoder.GetInt64("c", wide));
    EXPECT_EQ(wide, 2147483648LL);
    EXPECT_EQ(decoder.GetText("a"), "42");  // the first of two equal keys wins
    EXPECT_EQ(decoder.GetText("missing"), "");
}

}  // namespace

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "vxencoder/vx_decoder.h"
#include "vxencoder/vx_encoder.h"

namespace {

using Items = std::vector<std::pair<std::string, std::string>>;

std::string encode(const Items& items, std::size_t bufferSize = 8192) {
    vxEncoder encoder(bufferSize);
    for (const auto& [key, value] : items) {
        encoder.AddItem(key.c_str(), value.c_str());
    }
    return encoder.GetResult();
}

TEST(VxEncoder, EscapesDelimitersAndRoundTrips) {
    struct Case {
        Items items;
        const char* encoded;
    };
    const Case cases[] = {
        {{{"type", "get"}, {"msgtype", "dayrk"}}, "type=get;msgtype=dayrk;"},
        {{{"a=b", "c;d"}}, "a\\eb=c\\sd;"},
        {{{"k", "\\"}}, "k=\\\\;"},
        {{{"k", "\\e"}}, "k=\\\\e;"},  // an escape-looking value stays literal
        {{{"k", "=;\\=;\\"}}, "k=\\e\\s\\\\\\e\\s\\\\;"},
        {{{"list", "uid=1;nn=a\\eb;"}}, "list=uid\\e1\\snn\\ea\\\\eb\\s;"},  // nested text
    };
    for (const Case& c : cases) {
        EXPECT_EQ(encode(c.items), c.encoded);
        vxDecoder decoder;
        ASSERT_TRUE(decoder.Parse(c.encoded)) << c.encoded;
        ASSERT_EQ(decoder.Items().size(), c.items.size());
        for (std::size_t i = 0; i < c.items.size(); ++i) {
            EXPECT_EQ(decoder.Items()[i].key, c.items[i].first);
            EXPECT_EQ(decoder.Items()[i].value, c.items[i].second);
        }
    }
}

TEST(VxEncoder, NeverWritesPastItsBuffer) {
    // "k=vvvv;" is 7 bytes and needs an eighth for the NUL.
    struct Case {
        std::size_t bufferSize;
        std::string value;
        bool fits;
    };
    const Case cases[] = {
        {8, "vvvv", true},   // exactly fills the buffer
        {7, "vvvv", false},  // one byte short: no room for the NUL
        {0, "", false},      // no buffer at all
        {9, "v;v;", false},  // escaping makes it 10 bytes
        {10, "v;v;", true},  // "k=v\sv\s;" plus NUL
        {8192, std::string(8188, 'x'), true},
        {8192, std::string(8189, 'x'), false},
    };
    for (const Case& c : cases) {
        vxEncoder encoder(c.bufferSize);
        EXPECT_EQ(encoder.AddItem("k", c.value.c_str()), c.fits) << c.bufferSize;
        EXPECT_EQ(encoder.Failed(), !c.fits);
        const std::string result = encoder.GetResult();
        EXPECT_EQ(result.empty(), !c.fits) << c.bufferSize;
        EXPECT_LT(result.size(), std::max<std::size_t>(c.bufferSize, 1));
    }
}

TEST(VxEncoder, AFailedItemFailsTheWholeResult) {
    vxEncoder encoder(16);
    EXPECT_TRUE(encoder.AddItem("type", "sub"));
    EXPECT_STREQ(encoder.GetResult(), "type=sub;");
    EXPECT_FALSE(encoder.AddItem("mt", "a-channel-name"));
    EXPECT_STREQ(encoder.GetResult(), "");
    // A later item that would fit does not revive a failed text.
    EXPECT_FALSE(encoder.AddItem("a", "b"));
    EXPECT_STREQ(encoder.GetResult(), "");

    const std::pair<const char*, const char*> rejected[] = {
        {nullptr, "v"}, {"k", nullptr}, {"", "v"}};
    for (const auto& [key, value] : rejected) {
        vxEncoder bad(64);
        EXPECT_FALSE(bad.AddItem(key, value));
        EXPECT_STREQ(bad.GetResult(), "");
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

TEST(VxDecoder, ScanSeesWhatParseDecodes) {
    const std::string text = "type=chatmsg;k\\e=v\\s\\\\;plain=;";
    vxDecoder decoder;
    ASSERT_TRUE(decoder.Parse(text));
    std::vector<vxItem> scanned;
    std::vector<bool> escaped;
    ASSERT_TRUE(vxDecoder::Scan(text, [&](const vxRawItem& raw) {
        vxItem item;
        EXPECT_TRUE(vxDecoder::Unescape(raw.key, item.key));
        EXPECT_TRUE(vxDecoder::Unescape(raw.value, item.value));
        scanned.push_back(item);
        escaped.push_back(raw.keyEscaped || raw.valueEscaped);
    }));
    ASSERT_EQ(scanned.size(), decoder.Items().size());
    for (std::size_t i = 0; i < scanned.size(); ++i) {
        EXPECT_EQ(scanned[i].key, decoder.Items()[i].key);
        EXPECT_EQ(scanned[i].value, decoder.Items()[i].value);
    }
    EXPECT_EQ(scanned[1].key, "k=");
    EXPECT_EQ(scanned[1].value, "v;\\");
    EXPECT_EQ(escaped, (std::vector<bool>{false, true, false}));
}

TEST(VxDecoder, ReadsNumbersStrictly) {
    vxDecoder decoder;
    ASSERT_TRUE(decoder.Parse("a=42;b=-7;c=2147483648;d=12x;e=;f=1.5;g=inf;h=nan;i=-2e3;a=9;"));
    struct Case {
        const char* key;
        bool isInt;
        int32_t intValue;
        bool isDouble;
        double doubleValue;
    };
    const Case cases[] = {
        {"a", true, 42, true, 42},           {"b", true, -7, true, -7},
        {"c", false, 0, true, 2147483648.0},  // out of 32-bit range
        {"d", false, 0, false, 0},           {"e", false, 0, false, 0},
        {"f", false, 0, true, 1.5},          {"g", false, 0, false, 0},
        {"h", false, 0, false, 0},           {"i", false, 0, true, -2000},
        {"missing", false, 0, false, 0},
    };
    for (const Case& c : cases) {
        int32_t i = 0;
        double d = 0;
        EXPECT_EQ(decoder.GetInt32(c.key, i), c.isInt) << c.key;
        EXPECT_EQ(decoder.GetDouble(c.key, d), c.isDouble) << c.key;
        if (c.isInt) {
            EXPECT_EQ(i, c.intValue);
        }
        if (c.isDouble) {
            EXPECT_DOUBLE_EQ(d, c.doubleValue);
        }
    }
    int64_t wide = 0;
    EXPECT_TRUE(decoder.GetInt64("c", wide));
    EXPECT_EQ(wide, 2147483648LL);
    EXPECT_EQ(decoder.GetText("a"), "42");  // the first of two equal keys wins
    EXPECT_EQ(decoder.GetText("missing"), "");
}

}  // namespace

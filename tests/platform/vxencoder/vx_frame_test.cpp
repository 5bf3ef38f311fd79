#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "vxencoder/vx_frame.h"

namespace {

using Status = vxFrameReader::Status;

std::string frame(const std::string& payload) {
    std::string out;
    EXPECT_TRUE(vxAppendFrame(payload, out));
    return out;
}

// FeedInPlace over a copy of the bytes with its one spare byte; the copy must come back as
// it was, since the reader only borrows the byte after each payload.
Status feedInPlace(vxFrameReader& reader, const std::string& bytes,
                   std::vector<std::string>& payloads) {
    std::string buffer = bytes + '#';
    const Status status =
        reader.FeedInPlace(buffer.data(), bytes.size(), [&](const char* text, std::size_t size) {
            EXPECT_EQ(text[size], '\0');
            payloads.emplace_back(text, size);
            return true;
        });
    EXPECT_EQ(buffer, bytes + '#');
    return status;
}

TEST(VxFrame, WritesMarkAndLittleEndianLength) {
    std::string out;
    ASSERT_TRUE(vxAppendFrame("type=a;", out));
    EXPECT_EQ(out, std::string("vx\x07\x00\x00\x00type=a;", 13));
    const std::string refused[] = {"", std::string("a\0b", 3),
                                   std::string(vxframe::kDefaultMaxPayload + 1, 'x')};
    for (const std::string& payload : refused) {
        std::string untouched = "keep";
        EXPECT_FALSE(vxAppendFrame(payload, untouched));
        EXPECT_EQ(untouched, "keep");
    }
    EXPECT_EQ(vxFrameHeader('v', 'x', 0x01020304u), std::string("vx\x04\x03\x02\x01", 6));
}

// The same stream must give the same payloads however the network cuts it.
TEST(VxFrame, ReassemblesWhateverTheChunking) {
    const std::vector<std::string> payloads = {"type=a;", std::string(3000, 'p'), "k=v;",
                                               std::string(vxframe::kDefaultMaxPayload, 'm')};
    std::string stream;
    for (const std::string& p : payloads) {
        stream += frame(p);
    }
    for (std::size_t chunk : {std::size_t{1}, std::size_t{5}, std::size_t{6}, std::size_t{7},
                              std::size_t{4096}, stream.size()}) {
        vxFrameReader reader;
        std::vector<std::string> got;
        for (std::size_t at = 0; at < stream.size(); at += chunk) {
            const std::size_t n = std::min(chunk, stream.size() - at);
            ASSERT_EQ(reader.Feed(stream.data() + at, n, got), Status::Ok) << chunk;
        }
        EXPECT_EQ(got, payloads) << "chunk " << chunk;
        EXPECT_EQ(reader.pendingBytes(), 0u);

        vxFrameReader inPlace;
        std::vector<std::string> delivered;
        for (std::size_t at = 0; at < stream.size(); at += chunk) {
            const std::size_t n = std::min(chunk, stream.size() - at);
            ASSERT_EQ(feedInPlace(inPlace, stream.substr(at, n), delivered), Status::Ok) << chunk;
        }
        EXPECT_EQ(delivered, payloads) << "in place, chunk " << chunk;
        EXPECT_EQ(inPlace.pendingBytes(), 0u);
    }
}

TEST(VxFrame, InPlaceDeliveryStopsWhenAsked) {
    const std::string stream = frame("a=1;") + frame("b=2;") + frame("c=3;");
    std::string buffer = stream + '#';
    vxFrameReader reader;
    int calls = 0;
    EXPECT_EQ(reader.FeedInPlace(buffer.data(), stream.size(),
                                 [&](const char*, std::size_t) { return ++calls < 2; }),
              Status::Ok);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(buffer, stream + '#');
}

TEST(VxFrame, RefusesBrokenFramesForGood) {
    struct Case {
        const char* name;
        std::string bytes;
        Status status;
        std::size_t payloadsBefore;
    };
    const Case cases[] = {
        {"bad mark", vxFrameHeader('x', 'v', 1) + "a", Status::BadMagic, 0},
        {"empty", vxFrameHeader('v', 'x', 0), Status::EmptyFrame, 0},
        {"one too long", vxFrameHeader('v', 'x', vxframe::kDefaultMaxPayload + 1),
         Status::Oversized, 0},
        // Refused from the header alone: the claimed four gigabytes are never awaited.
        {"huge claim", vxFrameHeader('v', 'x', 0xffffffffu), Status::Oversized, 0},
        {"nul", vxFrameHeader('v', 'x', 3) + std::string("a\0b", 3), Status::EmbeddedNul, 0},
        {"good then bad", frame("k=v;") + "garbage!", Status::BadMagic, 1},
    };
    for (const Case& c : cases) {
        vxFrameReader reader;
        std::vector<std::string> got;
        EXPECT_EQ(reader.Feed(c.bytes.data(), c.bytes.size(), got), c.status) << c.name;
        EXPECT_EQ(got.size(), c.payloadsBefore) << c.name;
        EXPECT_EQ(reader.pendingBytes(), 0u) << c.name;
        const std::string good = frame("k=v;");
        EXPECT_EQ(reader.Feed(good.data(), good.size(), got), c.status) << c.name;
        EXPECT_EQ(got.size(), c.payloadsBefore) << c.name;

        vxFrameReader inPlace;
        std::vector<std::string> delivered;
        EXPECT_EQ(feedInPlace(inPlace, c.bytes, delivered), c.status) << c.name;
        EXPECT_EQ(delivered.size(), c.payloadsBefore) << c.name;
        EXPECT_EQ(inPlace.pendingBytes(), 0u) << c.name;
    }
    vxFrameReader small(4);
    std::vector<std::string> got;
    const std::string five = vxFrameHeader('v', 'x', 5);
    EXPECT_EQ(small.Feed(five.data(), five.size(), got), Status::Oversized);
    EXPECT_EQ(small.claimedLength(), 5u);
}

}  // namespace

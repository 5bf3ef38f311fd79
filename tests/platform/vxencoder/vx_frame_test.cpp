#include <gtest/gtest.h>

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

// A stream read `chunk` bytes at a time through Feed, and through FeedInPlace, which must agree
// and must hand each read back as it was, since it only borrows the byte after a payload. Every
// stream here ends at a frame's end or a refusal, so nothing may be held back.
Status feed(const std::string& stream, std::size_t chunk, std::vector<std::string>& payloads) {
    vxFrameReader reader;
    vxFrameReader inPlace;
    Status status = Status::Ok;
    Status inPlaceStatus = Status::Ok;
    std::vector<std::string> delivered;
    for (std::size_t at = 0; at < stream.size(); at += chunk) {
        const std::string read = stream.substr(at, chunk);
        status = reader.Feed(read.data(), read.size(), payloads);
        std::string buffer = read + '#';
        inPlaceStatus = inPlace.FeedInPlace(buffer.data(), read.size(),
                                            [&](const char* text, std::size_t size) {
                                                EXPECT_EQ(text[size], '\0');
                                                delivered.emplace_back(text, size);
                                                return true;
                                            });
        EXPECT_EQ(buffer, read + '#');
    }
    EXPECT_EQ(inPlaceStatus, status);
    EXPECT_EQ(delivered, payloads);
    EXPECT_EQ(reader.pendingBytes(), 0u);
    EXPECT_EQ(inPlace.pendingBytes(), 0u);
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

// However the network cuts a stream, the same payloads come out; a broken frame ends the stream
// for good, so the good frame that ends every row comes out only where nothing broke.
TEST(VxFrame, ReassemblesAnyCutAndRefusesBrokenFramesForGood) {
    const std::vector<std::string> good = {"k=v;", std::string(3000, 'p'),
                                           std::string(vxframe::kDefaultMaxPayload, 'm'), "k=v;"};
    const std::string stream = frame(good[0]) + frame(good[1]) + frame(good[2]);
    struct Case {
        std::string bytes;
        Status status;
        std::size_t payloads;  // how many of `good` come out
    };
    const Case cases[] = {
        {stream, Status::Ok, 4},
        {vxFrameHeader('x', 'v', 1) + "a", Status::BadMagic, 0},
        {vxFrameHeader('v', 'x', 0), Status::EmptyFrame, 0},
        {vxFrameHeader('v', 'x', vxframe::kDefaultMaxPayload + 1), Status::Oversized, 0},
        // Refused from the header alone: the claimed four gigabytes are never awaited.
        {vxFrameHeader('v', 'x', 0xffffffffu), Status::Oversized, 0},
        {vxFrameHeader('v', 'x', 3) + std::string("a\0b", 3), Status::EmbeddedNul, 0},
        {frame(good[0]) + "garbage!", Status::BadMagic, 1},
    };
    for (const Case& c : cases) {
        for (const std::size_t chunk : std::vector<std::size_t>{1, 5, 6, 7, 4096, c.bytes.size()}) {
            SCOPED_TRACE(testing::Message() << "row " << &c - cases << ", read by " << chunk);
            std::vector<std::string> got;
            EXPECT_EQ(feed(c.bytes + frame(good[3]), chunk, got), c.status);
            EXPECT_EQ(got, std::vector<std::string>(good.begin(), good.begin() + c.payloads));
        }
    }
    vxFrameReader small(4);
    std::vector<std::string> got;
    const std::string five = vxFrameHeader('v', 'x', 5);
    EXPECT_EQ(small.Feed(five.data(), five.size(), got), Status::Oversized);
    EXPECT_EQ(small.claimedLength(), 5u);
}

}  // namespace

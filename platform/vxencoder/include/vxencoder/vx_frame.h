#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Frames on the barrage connection: the two bytes "vx", the payload length as an unsigned
// 32-bit little-endian number, then that many payload bytes (one barrage text, no NUL).
namespace vxframe {
constexpr char kMagic0 = 'v';
constexpr char kMagic1 = 'x';
constexpr std::size_t kHeaderSize = 6;
constexpr std::size_t kDefaultMaxPayload = 64 * 1024;
}  // namespace vxframe

// Appends one frame holding payload to out. False, with out untouched, when the payload is
// empty, longer than maxPayload or holds a NUL byte, since a reader would reject that frame.
bool vxAppendFrame(std::string_view payload, std::string& out,
                   std::size_t maxPayload = vxframe::kDefaultMaxPayload);

// The header of a frame, for senders that must write deliberately broken frames (tests).
std::string vxFrameHeader(char magic0, char magic1, uint32_t claimedLength);

// Cuts a received byte stream into payloads. Only a header and at most maxPayload bytes are
// ever buffered, so a frame that claims more is refused as soon as its header is complete
// instead of being waited for. The first violation is final: the stream can't be
// resynchronised, and every later Feed returns the same status.
class vxFrameReader {
public:
    enum class Status { Ok, BadMagic, EmptyFrame, Oversized, EmbeddedNul };

    explicit vxFrameReader(std::size_t maxPayload = vxframe::kDefaultMaxPayload);

    // Consumes size bytes, appending each completed payload to payloads in stream order.
    Status Feed(const char* data, std::size_t size, std::vector<std::string>& payloads);

    Status status() const { return status_; }
    // The length the offending header claimed, for an Oversized or EmptyFrame status.
    uint32_t claimedLength() const { return claimed_; }
    // Bytes of an unfinished frame held back for the next Feed.
    std::size_t pendingBytes() const { return pending_.size(); }

    static const char* Describe(Status status);

private:
    std::size_t maxPayload_;
    Status status_ = Status::Ok;
    std::string pending_;
    bool haveHeader_ = false;
    uint32_t claimed_ = 0;
};

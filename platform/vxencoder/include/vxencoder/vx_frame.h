#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
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

    // The same cut, for the receive loop: each payload goes to deliver(const char* text,
    // std::size_t size) the moment it is complete, NUL-terminated, and is not copied when it
    // arrived whole in this read. For that data[size] must be writable, and the byte after a
    // payload is set to NUL during its call and restored after. deliver returns false to stop
    // (the rest of data is then dropped, as the connection is going away).
    template <typename Deliver>
    Status FeedInPlace(char* data, std::size_t size, Deliver&& deliver);

    Status status() const { return status_; }
    // The length the offending header claimed, for an Oversized or EmptyFrame status.
    uint32_t claimedLength() const { return claimed_; }
    // Bytes of an unfinished frame held back for the next Feed.
    std::size_t pendingBytes() const { return pending_.size(); }

    static const char* Describe(Status status);

private:
    // Checks a complete header; Ok and the claimed length in claimed_, or the violation.
    Status readHeader(const char* header);
    void fail(Status status);
    // Moves bytes from data into pending_ until a whole, checked payload is there (true), or the
    // bytes run out or the stream fails (false).
    bool gather(const char*& data, std::size_t& size);

    std::size_t maxPayload_;
    Status status_ = Status::Ok;
    std::string pending_;
    bool haveHeader_ = false;
    uint32_t claimed_ = 0;
};

template <typename Deliver>
vxFrameReader::Status vxFrameReader::FeedInPlace(char* data, std::size_t size, Deliver&& deliver) {
    while (status_ == Status::Ok && size > 0) {
        if (!haveHeader_ && pending_.empty() && size >= vxframe::kHeaderSize) {
            // The common case: a header at the start of what is left of this read.
            const Status header = readHeader(data);
            if (header != Status::Ok) {
                fail(header);
                break;
            }
            data += vxframe::kHeaderSize;
            size -= vxframe::kHeaderSize;
            if (size >= claimed_) {
                if (std::memchr(data, '\0', claimed_) != nullptr) {
                    fail(Status::EmbeddedNul);
                    break;
                }
                const char saved = data[claimed_];
                data[claimed_] = '\0';
                const bool more = deliver(static_cast<const char*>(data), std::size_t{claimed_});
                data[claimed_] = saved;
                data += claimed_;
                size -= claimed_;
                if (!more) {
                    break;
                }
                continue;
            }
            haveHeader_ = true;
            pending_.reserve(claimed_);
        }
        // A header or payload split across reads is gathered in pending_.
        const char* rest = data;
        const bool whole = gather(rest, size);
        data += rest - data;
        if (!whole) {
            continue;
        }
        const bool more = deliver(static_cast<const char*>(pending_.c_str()), pending_.size());
        pending_.clear();
        if (!more) {
            break;
        }
    }
    return status_;
}

#include "vxencoder/vx_frame.h"

#include <algorithm>
#include <cstring>

namespace {

void appendLength(uint32_t length, std::string& out) {
    for (int shift = 0; shift < 32; shift += 8) {
        out.push_back(static_cast<char>((length >> shift) & 0xffu));
    }
}

uint32_t readLength(const char* bytes) {
    uint32_t length = 0;
    for (int i = 3; i >= 0; --i) {
        length = (length << 8) | static_cast<unsigned char>(bytes[i]);
    }
    return length;
}

}  // namespace

bool vxAppendFrame(std::string_view payload, std::string& out, std::size_t maxPayload) {
    if (payload.empty() || payload.size() > maxPayload || payload.size() > UINT32_MAX ||
        payload.find('\0') != std::string_view::npos) {
        return false;
    }
    out.reserve(out.size() + vxframe::kHeaderSize + payload.size());
    out.push_back(vxframe::kMagic0);
    out.push_back(vxframe::kMagic1);
    appendLength(static_cast<uint32_t>(payload.size()), out);
    out.append(payload);
    return true;
}

std::string vxFrameHeader(char magic0, char magic1, uint32_t claimedLength) {
    std::string header;
    header.push_back(magic0);
    header.push_back(magic1);
    appendLength(claimedLength, header);
    return header;
}

vxFrameReader::vxFrameReader(std::size_t maxPayload) : maxPayload_(maxPayload) {}

vxFrameReader::Status vxFrameReader::readHeader(const char* header) {
    if (header[0] != vxframe::kMagic0 || header[1] != vxframe::kMagic1) {
        return Status::BadMagic;
    }
    claimed_ = readLength(header + 2);
    if (claimed_ == 0) {
        return Status::EmptyFrame;
    }
    return claimed_ > maxPayload_ ? Status::Oversized : Status::Ok;
}

void vxFrameReader::fail(Status status) {
    status_ = status;
    pending_.clear();
    pending_.shrink_to_fit();
}

vxFrameReader::Status vxFrameReader::Feed(const char* data, std::size_t size,
                                          std::vector<std::string>& payloads) {
    while (gather(data, size)) {
        payloads.push_back(std::move(pending_));
        pending_.clear();
    }
    return status_;
}

bool vxFrameReader::gather(const char*& data, std::size_t& size) {
    while (status_ == Status::Ok && size > 0) {
        const std::size_t wanted = haveHeader_ ? claimed_ : vxframe::kHeaderSize;
        const std::size_t take = std::min(size, wanted - pending_.size());
        pending_.append(data, take);
        data += take;
        size -= take;
        if (pending_.size() < wanted) {
            return false;
        }
        if (!haveHeader_) {
            const Status header = readHeader(pending_.data());
            if (header != Status::Ok) {
                fail(header);
                return false;
            }
            haveHeader_ = true;
            pending_.clear();
            pending_.reserve(claimed_);
            continue;
        }
        if (std::memchr(pending_.data(), '\0', pending_.size()) != nullptr) {
            fail(Status::EmbeddedNul);
            return false;
        }
        haveHeader_ = false;
        return true;
    }
    return false;
}

const char* vxFrameReader::Describe(Status status) {
    switch (status) {
        case Status::Ok:
            return "ok";
        case Status::BadMagic:
            return "frame does not begin with the frame mark";
        case Status::EmptyFrame:
            return "frame with an empty payload";
        case Status::Oversized:
            return "frame longer than the largest allowed";
        case Status::EmbeddedNul:
            return "frame payload holds a NUL byte";
    }
    return "unknown";
}

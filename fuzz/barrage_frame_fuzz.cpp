// The frame reader over a received byte stream, cut into reads at input-chosen points.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "vxencoder/vx_frame.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    if (size < 1) {
        return 0;
    }
    // The first byte sets the largest payload and the read size, so both limits are reached.
    const std::size_t maxPayload = 1 + data[0] * 4;
    const std::size_t step = 1 + data[0] % 17;
    const char* bytes = reinterpret_cast<const char*>(data) + 1;
    const std::size_t length = size - 1;

    vxFrameReader whole(maxPayload);
    std::vector<std::string> wholePayloads;
    const vxFrameReader::Status wholeStatus = whole.Feed(bytes, length, wholePayloads);

    vxFrameReader pieces(maxPayload);
    std::vector<std::string> piecePayloads;
    vxFrameReader::Status pieceStatus = vxFrameReader::Status::Ok;
    for (std::size_t at = 0; at < length; at += step) {
        pieceStatus = pieces.Feed(bytes + at, std::min(step, length - at), piecePayloads);
    }
    // The receive loop's reader, in place over a copy with its spare byte, read by read.
    std::string buffer(bytes, length);
    buffer.push_back('#');
    vxFrameReader inPlace(maxPayload);
    std::vector<std::string> delivered;
    vxFrameReader::Status inPlaceStatus = vxFrameReader::Status::Ok;
    for (std::size_t at = 0; at < length; at += step) {
        const std::size_t n = std::min(step, length - at);
        // Each read lands at the start of the buffer, as the socket's reads do.
        std::string read(buffer, at, n);
        read.push_back('#');
        inPlaceStatus =
            inPlace.FeedInPlace(read.data(), n, [&](const char* text, std::size_t size) {
                if (text[size] != '\0') {
                    std::abort();
                }
                delivered.emplace_back(text, size);
                return true;
            });
        if (read.compare(0, n, buffer, at, n) != 0 || read[n] != '#') {
            std::abort();
        }
    }
    // How the stream was cut into reads, or which reader cut it, must not change the result.
    if (wholeStatus != pieceStatus || wholePayloads != piecePayloads ||
        whole.pendingBytes() != pieces.pendingBytes() || inPlaceStatus != wholeStatus ||
        delivered != wholePayloads || inPlace.pendingBytes() != whole.pendingBytes()) {
        std::abort();
    }
    for (const std::string& payload : wholePayloads) {
        std::string frame;
        if (!vxAppendFrame(payload, frame, maxPayload)) {
            std::abort();
        }
    }
    if (wholeStatus != vxFrameReader::Status::Ok && whole.pendingBytes() != 0) {
        std::abort();
    }
    return 0;
}

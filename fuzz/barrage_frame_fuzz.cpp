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
    // How the stream was cut into reads must not change what comes out of it.
    if (wholeStatus != pieceStatus || wholePayloads != piecePayloads ||
        whole.pendingBytes() != pieces.pendingBytes()) {
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

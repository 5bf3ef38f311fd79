#include "replay/msg_log_lines.h"

#include <algorithm>
#include <fstream>

#include "vxencoder/vx_decoder.h"
#include "vxencoder/vx_wire_names.h"

namespace tolvane::sim {

namespace {

constexpr std::string_view kPrefixShape = "[HH:mm:ss.zzz] ";
constexpr int kMsPerDay = 24 * 60 * 60 * 1000;

// The number written at line[at, at + width), when it is all digits and below `limit`.
std::optional<int> field(std::string_view line, std::size_t at, std::size_t width, int limit) {
    int value = 0;
    for (std::size_t i = at; i < at + width; ++i) {
        if (line[i] < '0' || line[i] > '9') {
            return std::nullopt;
        }
        value = value * 10 + (line[i] - '0');
    }
    return value < limit ? std::optional<int>(value) : std::nullopt;
}

}  // namespace

std::optional<LoggedMessage> parseMessageLogLine(std::string_view line) {
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
        line.remove_suffix(1);
    }
    if (line.size() <= kPrefixShape.size() || line[0] != '[' || line[3] != ':' || line[6] != ':' ||
        line[9] != '.' || line[13] != ']' || line[14] != ' ') {
        return std::nullopt;
    }
    const auto hours = field(line, 1, 2, 24);
    const auto minutes = field(line, 4, 2, 60);
    const auto seconds = field(line, 7, 2, 60);
    const auto millis = field(line, 10, 3, 1000);
    if (!hours || !minutes || !seconds || !millis) {
        return std::nullopt;
    }
    const std::string_view text = line.substr(kPrefixShape.size());
    // Every received message is a whole barrage text led by its type; the client's own lines
    // ("[msg] …", "onMsgError: …", "[sendRawMessage]: …") never are.
    std::string type;
    if (!vxDecoder::PeekFirst(text, vxwire::kType, type) ||
        !vxDecoder::Scan(text, [](const vxRawItem&) {})) {
        return std::nullopt;
    }
    return LoggedMessage{((*hours * 60 + *minutes) * 60 + *seconds) * 1000 + *millis,
                         std::string(text)};
}

bool isConnectionAnswer(std::string_view text) {
    std::string type;
    vxDecoder::PeekFirst(text, vxwire::kType, type);
    return type == vxwire::kLoginReply || type == vxwire::kKeepAlive;
}

std::vector<ReplayStep> replayTimeline(const std::vector<LoggedMessage>& messages) {
    std::vector<ReplayStep> steps;
    steps.reserve(messages.size());
    long long elapsed = 0;  // since the first message, midnights included
    int clock = messages.empty() ? 0 : messages.front().msOfDay;
    for (const LoggedMessage& message : messages) {
        int step = message.msOfDay - clock;
        if (step < -kMsPerDay / 2) {
            step += kMsPerDay;
        }
        // A step back counts as none, and the pace goes on from the clock as it now reads.
        elapsed += std::max(step, 0);
        clock = message.msOfDay;
        steps.push_back(ReplayStep{std::chrono::milliseconds(elapsed), message.text});
    }
    return steps;
}

std::optional<std::vector<ReplayStep>> readReplay(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    std::vector<LoggedMessage> messages;
    std::string line;
    while (std::getline(file, line)) {
        auto message = parseMessageLogLine(line);
        if (message && !isConnectionAnswer(message->text)) {
            messages.push_back(std::move(*message));
        }
    }
    return replayTimeline(messages);
}

}  // namespace tolvane::sim

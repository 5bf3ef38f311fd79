#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tolvane::sim {

// A message that the module's barrage log says it received, and the local time it was written.
struct LoggedMessage {
    int msOfDay = 0;
    std::string text;
};

// One line of a msg.log: the received message it records, or nothing for every other line
// (the client's own events, what it sent, the empty lines between sessions, a line cut short).
// A Windows line end is allowed.
std::optional<LoggedMessage> parseMessageLogLine(std::string_view line);

// Whether a received message is the server's answer to the connection itself (login reply,
// keep-alive), which a replaying server gives on its own instead.
bool isConnectionAnswer(std::string_view text);

struct ReplayStep {
    std::chrono::milliseconds at;  // after the first message
    std::string text;
};

// The messages in log order with their offsets from the first. A clock that goes back by more
// than half a day has passed midnight; a smaller step back (two threads writing close together,
// a clock set back) plays at once, and the pace goes on from there.
std::vector<ReplayStep> replayTimeline(const std::vector<LoggedMessage>& messages);

// The whole log at `path`, without the connection's own answers; nothing when it can't be read.
std::optional<std::vector<ReplayStep>> readReplay(const std::string& path);

}  // namespace tolvane::sim

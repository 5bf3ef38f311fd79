#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace sim {

// What one client connection sent to a barrage server, kept for tests to inspect.
struct BarrageConnectionRecord {
    int id = 0;
    bool open = true;
    bool loggedIn = false;
    // Items of the last login message, in order.
    std::vector<std::pair<std::string, std::string>> login;
    int loginCount = 0;
    // "msgtype" of each channel request ("type" "get"), in order.
    std::vector<std::string> channelRequests;
    // Each subscription: true for "sub", false for "unsub", and its "mt".
    std::vector<std::pair<bool, std::string>> subscriptions;
    int keepAlives = 0;
    std::vector<std::string> chats;
    std::vector<std::string> roomTexts;
    // Every gift message as received.
    std::vector<std::string> gifts;
    std::vector<int32_t> memberInfoRequests;
    // Every payload received, in order, also those that are not barrage texts.
    std::vector<std::string> received;
    // Why the connection closed, when it has.
    std::string closeReason;

    // The value of a login item, or an empty text.
    std::string loginItem(const std::string& key) const {
        for (const auto& item : login) {
            if (item.first == key) {
                return item.second;
            }
        }
        return {};
    }
};

}  // namespace sim

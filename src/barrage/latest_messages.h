#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace tolvane::barrage {

// The latest raw text of each watched message type, listed in the order the types were
// first seen. Written on the message library's thread, read on the service's.
class LatestMessages {
public:
    LatestMessages();

    static bool isWatched(const std::string& typeName);
    // Keeps the text when its type is watched; a later text of a type replaces the earlier.
    void record(const std::string& typeName, const std::string& rawText);
    // Replaces the contents of out with the texts in first-seen order.
    void latest(std::vector<std::string>& out);
    void clear();

private:
    // One lock for every client in the process.
    static std::mutex& processMutex();

    std::vector<std::string> seenTypes_;
    std::map<std::string, std::string> latest_;
};

}  // namespace tolvane::barrage

#include "barrage/latest_messages.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

namespace tolvane::barrage {

namespace {
constexpr std::string_view kWatchedTypes[] = {
    "loginres",
    "memberinfores",
    "hide_status_change",
    "dayrk",
    "weekrk",
    "totalrk",
    "monthrk",
    "olviplst",
    "fansswrk",
    "fansrk",
    "ru",
    "gbi",
    "synfim",
    "blst",
    "wiru",
};

// Whether a watched name starts with each byte: most messages (chat above all) are of a type
// whose first byte already rules every watched name out.
constexpr std::array<bool, 256> watchedFirstBytes() {
    std::array<bool, 256> bytes{};
    for (const std::string_view name : kWatchedTypes) {
        bytes[static_cast<unsigned char>(name.front())] = true;
    }
    return bytes;
}
constexpr std::array<bool, 256> kWatchedFirstBytes = watchedFirstBytes();

}  // namespace

LatestMessages::LatestMessages() = default;

std::mutex& LatestMessages::processMutex() {
    static std::mutex mutex;
    return mutex;
}

bool LatestMessages::isWatched(const std::string& typeName) {
    // Every received message asks, so the names are compared as views, without strlen.
    const std::string_view name(typeName);
    if (name.empty() || !kWatchedFirstBytes[static_cast<unsigned char>(name.front())]) {
        return false;
    }
    return std::any_of(std::begin(kWatchedTypes), std::end(kWatchedTypes),
                       [name](std::string_view watched) { return name == watched; });
}

void LatestMessages::record(const std::string& typeName, const std::string& rawText) {
    if (!isWatched(typeName)) {
        return;
    }
    std::lock_guard<std::mutex> lock(processMutex());
    if (std::find(seenTypes_.begin(), seenTypes_.end(), typeName) == seenTypes_.end()) {
        seenTypes_.push_back(typeName);
    }
    latest_[typeName] = rawText;
}

void LatestMessages::latest(std::vector<std::string>& out) {
    out.clear();
    // The reader takes the lock too: the writer runs on another thread.
    std::lock_guard<std::mutex> lock(processMutex());
    for (const std::string& typeName : seenTypes_) {
        out.push_back(latest_[typeName]);
    }
}

void LatestMessages::clear() {
    std::lock_guard<std::mutex> lock(processMutex());
    seenTypes_.clear();
    latest_.clear();
}

}  // namespace tolvane::barrage

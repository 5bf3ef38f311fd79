#include "barrage/barrage_texts.h"

#include <array>
#include <charconv>
#include <ctime>

#include "vxencoder/vx_encoder.h"
#include "vxencoder/vx_frame.h"
#include "vxencoder/vx_wire_names.h"

namespace sim {

namespace {

using Items = std::vector<std::pair<std::string, std::string>>;

std::string number(int64_t value) {
    return std::to_string(value);
}

std::string now() {
    return number(static_cast<int32_t>(std::time(nullptr)));
}

}  // namespace

std::string BarrageTexts::encode(const Items& items) {
    vxEncoder encoder(vxframe::kDefaultMaxPayload + 1);
    for (const auto& [key, value] : items) {
        encoder.AddItem(key.c_str(), value.c_str());
    }
    return encoder.GetResult();
}

std::string BarrageTexts::loginReply(int32_t seq, int32_t userId, int32_t roomId,
                                     const std::string& session, int32_t keepAliveSeconds) {
    return encode({{vxwire::kType, vxwire::kLoginReply},
                   {vxwire::kSequence, number(seq)},
                   {"ret", "0"},
                   {vxwire::kUserId, number(userId)},
                   {vxwire::kRoomId, number(roomId)},
                   {vxwire::kTimestamp, now()},
                   {"kas", number(keepAliveSeconds)},
                   {"sid", session},
                   {"sn", "sim-barrage"}});
}

std::string BarrageTexts::keepAliveReply(int32_t seq, int32_t tick, int32_t online, int32_t hot) {
    return encode({{vxwire::kType, vxwire::kKeepAlive},
                   {vxwire::kSequence, number(seq)},
                   {vxwire::kTick, number(tick)},
                   {vxwire::kOnline, number(online)},
                   {vxwire::kHot, number(hot)},
                   {vxwire::kTimestamp, now()}});
}

std::string BarrageTexts::chat(int32_t seq, int32_t roomId, int32_t userId,
                               const std::string& nickname, const std::string& text) {
    return encode({{vxwire::kType, vxwire::kChat},
                   {vxwire::kSequence, number(seq)},
                   {vxwire::kRoomId, number(roomId)},
                   {vxwire::kUserId, number(userId)},
                   {vxwire::kTimestamp, now()},
                   {vxwire::kLevel, number(userId % 60)},
                   {vxwire::kNickname, nickname},
                   {vxwire::kText, text}});
}

std::string BarrageTexts::gift(int32_t seq, int32_t roomId, int32_t userId,
                               const std::string& nickname, int32_t giftId, int32_t count,
                               int32_t skinId) {
    Items items = {{vxwire::kType, vxwire::kGift},    {vxwire::kSequence, number(seq)},
                   {vxwire::kRoomId, number(roomId)}, {vxwire::kUserId, number(userId)},
                   {vxwire::kTimestamp, now()},       {vxwire::kNickname, nickname},
                   {"gid", number(giftId)},           {"gc", number(count)}};
    if (skinId != 0) {
        items.push_back({"skin", number(skinId)});
    }
    return encode(items);
}

std::string BarrageTexts::prop(int32_t seq, int32_t roomId, int32_t userId,
                               const std::string& nickname, int32_t propId, int32_t count) {
    return encode({{vxwire::kType, "prop"},
                   {vxwire::kSequence, number(seq)},
                   {vxwire::kRoomId, number(roomId)},
                   {vxwire::kUserId, number(userId)},
                   {vxwire::kTimestamp, now()},
                   {vxwire::kNickname, nickname},
                   {"pid", number(propId)},
                   {"pc", number(count)}});
}

std::string BarrageTexts::ranking(const std::string& type, int32_t seq, int32_t roomId,
                                  const std::vector<RankEntry>& entries,
                                  const std::string& fansBrand) {
    // The list is itself a barrage text of entries, each entry a nested text.
    Items list;
    for (const RankEntry& entry : entries) {
        list.push_back({"e", encode({{vxwire::kUserId, number(entry.userId)},
                                     {vxwire::kNickname, entry.nickname},
                                     {"sc", number(entry.score)}})});
    }
    Items items = {{vxwire::kType, type},
                   {vxwire::kSequence, number(seq)},
                   {vxwire::kRoomId, number(roomId)},
                   {vxwire::kTimestamp, now()}};
    if (type == vxwire::kFansBrand) {
        items.push_back({vxwire::kBrand, fansBrand});
    }
    items.push_back({vxwire::kList, encode(list)});
    return encode(items);
}

std::string BarrageTexts::memberInfo(int32_t seq, int32_t roomId, int32_t memberCount) {
    return encode({{vxwire::kType, vxwire::kMemberInfoReply},
                   {vxwire::kSequence, number(seq)},
                   {vxwire::kRoomId, number(roomId)},
                   {vxwire::kMemberCount, number(memberCount)},
                   {"rn", "sim room " + number(roomId)}});
}

std::string BarrageTexts::noticeValue(int32_t seq, int32_t roomId, int32_t value) {
    return encode({{vxwire::kType, vxwire::kNobleCount},
                   {vxwire::kSequence, number(seq)},
                   {vxwire::kRoomId, number(roomId)},
                   {vxwire::kNumber, number(value)}});
}

std::string BarrageTexts::error(int32_t seq, int32_t code) {
    return encode({{vxwire::kType, vxwire::kError},
                   {vxwire::kSequence, number(seq)},
                   {vxwire::kCode, number(code)}});
}

std::string BarrageTexts::showEnd(int32_t seq, int32_t roomId, int32_t reason, double banHours) {
    // Shortest text that reads back as the same double, independent of the locale.
    std::array<char, 64> hours{};
    const auto written = std::to_chars(hours.data(), hours.data() + hours.size(), banHours);
    return encode({{vxwire::kType, vxwire::kShowEnd},
                   {vxwire::kSequence, number(seq)},
                   {vxwire::kRoomId, number(roomId)},
                   {vxwire::kReason, number(reason)},
                   {vxwire::kBanHours, std::string(hours.data(), written.ptr)}});
}

}  // namespace sim

#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace sim {

// The barrage texts a server sends, built with the open encoder. Every message the server
// originates carries "seq", the server's running message number.
class BarrageTexts {
public:
    struct RankEntry {
        int32_t userId;
        std::string nickname;
        int32_t score;
    };

    static std::string loginReply(int32_t seq, int32_t userId, int32_t roomId,
                                  const std::string& session, int32_t keepAliveSeconds);
    static std::string keepAliveReply(int32_t seq, int32_t tick, int32_t online, int32_t hot);
    static std::string chat(int32_t seq, int32_t roomId, int32_t userId,
                            const std::string& nickname, const std::string& text);
    static std::string gift(int32_t seq, int32_t roomId, int32_t userId,
                            const std::string& nickname, int32_t giftId, int32_t count,
                            int32_t skinId = 0);
    // A viewer used a prop; hosts look its name up in the catalogue as for gifts.
    static std::string prop(int32_t seq, int32_t roomId, int32_t userId,
                            const std::string& nickname, int32_t propId, int32_t count);
    // A ranking such as "dayrk"; "fansrk" also carries the fans brand.
    static std::string ranking(const std::string& type, int32_t seq, int32_t roomId,
                               const std::vector<RankEntry>& entries,
                               const std::string& fansBrand = {});
    static std::string memberInfo(int32_t seq, int32_t roomId, int32_t memberCount);
    static std::string noticeValue(int32_t seq, int32_t roomId, int32_t value);
    static std::string error(int32_t seq, int32_t code);
    static std::string showEnd(int32_t seq, int32_t roomId, int32_t reason, double banHours);

    // Encodes any items; an empty text when they don't fit in one frame.
    static std::string encode(const std::vector<std::pair<std::string, std::string>>& items);
};

}  // namespace sim

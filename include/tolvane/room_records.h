#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Records of the room, push-line, category and anchor-query operations.
// Field order is part of the host contract.

struct RoomSummary {
    int32_t roomId = -1;
    std::string roomUrl;
    std::string roomName;
    std::string gameName;
    std::string childName;
    int32_t roomFlag = 0;
    int32_t cateId = 0;
};

// One push line. Arrays of these handed to the host are released through freeArray.
struct PushAddress {
    std::string url;
    int32_t id = 0;
};

struct LiveParameters {
    int32_t reservedValue = 0;  // kept with the record, never sent
    int32_t cid2 = 0;
    int32_t cid3 = 0;
    int32_t module_id = 0;
    int32_t is_audio = 0;
    int32_t room_live_type = 0;
    bool is_third_party_obs = false;
    bool is_rtc = false;
    bool is_hdr = false;
};

// One node of a category or tag tree; texts are UTF-16.
struct CategoryNode {
    std::u16string name;
    std::u16string secondText;
    int32_t id = 0;
    int32_t parentId = 0;
    int32_t extraValue1 = 0;
    int32_t extraValue2 = 0;
    std::vector<CategoryNode> children;
};

struct GameProcessInfo {
    std::string process;
    std::string name;
    int32_t type = 0;
};

struct LiveRoomParameter {
    int32_t roomId = 0;
    std::u16string roomName;
    std::u16string newTitle;
    int32_t titleVerifyState = 0;
    int32_t cate1Id = 0;
    int32_t cate2Id = 0;
    int32_t cate3Id = 0;
    std::u16string cate2Name;
    std::u16string cate3Name;
    int32_t categoryTime = 0;
    std::u16string lastNotice;
    std::u16string newNotice;
    int32_t noticeState = 0;
    bool noticeAlways = false;
    std::string coverSource;
    int32_t coverState = 0;
    std::u16string coverMessage;
    bool coverButtonType = false;
    bool openCloseCover = false;
    int32_t credit = -1;
};

struct AnchorCardUser {
    std::string nickname;
    std::string avatar;
    std::string weight;
    int32_t vipId = 0;
    int32_t roomId = 0;
    std::string city;
    std::string follow;
    int32_t isOfficial = 0;
};

struct AnchorCardLevel {
    std::string level;
    float upgrade_exp = 0;
    float min_exp = 0;
    float exp = 0;
    int32_t isFull = 0;
    std::string levelIcon;
    int32_t next_level = 0;
    std::string nextLevelIcon;
    float progress = 0;
};

struct LivingStatistics {
    int64_t mh = 0;
    int32_t nac = 0;
    int32_t nsuc = 0;
    int32_t nsfi = 0;
    int32_t nfbi = 0;
    int32_t ld = 0;
    int32_t bancount = 0;
};

struct BitrateConfig {
    bool typeFlag = false;  // true when the server's "type" is not 1
    int32_t cate2Id = 0;
    std::string cate2Name;
    int32_t min = 0;
    int32_t max = 0;
};

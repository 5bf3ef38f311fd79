#pragma once

#include <QJsonArray>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tolvane::sim {

// A category as a room picks it: cid3 is 0 where the cate2 has no third level.
struct SimCategory {
    int cid1 = 0;
    int cid2 = 0;
    int cid3 = 0;
    std::string cate2Name;
    std::string cate3Name;
};

struct SimTag {
    int id = 0;
    std::string name;
    std::string icon;  // empty: no icon
};

struct SimTagGroup {
    std::string name;
    std::vector<SimTag> tags;
};

// What a host reported about the game being played, and for which account.
struct SimGameSubmission {
    std::string uid;
    std::string name;
    std::string process;
    std::string type;
};

// The platform's category tree, tags and voice categories, and what each room picked from
// them; safe from server threads and tests at once.
class SimCategoryCatalogue {
public:
    SimCategoryCatalogue();  // loads the compiled-in category fixture

    // "cate_list" and "cate_suggest" as the platform writes them (ids partly as numbers).
    QJsonArray tree() const;
    QJsonArray suggestions() const;
    // The cate2 entries of the extended list, in order.
    std::vector<SimCategory> partnerCategories() const;

    // The pair when it exists: cid3 names a third level of cid2, or is 0 where cid2 has none.
    std::optional<SimCategory> find(int cid2, int cid3) const;

    // A category without tags has an unnamed, empty group.
    SimTagGroup tags(int cid2) const;
    void setTags(int cid2, SimTagGroup group);
    bool isVoice(int cid2) const;
    void setVoice(int cid2, bool voice);

    // A room's category; false (nothing stored) when the pair does not exist.
    bool pickCategory(int roomId, int cid2, int cid3);
    std::optional<SimCategory> category(int roomId) const;
    // A room's tag; false when the tag is not one of the category's.
    bool pickTag(int roomId, int cid2, int tagId);
    std::optional<int> tag(int roomId) const;

    void recordGame(SimGameSubmission game);
    std::optional<SimGameSubmission> lastGame() const;

private:
    struct Cate2 {
        int cid1 = 0;
        std::string name;
        std::vector<std::pair<int, std::string>> cate3;
    };
    std::optional<SimCategory> findLocked(int cid2, int cid3) const;

    mutable std::mutex mutex_;
    QJsonArray tree_;
    QJsonArray suggestions_;
    std::map<int, Cate2> cate2_;
    std::vector<int> partners_;
    std::set<int> voice_;
    std::map<int, SimTagGroup> tags_;
    std::map<int, SimCategory> roomCategories_;
    std::map<int, int> roomTags_;
    std::optional<SimGameSubmission> lastGame_;
};

}  // namespace tolvane::sim

#include "platform/sim_category_catalogue.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <utility>

namespace tolvane::sim {

extern const char* const kCategoriesFixture;

namespace {

// The platform writes ids as text or as numbers, even within one list.
int idOf(const QJsonValue& value) {
    return value.isString() ? value.toString().toInt() : value.toInt();
}

std::string text(const QJsonObject& object, const char* key) {
    return object.value(QLatin1String(key)).toString().toStdString();
}

QJsonObject fixture() {
    return QJsonDocument::fromJson(QByteArray(kCategoriesFixture)).object();
}

SimTagGroup readTagGroup(const QJsonObject& object) {
    SimTagGroup group;
    group.name = text(object, "tagName");
    for (const QJsonValue& value : object.value(QStringLiteral("tagList")).toArray()) {
        const QJsonObject tag = value.toObject();
        group.tags.push_back(
            {tag.value(QStringLiteral("tid")).toInt(), text(tag, "tName"), text(tag, "tIcon")});
    }
    return group;
}

}  // namespace

SimCategoryCatalogue::SimCategoryCatalogue() {
    const QJsonObject root = fixture();
    tree_ = root.value(QStringLiteral("cate_list")).toArray();
    suggestions_ = root.value(QStringLiteral("cate_suggest")).toArray();
    for (const QJsonValue& level1 : tree_) {
        const QJsonObject cate1 = level1.toObject();
        const int cid1 = idOf(cate1.value(QStringLiteral("cate_id")));
        for (const QJsonValue& level2 : cate1.value(QStringLiteral("cate2List")).toArray()) {
            const QJsonObject cate2 = level2.toObject();
            Cate2& entry = cate2_[idOf(cate2.value(QStringLiteral("cate2_id")))];
            entry.cid1 = cid1;
            entry.name = text(cate2, "cate2_name");
            for (const QJsonValue& level3 : cate2.value(QStringLiteral("cate3List")).toArray()) {
                const QJsonObject cate3 = level3.toObject();
                entry.cate3.emplace_back(idOf(cate3.value(QStringLiteral("id"))),
                                         text(cate3, "name"));
            }
        }
    }
    for (const QJsonValue& id : root.value(QStringLiteral("partner_cate2")).toArray()) {
        partners_.push_back(id.toInt());
    }
    for (const QJsonValue& id : root.value(QStringLiteral("voice_cate2")).toArray()) {
        voice_.insert(id.toInt());
    }
    const QJsonObject tags = root.value(QStringLiteral("tags")).toObject();
    for (auto it = tags.begin(); it != tags.end(); ++it) {
        tags_[it.key().toInt()] = readTagGroup(it.value().toObject());
    }
    const QJsonObject rooms = root.value(QStringLiteral("rooms")).toObject();
    for (auto it = rooms.begin(); it != rooms.end(); ++it) {
        const QJsonObject room = it.value().toObject();
        const auto category = findLocked(room.value(QStringLiteral("cid2")).toInt(),
                                         room.value(QStringLiteral("cid3")).toInt());
        if (category) {
            roomCategories_[it.key().toInt()] = *category;
        }
    }
}

QJsonArray SimCategoryCatalogue::tree() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return tree_;
}

QJsonArray SimCategoryCatalogue::suggestions() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return suggestions_;
}

std::vector<SimCategory> SimCategoryCatalogue::partnerCategories() const {
    std::lock_guard<std::mutex> lock(mutex_);
    std::vector<SimCategory> partners;
    for (const int cid2 : partners_) {
        const auto it = cate2_.find(cid2);
        if (it != cate2_.end()) {
            partners.push_back({it->second.cid1, cid2, 0, it->second.name, std::string()});
        }
    }
    return partners;
}

std::optional<SimCategory> SimCategoryCatalogue::findLocked(int cid2, int cid3) const {
    const auto it = cate2_.find(cid2);
    if (it == cate2_.end()) {
        return std::nullopt;
    }
    const Cate2& cate2 = it->second;
    SimCategory category{cate2.cid1, cid2, cid3, cate2.name, std::string()};
    if (cate2.cate3.empty()) {
        return cid3 == 0 ? std::optional<SimCategory>(category) : std::nullopt;
    }
    const auto cate3 = std::find_if(cate2.cate3.begin(), cate2.cate3.end(),
                                    [cid3](const auto& entry) { return entry.first == cid3; });
    if (cate3 == cate2.cate3.end()) {
        return std::nullopt;
    }
    category.cate3Name = cate3->second;
    return category;
}

std::optional<SimCategory> SimCategoryCatalogue::find(int cid2, int cid3) const {
    std::lock_guard<std::mutex> lock(mutex_);
    return findLocked(cid2, cid3);
}

SimTagGroup SimCategoryCatalogue::tags(int cid2) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = tags_.find(cid2);
    return it == tags_.end() ? SimTagGroup() : it->second;
}

void SimCategoryCatalogue::setTags(int cid2, SimTagGroup group) {
    std::lock_guard<std::mutex> lock(mutex_);
    tags_[cid2] = std::move(group);
}

bool SimCategoryCatalogue::isVoice(int cid2) const {
    std::lock_guard<std::mutex> lock(mutex_);
    return voice_.count(cid2) != 0;
}

void SimCategoryCatalogue::setVoice(int cid2, bool voice) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (voice) {
        voice_.insert(cid2);
    } else {
        voice_.erase(cid2);
    }
}

bool SimCategoryCatalogue::pickCategory(int roomId, int cid2, int cid3) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto category = findLocked(cid2, cid3);
    if (!category) {
        return false;
    }
    roomCategories_[roomId] = *category;
    return true;
}

std::optional<SimCategory> SimCategoryCatalogue::category(int roomId) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = roomCategories_.find(roomId);
    if (it == roomCategories_.end()) {
        return std::nullopt;
    }
    return it->second;
}

bool SimCategoryCatalogue::pickTag(int roomId, int cid2, int tagId) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto group = tags_.find(cid2);
    if (group == tags_.end() ||
        std::none_of(group->second.tags.begin(), group->second.tags.end(),
                     [tagId](const SimTag& tag) { return tag.id == tagId; })) {
        return false;
    }
    roomTags_[roomId] = tagId;
    return true;
}

std::optional<int> SimCategoryCatalogue::tag(int roomId) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = roomTags_.find(roomId);
    if (it == roomTags_.end()) {
        return std::nullopt;
    }
    return it->second;
}

void SimCategoryCatalogue::recordGame(SimGameSubmission game) {
    std::lock_guard<std::mutex> lock(mutex_);
    lastGame_ = std::move(game);
}

std::optional<SimGameSubmission> SimCategoryCatalogue::lastGame() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return lastGame_;
}

}  // namespace tolvane::sim

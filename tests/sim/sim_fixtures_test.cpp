#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/sim_platform_state.h"

namespace tolvane::sim {
extern const char* const kCategoriesFixture;
}  // namespace tolvane::sim

namespace {

using tolvane::sim::SimPlatformState;

int idOf(const QJsonValue& value) {
    return value.isString() ? value.toString().toInt() : value.toInt();
}

// The fixtures refer to each other by id; an edit that leaves one dangling would quietly turn
// a category test into a test of an unknown category.
TEST(SimFixtures, EveryCategoryReferenceNamesACate2OfTheTree) {
    const QJsonObject root =
        QJsonDocument::fromJson(QByteArray(tolvane::sim::kCategoriesFixture)).object();
    ASSERT_FALSE(root.isEmpty());
    std::set<int> tree;
    for (const QJsonValue& cate1 : root.value("cate_list").toArray()) {
        for (const QJsonValue& cate2 : cate1.toObject().value("cate2List").toArray()) {
            tree.insert(idOf(cate2.toObject().value("cate2_id")));
        }
    }
    std::vector<std::pair<std::string, int>> references;
    for (const char* list : {"partner_cate2", "voice_cate2"}) {
        for (const QJsonValue& id : root.value(list).toArray()) {
            references.emplace_back(list, id.toInt());
        }
    }
    for (const QString& key : root.value("tags").toObject().keys()) {
        references.emplace_back("tags", key.toInt());
    }
    for (const QJsonValue& suggestion : root.value("cate_suggest").toArray()) {
        for (const QJsonValue& entry : suggestion.toObject().value("cate_list").toArray()) {
            references.emplace_back("cate_suggest", idOf(entry.toObject().value("cate2_id")));
        }
    }
    for (const QJsonValue& room : root.value("rooms").toObject()) {
        references.emplace_back("rooms", room.toObject().value("cid2").toInt());
    }
    for (const int id : SimPlatformState().emotionWhiteList()) {
        references.emplace_back("emotion white list", id);
    }
    for (const auto& [where, id] : references) {
        EXPECT_EQ(tree.count(id), 1u) << where << " names " << id;
    }
}

TEST(SimFixtures, TheAnchorsRoomStartsInTheCategoryItsAccountNames) {
    SimPlatformState state;
    const QJsonObject room = state.accountByName("anchor")->room;
    const auto category = state.categories().category(room.value("room_id").toInt());
    ASSERT_TRUE(category.has_value());
    EXPECT_EQ(QString::number(category->cid2), room.value("cate_id").toString());
    EXPECT_EQ(category->cate2Name, room.value("game_name").toString().toStdString());
    EXPECT_EQ(category->cate3Name, room.value("child_name").toString().toStdString());

    // startLive finds a line by its id in either list, so ids must not repeat across them.
    const auto lines = state.liveState().lines(room.value("room_id").toInt());
    std::set<int> ids;
    for (const auto* list : {&lines.main, &lines.h265}) {
        for (const auto& line : *list) {
            EXPECT_TRUE(ids.insert(line.id).second) << "line id " << line.id << " repeats";
        }
    }
    EXPECT_FALSE(lines.main.empty());
    EXPECT_FALSE(lines.h265.empty());
}

}  // namespace

#include <gtest/gtest.h>

#include "parse/reply_texts.h"
#include "support/sim_service_fixture.h"

namespace {

using tolvane::sim::SimFault;

constexpr int kRoom = kAnchorRoom;

std::string names(const std::vector<CategoryNode>& nodes) {
    std::string text;
    for (const CategoryNode& node : nodes) {
        text += (text.empty() ? "" : ",") + QString::fromStdU16String(node.name).toStdString();
    }
    return text;
}

class CategoryService : public AnchorRoomSimServiceTest {};

TEST_F(CategoryService, PickedCategoryIsWhatTagsAndTreeAreAskedFor) {
    std::vector<CategoryNode> tree, suggestions;
    std::string message;
    ASSERT_EQ(service().getClassifyInfo(tree, suggestions, message), 0) << message;
    EXPECT_EQ(names(tree), "Games,Music,Life");
    ASSERT_EQ(tree[0].children.size(), 3u);
    EXPECT_EQ(tree[0].children[0].children.size(), 2u);  // Chess: Blitz, Rapid
    EXPECT_EQ(tree[0].children[0].children[0].parentId, 12);
    EXPECT_EQ(names(suggestions), "Games,Music");
    EXPECT_EQ(lastRequestTo("/api/videoPartner/getAllCateInfo").formValue("cate2_id"), "0");

    // A refused pair keeps the current category and brings the platform's message.
    EXPECT_NE(service().setLiveClassify(12, 999, message), 0);
    EXPECT_FALSE(message.empty());
    EXPECT_EQ(platform().categories().category(kRoom)->cid2, 12);  // the fixture's own pick
    ASSERT_EQ(service().setLiveClassify(201, 2011, message), 0) << message;
    EXPECT_EQ(platform().categories().category(kRoom)->cid3, 2011);

    bool hasTags = false;
    int32_t hasIcon = 0;
    std::string group;
    std::vector<CategoryNode> tags;
    ASSERT_EQ(service().getLiveTags(hasTags, hasIcon, group, tags, message), 0) << message;
    EXPECT_EQ(lastRequestTo("/api/videoPartner/getCidTagList").formValue("cid"), "201");
    EXPECT_TRUE(hasTags);
    EXPECT_EQ(hasIcon, 1);
    EXPECT_EQ(group, "Vocal style");
    ASSERT_FALSE(tags.empty());
    ASSERT_EQ(service().setGameTag(tags[0].id, message), 0) << message;
    EXPECT_EQ(platform().categories().tag(kRoom), tags[0].id);
    EXPECT_NE(service().setGameTag(1201, message), 0);  // a tag of another category

    ASSERT_EQ(service().getClassifyInfo(tree, suggestions, message), 0);
    EXPECT_EQ(lastRequestTo("/api/videoPartner/getAllCateInfo").formValue("cate2_id"), "201");

    // Go has an empty tag list.
    ASSERT_EQ(service().setLiveClassify(13, 0, message), 0) << message;
    tags.clear();
    ASSERT_EQ(service().getLiveTags(hasTags, hasIcon, group, tags, message), 0);
    EXPECT_FALSE(hasTags);
}

TEST_F(CategoryService, VoiceCheckAnswersWithTheCode) {
    std::string message;
    EXPECT_EQ(service().classifyIsVoice(nullptr, message), 1);
    EXPECT_EQ(message, u8"参数错误");
    EXPECT_TRUE(requestsTo("/api/v1/livingCheck").empty());

    struct Case {
        int32_t cid2, cid3;
        bool voice;
    };
    for (const Case& c : {Case{207, 0, true}, Case{12, 121, false}, Case{201, 2012, true}}) {
        SCOPED_TRACE(c.cid2);
        ASSERT_EQ(service().setLiveClassify(c.cid2, c.cid3, message), 0) << message;
        bool voice = !c.voice;
        const int32_t result = service().classifyIsVoice(&voice, message);
        EXPECT_EQ(voice, c.voice);
        EXPECT_EQ(result == 0, c.voice);
        EXPECT_EQ(message.empty(), c.voice);
    }
}

TEST_F(CategoryService, GameReportAndPartnerList) {
    std::string message;
    GameProcessInfo game{"chess.exe", "Chess Master", 3};
    ASSERT_EQ(service().submitGameInfoEx(game, message), 0) << message;
    const auto stored = platform().categories().lastGame();
    ASSERT_TRUE(stored.has_value());
    EXPECT_EQ(stored->process, "chess.exe");
    EXPECT_EQ(stored->name, "Chess Master");
    EXPECT_EQ(stored->type, "3");

    std::vector<CategoryNode> partner;
    ASSERT_EQ(service().getClassifyListExt(partner, message), 0) << message;
    ASSERT_EQ(partner.size(), 3u);
    EXPECT_EQ(partner[0].id, 12);
    EXPECT_EQ(partner[0].parentId, 1);
}

TEST_F(CategoryService, NoAnswerGivesTheNetworkText) {
    const char* paths[] = {"/api/videoPartner/getAllCateInfo", "/livenc/liveTool/updateCate",
                           "/api/videoPartner/getCidTagList", "/api/v1/livingCheck"};
    for (const char* path : paths) {
        sim().http().setFault(path, SimFault::httpStatus(502));
    }
    std::string message;
    std::vector<CategoryNode> tree, suggestions, tags;
    EXPECT_EQ(service().getClassifyInfo(tree, suggestions, message), 210);
    EXPECT_EQ(message, tolvane::kNetworkFailureText);
    message.clear();
    EXPECT_EQ(service().setLiveClassify(201, 2011, message), 210);
    EXPECT_EQ(message, tolvane::kNetworkFailureText);
    bool hasTags = true, voice = true;
    int32_t hasIcon = 0;
    std::string group;
    EXPECT_EQ(service().getLiveTags(hasTags, hasIcon, group, tags, message), 210);
    EXPECT_FALSE(hasTags);
    EXPECT_EQ(service().classifyIsVoice(&voice, message), 210);
    EXPECT_FALSE(voice);
    // The failed pick did not change what tags are asked for.
    sim().http().clearFaults();
    EXPECT_EQ(service().getLiveTags(hasTags, hasIcon, group, tags, message), 0);
    EXPECT_EQ(lastRequestTo("/api/videoPartner/getCidTagList").formValue("cid"), "0");
}

}  // namespace

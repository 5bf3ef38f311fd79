#include <gtest/gtest.h>

#include <QStringList>
#include <tuple>

#include "parse/data_parser.h"
#include "parse/reply_texts.h"
#include "support/parse_rows.h"
#include "support/replies.h"
#include "support/sim_service_fixture.h"

namespace {

using tolvane::sim::SimFault;

const std::string kDataError = tolvane::kReplyDataErrorText;

// "name(id^parent)", then ":icon" and "[children]" when set; siblings joined by ",".
std::string nodesText(const std::vector<CategoryNode>& nodes) {
    QStringList parts;
    for (const CategoryNode& node : nodes) {
        QString part = QString::fromStdU16String(node.name) +
                       QStringLiteral("(%1^%2)").arg(node.id).arg(node.parentId);
        if (!node.secondText.empty()) {
            part += ':' + QString::fromStdU16String(node.secondText);
        }
        if (!node.children.empty()) {
            part += '[' + QString::fromStdString(nodesText(node.children)) + ']';
        }
        parts << part;
    }
    return parts.join(',').toStdString();
}

TEST(CategoriesParse, ClassifyTreeAndSuggestions) {
    DataParser parser;
    std::vector<CategoryNode> tree(1), suggestions(1);  // the parser appends after these
    tree[0].name = suggestions[0].name = u"kept";
    std::string message = "before";
    const QByteArray reply = okReply(R"({"cate_list":[
        {"cate_id":"1","cate_name":"网游","cate2List":[
            {"cate2_id":"11","cate2_name":"A","cate3List":[{"id":"111","name":"A1"},7,
                                                           {"id":112,"name":"A2"}]},
            {"cate2_id":12,"cate2_name":"B"},{"cate2_id":"13","cate2_name":"C","cate3List":[]}]},
        "junk",{"cate_id":2,"cate_name":"手游"}],
      "cate_suggest":[{"cid":"5","cname":"S","cate_list":[{"cate2_id":"51","cate2_name":"S1"}]},
                      {"cid":6,"cname":"T"}]})");
    ASSERT_EQ(parser.parseGetClassifyListResult(reply, message, tree, suggestions), 0);
    EXPECT_EQ(nodesText(tree),
              u8"kept(0^0),网游(1^-1)[A(11^1)[A1(111^11),A2(112^11)],B(12^1),C(13^1)],手游(2^-1)");
    EXPECT_EQ(nodesText(suggestions), "kept(0^0),S(5^0)[S1(51^0)],T(6^0)");
    EXPECT_EQ(message, "before");
}

TEST(CategoriesParse, ExtendedListTakesItsMessageFromMsg) {
    expectParsed(
        {
            {okReply(
                 R"([{"Cid2":"11","Cname2":"A","Cid1":1},3,{"Cid2":12,"Cname2":"B","Cid1":"2"}])"),
             0, "A(11^1),B(12^2) before"},
            {R"({"error":603,"msg":"慢点","data":"not this"})", 214, u8" 慢点"},
            {okReply("{}"), 1, " " + kDataError},
        },
        [](DataParser& parser, const QByteArray& reply, std::string& out) {
            std::vector<CategoryNode> list;
            std::string message = "before";
            const int result = parser.parseGetClassifyListExtResult(reply, message, list);
            out = nodesText(list) + " " + message;
            return result;
        });
}

// The icon flag starts as 7 and the group as "before".
TEST(CategoriesParse, LiveTags) {
    expectParsed(
        {
            {okReply(R"({"tagName":"玩法","tagList":[{"tid":1,"tName":"a","tIcon":""},
                {"tid":"2","tName":"b"},{"tid":3,"tName":"c","tIcon":"i3"},{"tid":4,"tName":"d"},
                {"tid":5,"tName":"e","tIcon":"i5"}]})"),
             0, u8"1 玩法 a(1^0),b(2^0),c(3^0):i3,d(4^0),e(5^0):i5"},
            {okReply(R"({"tagName":"g","tagList":[{"tid":1,"tName":"a"},"x"]})"), 0, "0 g a(1^0)"},
        },
        [](DataParser& parser, const QByteArray& reply, std::string& out) {
            int32_t hasIcon = 7;
            std::string group = "before", message;
            std::vector<CategoryNode> tags;
            const int result = parser.parseGetLiveTagsResult(reply, message, hasIcon, group, tags);
            out = std::to_string(hasIcon) + " " + group + " " + nodesText(tags);
            return result;
        });
}

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
    EXPECT_EQ(names(suggestions), "Games,Music");
    const auto asked = lastRequestTo("/api/videoPartner/getAllCateInfo");
    // Related categories always, the vertical ones never.
    EXPECT_EQ(asked.formValue("cate2_id") + asked.param("relate") + asked.param("isShowVertical"),
              "010");

    ASSERT_EQ(service().setLiveClassify(201, 2011, message), 0) << message;
    EXPECT_EQ(platform().categories().category(kAnchorRoom)->cid3, 2011);

    bool hasTags = false;
    int32_t hasIcon = 0;
    std::string group;
    std::vector<CategoryNode> tags;
    ASSERT_EQ(service().getLiveTags(hasTags, hasIcon, group, tags, message), 0) << message;
    EXPECT_EQ(lastRequestTo("/api/videoPartner/getCidTagList").formValue("cid"), "201");
    EXPECT_EQ(std::to_string(hasTags) + std::to_string(hasIcon) + " " + group, "11 Vocal style");
    ASSERT_FALSE(tags.empty());
    ASSERT_EQ(service().setGameTag(tags[0].id, message), 0) << message;
    EXPECT_EQ(platform().categories().tag(kAnchorRoom), tags[0].id);
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

    const std::tuple<int32_t, int32_t, bool> cases[] = {
        {207, 0, true}, {12, 121, false}, {201, 2012, true}};
    for (const auto& [cid2, cid3, expected] : cases) {
        SCOPED_TRACE(cid2);
        ASSERT_EQ(service().setLiveClassify(cid2, cid3, message), 0) << message;
        bool voice = !expected;
        const int32_t result = service().classifyIsVoice(&voice, message);
        EXPECT_EQ(voice, expected);
        EXPECT_EQ(result == 0, expected);
        EXPECT_EQ(message.empty(), expected);
    }
}

TEST_F(CategoryService, GameReportAndPartnerList) {
    std::string message;
    GameProcessInfo game{"chess.exe", "Chess Master", 3};
    ASSERT_EQ(service().submitGameInfoEx(game, message), 0) << message;
    const auto stored = platform().categories().lastGame();
    ASSERT_TRUE(stored.has_value());
    EXPECT_EQ(stored->process + "|" + stored->name + "|" + stored->type,
              "chess.exe|Chess Master|3");

    std::vector<CategoryNode> partner;
    ASSERT_EQ(service().getClassifyListExt(partner, message), 0) << message;
    ASSERT_EQ(partner.size(), 3u);
    EXPECT_EQ(partner[0].id, 12);
    EXPECT_EQ(partner[0].parentId, 1);
}

// Neither a refusal nor no answer changes the category that tags are asked for.
TEST_F(CategoryService, AnUnansweredOrRefusedPickKeepsTheCategory) {
    const std::tuple<SimFault, int32_t, const char*> cases[] = {
        {SimFault::httpStatus(502), 210, nullptr},
        // The refusal's message is the one under "msg".
        {SimFault::httpStatus(200, R"({"error":4101,"msg":"no such","data":"x"})"), 4101,
         "no such"},
    };
    for (const auto& [fault, result, expected] : cases) {
        SCOPED_TRACE(result);
        sim().http().setFault("/livenc/liveTool/updateCate", fault);
        std::string message, group;
        EXPECT_EQ(service().setLiveClassify(201, 2011, message), result);
        if (expected != nullptr) {
            EXPECT_EQ(message, expected);
        }
        sim().http().clearFaults();
        bool hasTags = true;
        int32_t hasIcon = 0;
        std::vector<CategoryNode> tags;
        EXPECT_EQ(service().getLiveTags(hasTags, hasIcon, group, tags, message), 0);
        EXPECT_EQ(lastRequestTo("/api/videoPartner/getCidTagList").formValue("cid"), "0");
    }
}

}  // namespace

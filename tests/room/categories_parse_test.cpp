#include <gtest/gtest.h>

#include <QStringList>

#include "parse/data_parser.h"
#include "parse/reply_texts.h"
#include "support/scoped_env.h"

namespace {

const std::string kDataError = tolvane::kReplyDataErrorText;

QByteArray ok(const char* data) {
    return QByteArray(R"({"error":0,"data":)") + data + "}";
}

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
    IsolatedWorkspace workspace;
    DataParser parser;
    std::vector<CategoryNode> tree(1), suggestions(1);  // the parser appends after these
    tree[0].name = suggestions[0].name = u"kept";
    std::string message = "before";
    const QByteArray reply = ok(R"({"cate_list":[
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
    IsolatedWorkspace workspace;
    struct Case {
        QByteArray reply;
        int result;
        std::string list, message;
    };
    const Case cases[] = {
        {ok(R"([{"Cid2":"11","Cname2":"A","Cid1":1},3,{"Cid2":12,"Cname2":"B","Cid1":"2"}])"), 0,
         "A(11^1),B(12^2)", "before"},
        {R"({"error":603,"msg":"慢点","data":"not this"})", 214, "", u8"慢点"},
        {ok("{}"), 1, "", kDataError},
    };
    for (const Case& c : cases) {
        DataParser parser;
        std::vector<CategoryNode> list;
        std::string message = "before";
        EXPECT_EQ(parser.parseGetClassifyListExtResult(c.reply, message, list), c.result);
        EXPECT_EQ(nodesText(list), c.list) << c.reply.constData();
        EXPECT_EQ(message, c.message) << c.reply.constData();
    }
}

TEST(CategoriesParse, LiveTags) {
    IsolatedWorkspace workspace;
    struct Case {
        QByteArray reply;
        int result;
        int32_t hasIcon;  // starts as 7
        std::string group, tags;
    };
    const Case cases[] = {
        {ok(R"({"tagName":"玩法","tagList":[{"tid":1,"tName":"a","tIcon":""},{"tid":"2","tName":"b"},
                {"tid":3,"tName":"c","tIcon":"i3"},{"tid":4,"tName":"d"},
                {"tid":5,"tName":"e","tIcon":"i5"}]})"),
         0, 1, u8"玩法", "a(1^0),b(2^0),c(3^0):i3,d(4^0),e(5^0):i5"},
        {ok(R"({"tagName":"g","tagList":[{"tid":1,"tName":"a"},"x"]})"), 0, 0, "g", "a(1^0)"},
    };
    for (const Case& c : cases) {
        DataParser parser;
        int32_t hasIcon = 7;
        std::string group = "before";
        std::vector<CategoryNode> tags;
        std::string message;
        EXPECT_EQ(parser.parseGetLiveTagsResult(c.reply, message, hasIcon, group, tags), c.result);
        EXPECT_EQ(hasIcon, c.hasIcon) << c.reply.constData();
        EXPECT_EQ(group, c.group) << c.reply.constData();
        EXPECT_EQ(nodesText(tags), c.tags) << c.reply.constData();
    }
}

}  // namespace

#include <gtest/gtest.h>

#include "net/net_test_support.h"
#include "net/param_list.h"

namespace {

using namespace tolvane::net;

TEST(ParamList, QueryTextSortsWithoutEncoding) {
    struct Case {
        ParamList list;
        QString expected;
    };
    const Case cases[] = {
        {{}, ""},
        {{{"b", "2"}, {"a", "1"}}, "a=1&b=2"},
        {{{"k", "z"}, {"k", "a"}, {"j", "9"}}, "j=9&k=a&k=z"},
        // Upper case sorts before lower case, and "a" before "aa".
        {{{"aa", "1"}, {"a", "2"}, {"B", "3"}}, "B=3&a=2&aa=1"},
        {{{"q", "a b&c=d/é"}, {"p", "100%"}}, "p=100%&q=a b&c=d/é"},
        {{{"name", "主播"}, {"empty", ""}}, "empty=&name=主播"},
        // Values compare as text, not as numbers.
        {{{"n", "10"}, {"n", "9"}}, "n=10&n=9"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(queryText(c.list), c.expected) << c.expected.toStdString();
    }
    ParamList original{{"b", "2"}, {"a", "1"}};
    queryText(original);
    EXPECT_EQ(original.first().first, "b");  // the request keeps its own order
}

TEST(ParamList, PlaceholdersByKind) {
    const CommonValues values{"vxtool", 1700, "1_2_s_3_4"};
    struct Case {
        int kind;
        CommonValues values;
        ParamList groupA;
        ParamList groupB;
        ParamList expectedA;
        ParamList expectedB;
    };
    // clang-format off
    const Case cases[] = {
        {1, values, {}, {{"rid", "9"}}, {}, {{"rid", "9"}, {"aid", "vxtool"}, {"time", "1700"}}},
        {1, values, {}, {{"time", "5"}}, {}, {{"time", "5"}, {"aid", "vxtool"}}},
        {6, values, {}, {}, {{"aid", "vxtool"}, {"time", "1700"}, {"token", "1_2_s_3_4"}}, {}},
        {6, CommonValues{}, {}, {}, {{"aid", "vxtool"}, {"time", "0"}, {"token", ""}}, {}},
        {10, values, {{"token", "own"}}, {{"x", "1"}}, {{"token", "own"}, {"aid", "vxtool"}, {"time", "1700"}}, {{"x", "1"}}},
        // Other kinds only fill keys that the operation put in itself.
        {2, values, {{"aid", ""}}, {{"token", ""}, {"time", ""}, {"other", ""}},
         {{"aid", "vxtool"}}, {{"token", "1_2_s_3_4"}, {"time", "1700"}, {"other", ""}}},
        {8, values, {}, {}, {}, {}},
    };
    // clang-format on
    for (const Case& c : cases) {
        RequestDescriptor request;
        request.kind = c.kind;
        request.groupA = c.groupA;
        request.groupB = c.groupB;
        request.groupC = {{"aid", ""}};
        addPlaceholdersByKind(request, c.values);
        EXPECT_EQ(request.groupA, c.expectedA) << "kind " << c.kind;
        EXPECT_EQ(request.groupB, c.expectedB) << "kind " << c.kind;
        EXPECT_EQ(request.groupC, (ParamList{{"aid", ""}})) << "the body is left alone";
    }
}

}  // namespace

#include <gtest/gtest.h>

#include <QUrlQuery>

#include "net/net_test_support.h"
#include "net/param_list.h"
#include "net/signing.h"

namespace {

using namespace tolvane::net;

enum class Target { A, B, None };

TEST(Signing, SignatureStringShape) {
    EXPECT_EQ(signatureString("p", "", ""), "p?%s");
    EXPECT_EQ(signatureString("p", "a=1", ""), "p?a=1%s");
    EXPECT_EQ(signatureString("p", "", "c=3"), "p?%s&c=3");
    EXPECT_EQ(signatureString("api/x", "a=1&b=2", "c=3"), "api/x?a=1&b=2%s&c=3");
}

TEST(Signing, CallSignerPassesUtf8AndSelectsTheSecret) {
    const QString text = QStringLiteral("主播?name=直播%s");
    EXPECT_EQ(callSigner(text, false), expectedAuth(text, false));
    EXPECT_EQ(callSigner(text, true), expectedAuth(text, true));
    EXPECT_NE(callSigner(text, false), callSigner(text, true));
}

TEST(Signing, ByKind) {
    struct Case {
        const char* name;
        int kind;
        int environment;
        ParamList groupA;
        ParamList groupB;
        ParamList groupC;
        Target target;
        QString signatureText;
        bool live;
    };
    const ParamList mobileA{{"aid", "app"}, {"time", "1700000000"}, {"token", "T"}};
    const ParamList mobileB{{"time", "1"}, {"z", "9"}, {"aid", "x"}, {"b", "2"}};
    const Case cases[] = {
        {"query group signs when present",
         2,
         0,
         {{"h", "1"}},
         {{"b", "2"}, {"a", "1"}},
         {},
         Target::B,
         "getInfo?a=1&b=2%s",
         false},
        {"body follows the mark",
         5,
         1,
         {},
         {{"a", "1"}},
         {{"d", "4"}, {"c", "3"}},
         Target::B,
         "getInfo?a=1%s&c=3&d=4",
         false},
        {"header group when the query is empty",
         0,
         0,
         {{"k", "v"}},
         {},
         {},
         Target::A,
         "getInfo?k=v%s",
         false},
        {"both empty", 7, 2, {}, {}, {}, Target::A, "getInfo?%s", false},
        {"both empty with body", 3, 0, {}, {}, {{"c", "3"}}, Target::A, "getInfo?%s&c=3", false},
        {"kinds 0-5 and 7 never use the test secret",
         4,
         3,
         {},
         {{"a", "1"}},
         {},
         Target::B,
         "getInfo?a=1%s",
         false},
        {"kind 6 signs a fresh list",
         6,
         0,
         mobileA,
         mobileB,
         {{"token", "T"}},
         Target::A,
         "getInfo?aid=vxtool&b=2&time=1700000000&z=9%s&token=T",
         false},
        {"kind 6 time defaults to 0",
         6,
         0,
         {},
         {},
         {},
         Target::A,
         "getInfo?aid=vxtool&time=0%s",
         false},
        {"kind 6 outside production",
         6,
         1,
         mobileA,
         {},
         {},
         Target::A,
         "getInfo?aid=vxtool&time=1700000000%s",
         true},
        {"kind 10 takes aid from the headers",
         10,
         0,
         mobileA,
         mobileB,
         {},
         Target::A,
         "getInfo?aid=app&b=2&time=1700000000&z=9%s",
         false},
        {"kind 10 defaults are empty", 10, 2, {}, {}, {}, Target::A, "getInfo?aid=&time=%s", true},
        // Any index other than 0 selects the test secret, even one that the tables clamp.
        {"kind 10 environment 7",
         10,
         7,
         mobileA,
         {},
         {},
         Target::A,
         "getInfo?aid=app&time=1700000000%s",
         true},
        {"kind 8 is unsigned", 8, 0, {{"k", "v"}}, {{"a", "1"}}, {}, Target::None, "", false},
        {"kind 9 is unsigned", 9, 1, {}, {{"a", "1"}}, {}, Target::None, "", false},
        {"kind 11 is unsigned", 11, 0, {}, {}, {}, Target::None, "", false},
        {"unknown kind is unsigned", 12, 0, {}, {{"a", "1"}}, {}, Target::None, "", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ParamList groupA = c.groupA;
        ParamList groupB = c.groupB;
        signByKind(c.kind, c.environment, "getInfo", groupA, groupB, c.groupC);
        ParamList expectedA = c.groupA;
        ParamList expectedB = c.groupB;
        const auto auth = qMakePair(QStringLiteral("auth"), expectedAuth(c.signatureText, c.live));
        if (c.target == Target::A) {
            expectedA.append(auth);
        } else if (c.target == Target::B) {
            expectedB.append(auth);
        }
        EXPECT_EQ(groupA, expectedA);
        EXPECT_EQ(groupB, expectedB);
    }
}

TEST(Signing, ServiceHelpers) {
    const qint64 t = 1700000000;
    const ParamList list{{"token", "T"}, {"rid", "9"}};
    QUrlQuery query;
    query.addQueryItem("b", "x y");
    query.addQueryItem("a", "1");
    struct Case {
        const char* name;
        QString actual;
        QString signatureText;
    };
    const Case cases[] = {
        {"fixed common query", signFixedCommonQuery("my_info", t, list),
         "my_info?aid=vxtool&time=1700000000%s&rid=9&token=T"},
        {"fixed common query without a list", signFixedCommonQuery("my_info", t, {}),
         "my_info?aid=vxtool&time=1700000000%s"},
        {"two lists", signWithCommonValues("fans", t, {{"z", "1"}, {"b", "2"}}, list),
         "fans?aid=vxtool&b=2&time=1700000000&z=1%s&rid=9&token=T"},
        {"two lists, first empty", signWithCommonValues("my_info", t, {}, list),
         "my_info?aid=vxtool&time=1700000000%s&rid=9&token=T"},
        {"two lists, second empty", signWithCommonValues("fans", t, {{"a", "1"}}, {}),
         "fans?a=1&aid=vxtool&time=1700000000%s"},
        // The Qt query keeps its own order and its own encoding.
        {"qt query", signQtQuery("api/v1/bindphone2", query), "api/v1/bindphone2?b=x y&a=1%s"},
        {"qt query and list", signQtQueryAndList("p", query, list), "p?b=x y&a=1%s&rid=9&token=T"},
        {"empty qt query", signQtQueryAndList("p", QUrlQuery(), {}), "p?%s"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.actual, expectedAuth(c.signatureText)) << c.name;
    }
    // With an empty first list both helpers sign the same text.
    EXPECT_EQ(signWithCommonValues("x", t, {}, list), signFixedCommonQuery("x", t, list));
}

}  // namespace

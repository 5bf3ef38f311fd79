#include <gtest/gtest.h>

#include <QUrlQuery>

#include "net/net_test_support.h"
#include "net/param_list.h"
#include "net/signing.h"

namespace {

using namespace tolvane::net;

enum class Target { A, B, None };

TEST(Signing, CallSignerPassesUtf8AndSelectsTheSecret) {
    const QString text = QStringLiteral("主播?name=直播%s");
    EXPECT_EQ(callSigner(text, false), expectedAuth(text, false));
    EXPECT_EQ(callSigner(text, true), expectedAuth(text, true));
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
    // clang-format off
    const Case cases[] = {
        {"query group when present", 2, 0, {{"h", "1"}}, {{"b", "2"}, {"a", "1"}}, {}, Target::B, "p?a=1&b=2%s", false},
        {"body follows the mark", 5, 1, {}, {{"a", "1"}}, {{"d", "4"}, {"c", "3"}}, Target::B, "p?a=1%s&c=3&d=4", false},
        {"header group when no query", 0, 0, {{"k", "v"}}, {}, {}, Target::A, "p?k=v%s", false},
        {"both empty", 7, 2, {}, {}, {}, Target::A, "p?%s", false},
        {"both empty with body", 3, 0, {}, {}, {{"c", "3"}}, Target::A, "p?%s&c=3", false},
        {"kind 6 signs a fresh list", 6, 0, mobileA, mobileB, {{"token", "T"}}, Target::A, "p?aid=vxtool&b=2&time=1700000000&z=9%s&token=T", false},
        {"kind 6 time defaults to 0", 6, 0, {}, {}, {}, Target::A, "p?aid=vxtool&time=0%s", false},
        {"kind 6 outside production", 6, 1, mobileA, {}, {}, Target::A, "p?aid=vxtool&time=1700000000%s", true},
        {"kind 10 aid from headers", 10, 0, mobileA, mobileB, {}, Target::A, "p?aid=app&b=2&time=1700000000&z=9%s", false},
        {"kind 10 defaults are empty", 10, 2, {}, {}, {}, Target::A, "p?aid=&time=%s", true},
        // Any index but 0 selects the test secret, even one that the tables clamp.
        {"kind 10 environment 7", 10, 7, mobileA, {}, {}, Target::A, "p?aid=app&time=1700000000%s", true},
        {"kind 8 unsigned", 8, 0, {{"k", "v"}}, {{"a", "1"}}, {}, Target::None, "", false},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ParamList groupA = c.groupA;
        ParamList groupB = c.groupB;
        signByKind(c.kind, c.environment, "p", groupA, groupB, c.groupC);
        ParamList expectedA = c.groupA;
        ParamList expectedB = c.groupB;
        const auto auth = qMakePair(QStringLiteral("auth"), expectedAuth(c.signatureText, c.live));
        if (c.target != Target::None) {
            (c.target == Target::A ? expectedA : expectedB).append(auth);
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
        QString actual;
        QString signatureText;
    };
    // clang-format off
    const Case cases[] = {
        {signFixedCommonQuery("my_info", t, list), "my_info?aid=vxtool&time=1700000000%s&rid=9&token=T"},
        {signWithCommonValues("fans", t, {{"z", "1"}, {"b", "2"}}, list), "fans?aid=vxtool&b=2&time=1700000000&z=1%s&rid=9&token=T"},
        // The Qt query keeps its own order and its own encoding.
        {signQtQuery("api/v1/bindphone2", query), "api/v1/bindphone2?b=x y&a=1%s"},
        {signQtQueryAndList("p", query, list), "p?b=x y&a=1%s&rid=9&token=T"},
    };
    // clang-format on
    for (const Case& c : cases) {
        EXPECT_EQ(c.actual, expectedAuth(c.signatureText)) << c.signatureText.toStdString();
    }
}

}  // namespace

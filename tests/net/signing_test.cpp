// The texts a request is made of: sorted parameter lists, signatures and session values.
#include <gtest/gtest.h>

#include <QUrlQuery>

#include "net/net_test_support.h"
#include "net/param_list.h"
#include "net/session_text.h"
#include "net/signing.h"

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

enum class Target { A, B, None };

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

TEST(SessionText, Token) {
    const std::string huge(3000, 'x');
    const std::pair<ShortTokenInfo, std::string> cases[] = {
        {ShortTokenInfo{}, "-1_0__0_0"},
        {{"", "", 0, 0, 0, "", 0}, "_0__0_0"},
        // The client type comes before the long token id; the rest is not part of the token.
        {{"12345", "a1b2c3", 1, 77, 2, "ignored", 99}, "12345_1_a1b2c3_2_77"},
        {{"12345", huge, 1, 77, 2, "", 0}, ("12345_1_" + huge).substr(0, 1023)},
    };
    for (const auto& [info, expected] : cases) {
        EXPECT_EQ(sessionToken(info), expected);
    }
}

TEST(SessionText, UserDevice) {
    struct Case {
        std::string deviceId;
        std::string version;
        QByteArray decoded;
    };
    const Case cases[] = {
        {"00_00_00_00_FF_FF", "v1.0.0.0", "00_00_00_00_FF_FF|v1.0.0.0"},
        {"", "", "|"},
        {"设备", "v2", "设备|v2"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(userDeviceValue(c.deviceId, c.version), c.decoded.toBase64()) << c.deviceId;
    }
}

}  // namespace

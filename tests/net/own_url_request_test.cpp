#include <gtest/gtest.h>

#include <QUrlQuery>

#include "net/net_test_support.h"
#include "net/own_url_request.h"

namespace {

using namespace tolvane::net;

ParamList queryOf(const QUrl& url) {
    ParamList items;
    for (const auto& item : QUrlQuery(url).queryItems(QUrl::FullyDecoded)) {
        items.append(item);
    }
    return items;
}

// The expected lists name "auth" without its value; it is filled from the signature text.
ParamList withAuth(ParamList list, const QString& auth) {
    for (auto& pair : list) {
        if (pair.first == "auth") {
            pair.second = auth;
        }
    }
    return list;
}

TEST(OwnUrlRequest, PlacesAndSignsItems) {
    const HttpMethod get = HttpMethod::Get;
    const HttpMethod post = HttpMethod::Post;
    const ParamList common{{"aid", "vxtool"}, {"time", "1700"}, {"auth", ""}};
    const ParamList items{{"token", "T"}, {"tag_id", "3"}};
    struct Case {
        const char* name;
        HttpMethod method;
        QString signingPath;
        bool clientSys;
        bool headerSignature;
        ParamList expectedQuery;
        ParamList expectedForm;
        ParamList expectedHeaders;
        QString signatureText;
    };
    // clang-format off
    const Case cases[] = {
        {"GET", get, "s", false, false, items + common, {}, {{"referer", "r"}},
         "s?aid=vxtool&tag_id=3&time=1700&token=T%s"},
        {"POST", post, "s", false, false, common, items, {{"referer", "r"}},
         "s?aid=vxtool&time=1700%s&tag_id=3&token=T"},
        {"POST with client_sys", post, "s", true, false,
         {{"aid", "vxtool"}, {"client_sys", "pc"}, {"time", "1700"}, {"auth", ""}}, items, {{"referer", "r"}},
         "s?aid=vxtool&client_sys=pc&time=1700%s&tag_id=3&token=T"},
        {"header signature", post, "s", false, true, common, items, ParamList{{"referer", "r"}} + common,
         "s?aid=vxtool&time=1700%s&tag_id=3&token=T"},
        {"unsigned GET", get, "", false, true, items, {}, {{"referer", "r"}}, ""},
        {"unsigned POST", post, "", false, false, {}, items, {{"referer", "r"}}, ""},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const OwnUrlRequest request = buildOwnUrlRequest({c.method,
                                                          "https://api.tolvane.example",
                                                          "/api/v1/x",
                                                          c.signingPath,
                                                          items,
                                                          c.clientSys,
                                                          c.headerSignature,
                                                          1700,
                                                          {{"referer", "r"}}});
        const QString auth = c.signatureText.isEmpty() ? QString() : expectedAuth(c.signatureText);
        EXPECT_EQ(request.url.adjusted(QUrl::RemoveQuery).toString(),
                  "https://api.tolvane.example/api/v1/x");
        EXPECT_EQ(request.url.hasQuery(), !c.expectedQuery.isEmpty());
        EXPECT_EQ(queryOf(request.url), withAuth(c.expectedQuery, auth));
        EXPECT_EQ(request.form, c.expectedForm);
        EXPECT_EQ(request.headers, withAuth(c.expectedHeaders, auth));
    }
}

TEST(OwnUrlRequest, ValuesSurviveTheQueryAndAreSignedAsGiven) {
    OwnUrlRequestInput input;
    input.host = "http://127.0.0.1:4000";
    input.urlPath = "/api/v1/livingCheck";
    input.signingPath = "livingCheck";
    input.items = {{"name", "a&b=c+d #é%41"}, {"token", "1_0_x_0_0"}};
    input.time = 5;
    const OwnUrlRequest request = buildOwnUrlRequest(input);
    const ParamList query = queryOf(request.url);
    ASSERT_EQ(query.size(), 5);
    EXPECT_EQ(query[0].second, "a&b=c+d #é%41");
    EXPECT_EQ(request.url.toString(QUrl::FullyEncoded).section('?', 1, 1).section('&', 0, 0),
              "name=a%26b%3Dc%2Bd%20%23%C3%A9%2541");
    EXPECT_EQ(query[4].second,
              expectedAuth("livingCheck?aid=vxtool&name=a&b=c+d #é%41&time=5&token=1_0_x_0_0%s"));
}

}  // namespace
